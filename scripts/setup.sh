#!/usr/bin/env bash
# Installs missing packages, and builds the dependencies for which Debian has no binary package, once. Fast and silent if
# there is nothing to do. For Debian 12.
set -euo pipefail
cd "$(dirname "$0")/.."

# wine64-preloader: without it another mapping may occupy addresses that Wine needs, and about one program in a thousand
# doesn't start.
packages=(
    g++ clang lld libclang-rt-14-dev clang-format clang-tidy cmake ninja-build python3 git # compilers and checks
    g++-mingw-w64-x86-64-posix dpkg-dev wine wine64 wine64-preloader                       # the Windows build
    libzstd-dev libxxhash-dev libdouble-conversion-dev                                     # the library
    libcli11-dev libstb-dev libembree-dev nlohmann-json3-dev libminizip-dev zlib1g-dev     # tool and preview renderer
    googletest libpugixml-dev libeigen3-dev pkgconf llvm locales                           # the tests
    libbenchmark-dev libfast-float-dev libtinyobjloader-dev libassimp-dev                  # benchmarks and comparisons
    python3-numpy python3-pip python3-setuptools python3-wheel mypy                        # the Python package
    mono-mcs mono-runtime                                                                  # the package for C#
    glmark2-data assimp-testmodels                                                         # real models
)

. scripts/source-packages.sh

# ---- packages -----------------------------------------------------------------------------------------------------------

command -v apt-get dpkg-query >/dev/null || die "this needs Debian's apt; elsewhere install by hand: ${packages[*]}"
installed=$(dpkg-query -W -f '${Package} ${db:Status-Status}\n' "${packages[@]}" 2>/dev/null || true)
missing=()
for package in "${packages[@]}"; do
    [[ $'\n'$installed$'\n' == *$'\n'"$package installed"$'\n'* ]] || missing+=("$package")
done

if [ ${#missing[@]} != 0 ]; then
    root=()
    if [ "$(id -u)" != 0 ]; then
        command -v sudo >/dev/null || die "root or sudo is needed to install: ${missing[*]}"
        root=(sudo)
    fi
    apt=("${root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get -q -y -o DPkg::Lock::Timeout=300)
    say "installing ${missing[*]}"
    # The package lists of a new machine are empty or old. Update them only if they don't suffice.
    quietly "${apt[@]}" install --no-install-recommends "${missing[@]}" 2>/dev/null || {
        quietly "${apt[@]}" update || die "apt-get update failed"
        quietly "${apt[@]}" install --no-install-recommends "${missing[@]}" || die "installing failed: ${missing[*]}"
    }
fi

# ---- Embree, minizip and zlib for Windows --------------------------------------------------------------------------------

# Embree takes some minutes, so they are built beside the rest, and whoever waits for this script waits for them too.
{ scripts/zip-windows.sh && scripts/embree-windows.sh; } &
others=$!
finish() {
    local status=$?
    wait "$others" || exit 1
    exit "$status"
}
trap finish EXIT

# ---- dependencies from source packages --------------------------------------------------------------------------------------

# A change below rebuilds them.
stamp="deps/made-by-$(sed -n '/^# ---- dependencies/,$p' scripts/setup.sh | sha256sum | cut -c1-16)"
if [ -e "$stamp" ]; then exit 0; fi

mkdir -p deps
exec 9>deps/lock
flock 9
if [ -e "$stamp" ]; then exit 0; fi

root=$PWD
work=$root/deps/work
rm -rf "$work" deps/linux deps/windows deps/made-by-*
mkdir -p "$work" deps/linux/{include,lib} deps/windows/{include,lib,share/cmake}

say "fetching the sources of the dependencies"
source_archives "$work"
cd "$work"
fetch_sources libzstd xxhash double-conversion pugixml
# Only two files of this large archive are needed, so it isn't unpacked as a whole.
fetch_sources --download-only cloudcompare

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

say "building the dependencies for Windows"
for_windows "$(echo libzstd-*/)build/cmake" -DZSTD_BUILD_PROGRAMS=OFF -DZSTD_BUILD_SHARED=OFF -DZSTD_MULTITHREAD_SUPPORT=OFF
for_windows "$(echo xxhash-*/)cmake_unofficial" -DXXHASH_BUILD_XXHSUM=OFF
for_windows "$(echo double-conversion-*/)"
for_windows "$(echo pugixml-*/)"

# Header-only libraries. /usr/include itself must never be searched by a cross-build.
cp -r /usr/include/CLI /usr/include/eigen3 "$root/deps/windows/include/"
cp -r /usr/share/cmake/CLI11 "$root/deps/windows/share/cmake/"

# RPly has no package; this one contains its two files. It reads files by functions of ours, declared in mesh/PlyInput.h,
# and its library has a name of its own, because no other RPly links.
tar -xzf cloudcompare_*.orig.tar.gz --wildcards --strip-components=3 '*/libs/qCC_io/rply.[ch]'
rply() {
    local compiler=$1 archiver=$2 prefix=$3
    shift 3
    quietly "$compiler" -O2 -DNDEBUG -fPIC -U_FORTIFY_SOURCE -Dply_open=velmar_ply_open -Dfopen=velmar_ply_fopen \
        -Dfread=velmar_ply_fread -Dfclose=velmar_ply_fclose "$@" "-ffile-prefix-map=$work/=" -c rply.c -o "rply-$archiver.o" &&
        quietly "$archiver" rcs "$prefix/lib/librply_stream.a" "rply-$archiver.o" && cp rply.h "$prefix/include/" ||
        die "building RPly with $compiler failed"
}
rply gcc ar "$root/deps/linux"
# Use the sscanf of Windows: MinGW's writes to null when memory is exhausted.
rply x86_64-w64-mingw32-gcc-posix x86_64-w64-mingw32-ar "$root/deps/windows" -D__USE_MINGW_ANSI_STDIO=0

cd "$root"
rm -rf "$work"
touch "$stamp"
say "done"
