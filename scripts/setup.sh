#!/usr/bin/env bash
# Installs missing packages, and builds the dependencies for which Debian has no binary package, once. Fast and silent if
# there is nothing to do. For Debian 12.
#
# Usage: setup.sh [native]
#
# With "native" only what the native library, its tool and the preview renderer need; otherwise everything.
set -euo pipefail
cd "$(dirname "$0")/.."

stage=${1:-all}

native_packages=(
    g++ cmake ninja-build                                                                  # compilers
    libzstd-dev libxxhash-dev libdouble-conversion-dev                                     # the library
    libcli11-dev libpugixml-dev nlohmann-json3-dev libminizip-dev zlib1g-dev               # the tool
    libstb-dev libembree-dev                                                               # the preview renderer
    glmark2-data                                                                           # a model for the demo
)
# wine64-preloader: without it another mapping may occupy addresses that Wine needs, and about one program in a thousand
# doesn't start.
packages=(
    "${native_packages[@]}"
    clang lld libclang-rt-14-dev clang-format clang-tidy python3 git                       # compilers and checks
    g++-mingw-w64-x86-64-posix dpkg-dev wine wine64 wine64-preloader                       # the Windows build
    googletest libeigen3-dev pkgconf llvm locales                                          # the tests
    libbenchmark-dev libfast-float-dev libtinyobjloader-dev libassimp-dev                  # benchmarks and comparisons
    python3-numpy python3-pip python3-setuptools python3-wheel mypy                        # the Python package
    python3-distributed python3-tqdm procps                                                # its farm
    mono-mcs mono-runtime                                                                  # the package for C#
    assimp-testmodels                                                                      # real models
)

. scripts/source-packages.sh

case $stage in
    native) packages=("${native_packages[@]}") ;;
    all) ;;
    *) die "there is no stage '$stage'" ;;
esac

# ---- packages -----------------------------------------------------------------------------------------------------------

command -v apt-get dpkg-query >/dev/null || die "this needs Debian's apt; elsewhere install by hand: ${packages[*]}"
installed=$(dpkg-query -W -f '${Package} ${db:Status-Status}\n' "${packages[@]}" 2>/dev/null || true)
missing=()
for package in "${packages[@]}"; do
    [[ $'\n'$installed$'\n' == *$'\n'"$package installed"$'\n'* ]] || missing+=("$package")
done

