#!/usr/bin/env bash
# Builds minizip and zlib for Windows, once, from Debian's source packages into deps/windows-zip. The command line tool
# packs and unpacks by them.
set -euo pipefail
cd "$(dirname "$0")/.."

. scripts/source-packages.sh

build_once windows-zip scripts/zip-windows.sh
mkdir -p "$prefix"/{include/minizip,lib}

say "fetching the sources of zlib and minizip"
# The archive of the release alone: that of its updates doesn't have every source.
source_archives "$work" ' [a-z]* main$'
cd "$work"
fetch_sources zlib minizip

# library NAME FOLDER FILE...: compiles sources of a folder into a static library.
library() {
    local name=$1 folder=$2
    shift 2
    local file objects=()
    for file in "$@"; do
        # The functions of minizip that open files aren't used: the tool has its own, for paths in UTF-8.
        quietly x86_64-w64-mingw32-gcc-posix -O2 -DNDEBUG -DUSE_FILE32API "-ffile-prefix-map=$work/=" -I"$prefix/include" \
            -c "$folder/$file.c" -o "$name-$file.o" || die "building $file.c of $name for Windows failed"
        objects+=("$name-$file.o")
    done
    x86_64-w64-mingw32-ar rcs "$prefix/lib/lib$name.a" "${objects[@]}"
}

say "building zlib and minizip for Windows"
zlib=$(echo zlib-*/)
minizip=$(echo minizip-*/)
cp "$zlib"/{zlib,zconf}.h "$prefix/include/"
cp "$minizip"/{ioapi,unzip,zip}.h "$prefix/include/minizip/"
library z "$zlib" adler32 compress crc32 deflate inffast inflate inftrees trees uncompr zutil
library minizip "$minizip" ioapi unzip zip
cp "$zlib/debian/copyright" "$prefix/zlib-copyright"
cp "$minizip/debian/copyright" "$prefix/minizip-copyright"
built
