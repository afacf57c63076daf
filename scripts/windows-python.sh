#!/usr/bin/env bash
# Builds a Python for Windows into deps/windows-python, once. It runs the tests of the Python package under Wine. Debian has
# no such package, so it is built from Debian's sources. Fast and silent if there is nothing to do.
set -euo pipefail
cd "$(dirname "$0")/.."

. scripts/source-packages.sh

root=$PWD
build_once windows-python scripts/windows-python.sh cmake/windows-python/* cmake/toolchain-windows.cmake
cd "$work"

# ---- sources ------------------------------------------------------------------------------------------------------------

# Only from the release: packages listed by the archive of security fixes aren't always available.
release=$(. /etc/os-release && echo "$VERSION_CODENAME")
say "fetching the sources of a Python for Windows"
source_archives "$work" " $release "
fetch_sources python3.11 libffi
python=$(echo "$work"/python3.11-*/)
python=${python%/}
ffi=$(echo "$work"/libffi-*/)

# MinGW defines these constants as macros, which would be redefined as themselves.
sed -i '/^#define \(IPPROTO_[A-Z0-9]*\) \1\b/d' "$python/Modules/socketmodule.c"

# ---- the interpreter ----------------------------------------------------------------------------------------------------

say "building a Python for Windows, which takes a minute or two"
build_ffi() {
    mkdir build-ffi && cd build-ffi &&
        "${ffi}configure" --host=x86_64-w64-mingw32 --prefix="$work/ffi" --disable-shared --disable-docs \
            --disable-multi-os-directory --disable-dependency-tracking CC=x86_64-w64-mingw32-gcc-posix &&
        make -j "$(nproc)" install
}
quietly build_ffi || die "building libffi failed"
quietly cmake -S "$root/cmake/windows-python" -B build -G Ninja -DCMAKE_BUILD_TYPE=None \
    -DCMAKE_TOOLCHAIN_FILE="$root/cmake/toolchain-windows.cmake" -DPYTHON_SOURCE="$python" -DFFI_DIR="$work/ffi" ||
    die "configuring the interpreter failed"
quietly cmake --build build -j "$(nproc)" || die "building the interpreter failed"
cp build/python.exe "$prefix/"

# ---- its library, without large parts that no test imports ----------------------------------------------------------------

unwanted=(distutils ensurepip idlelib lib2to3 msilib pydoc_data sqlite3 test tests tkinter turtledemo __pycache__)
tar -C "$python" -c "${unwanted[@]/#/--exclude=}" Lib | tar -C "$prefix" -x
# Otherwise each test process would compile what it imports.
quietly /usr/bin/python3.11 -m compileall -q -j "$(nproc)" --invalidation-mode unchecked-hash "$prefix/Lib" ||
    die "compiling the library failed"
built
say "done"