if [ ${#missing[@]} != 0 ]; then
    as_root=()
    if [ "$(id -u)" != 0 ]; then
        command -v sudo >/dev/null || die "root or sudo is needed to install: ${missing[*]}"
        as_root=(sudo)
    fi
    apt=("${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get -q -y -o DPkg::Lock::Timeout=300)
    say "installing ${missing[*]}"
    # The package lists of a new machine are empty or old. Update them only if they don't suffice.
    quietly "${apt[@]}" install --no-install-recommends "${missing[@]}" 2>/dev/null || {
        quietly "${apt[@]}" update || die "apt-get update failed"
        quietly "${apt[@]}" install --no-install-recommends "${missing[@]}" || die "installing failed: ${missing[*]}"
    }
fi

# ---- Embree, minizip and zlib for Windows --------------------------------------------------------------------------------

# Embree takes a minute or two, so they are built beside the rest, and whoever waits for this script waits for them too.
wait_for_others() {
    local status=$?
    wait "$others" || exit 1
    exit "$status"
}
if [ "$stage" = all ]; then
    { scripts/zip-windows.sh && scripts/embree-windows.sh; } &
    others=$!
    trap wait_for_others EXIT
fi

# ---- dependencies from source packages --------------------------------------------------------------------------------------

# A change below rebuilds them.
version=$(sed -n '/^# ---- dependencies/,$p' scripts/setup.sh | sha256sum | cut -c1-16)
root=$PWD
work=$root/deps/work

# made FOLDER: whether the dependencies in deps/FOLDER are there.
made() { [ -e "deps/$1/made-by-$version" ]; }

# begin FOLDER: empties deps/FOLDER and enters the folder for sources.
begin() {
    rm -rf "$work" "deps/$1"
    mkdir -p "$work" "deps/$1"
    cd "$work"
}

# fetch [--download-only] PACKAGE...: the sources of Debian's packages.
fetch() {
    say "fetching the sources of the dependencies"
    source_archives "$work"
    fetch_sources "$@"
}

# finish FOLDER
finish() {
    cd "$root"
    rm -rf "$work"
    touch "deps/$1/made-by-$version"
}

mkdir -p deps
exec 9>deps/lock
flock 9

# RPly has no package; this one contains its two files. It is large, so it isn't unpacked as a whole. RPly reads files by
# functions of ours, declared in mesh/PlyInput.h, and its library has a name of its own, because no other RPly links.
rply() {
    local compiler=$1 archiver=$2 prefix=$3
    shift 3
    quietly "$compiler" -O2 -DNDEBUG -fPIC -U_FORTIFY_SOURCE -Dply_open=velmar_ply_open -Dfopen=velmar_ply_fopen \
        -Dfread=velmar_ply_fread -Dfclose=velmar_ply_fclose "$@" "-ffile-prefix-map=$root/deps/rply/=" -c "$root/deps/rply/rply.c" \
        -o "rply-$archiver.o" &&
        quietly "$archiver" rcs "$prefix/lib/librply_stream.a" "rply-$archiver.o" &&
        cp "$root/deps/rply/rply.h" "$prefix/include/" || die "building RPly with $compiler failed"
}

if ! made rply; then
    begin rply
    fetch --download-only cloudcompare
    tar -xzf cloudcompare_*.orig.tar.gz --wildcards --strip-components=3 -C "$root/deps/rply" '*/libs/qCC_io/rply.[ch]'
    finish rply
fi
if ! made linux; then
    begin linux
    mkdir -p "$root/deps/linux"/{include,lib}
    rply gcc ar "$root/deps/linux"
    finish linux
fi
if [ "$stage" = native ] || made windows; then exit 0; fi

# for_windows FOLDER [OPTION...]: builds one dependency with its own CMake files into deps/windows.
for_windows() {
    local folder=$1
    shift
    quietly cmake -S "$folder" -B "build-${folder//\//-}" -G Ninja -DCMAKE_TOOLCHAIN_FILE="$root/cmake/toolchain-windows.cmake" \
        -DCMAKE_BUILD_TYPE=Release -DBUILD_SHARED_LIBS=OFF -DCMAKE_INSTALL_PREFIX="$root/deps/windows" \
        -DCMAKE_INSTALL_LIBDIR=lib -DCMAKE_C_FLAGS="-ffile-prefix-map=$work/=" -DCMAKE_CXX_FLAGS="-ffile-prefix-map=$work/=" "$@" ||
        die "configuring $folder for Windows failed"
    quietly cmake --build "build-${folder//\//-}" --target install || die "building $folder for Windows failed"
}

begin windows
mkdir -p "$root/deps/windows"/{include,lib,share/cmake}
fetch libzstd xxhash double-conversion pugixml
say "building the dependencies for Windows"
for_windows "$(echo libzstd-*/)build/cmake" -DZSTD_BUILD_PROGRAMS=OFF -DZSTD_BUILD_SHARED=OFF -DZSTD_MULTITHREAD_SUPPORT=OFF
for_windows "$(echo xxhash-*/)cmake_unofficial" -DXXHASH_BUILD_XXHSUM=OFF
for_windows "$(echo double-conversion-*/)"
for_windows "$(echo pugixml-*/)"
# Header-only libraries. /usr/include itself must never be searched by a cross-build.
cp -r /usr/include/CLI /usr/include/eigen3 "$root/deps/windows/include/"
cp -r /usr/share/cmake/CLI11 "$root/deps/windows/share/cmake/"
# Use the sscanf of Windows: MinGW's writes to null when memory is exhausted.
rply x86_64-w64-mingw32-gcc-posix x86_64-w64-mingw32-ar "$root/deps/windows" -D__USE_MINGW_ANSI_STDIO=0
finish windows
rm -f deps/made-by-*
say "done"
