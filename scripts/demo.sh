#!/usr/bin/env bash
# Makes a picture and a scene of a real mesh, the Stanford bunny: first the native build draws it, then the Windows build draws and
# exports it, and the result is shown. The native build must give the same scene. What only the Windows build needs is installed
# when the first picture is there.
set -euo pipefail
cd "$(dirname "$0")/.."

die() { printf 'demo: %s\n' "$*" >&2; exit 1; }
say() { printf '\n== %s\n' "$*"; }

# compile PRESET TARGET...: prints the output only if it fails.
compile() {
    local preset=$1 log=build/$1-demo.log
    shift
    mkdir -p build
    { cmake --preset "$preset" && cmake --build --preset "$preset" --target "$@"; } >"$log" 2>&1 ||
        { tail -n 50 "$log" >&2; die "building $preset failed; the whole output is in $log"; }
}

scripts/setup.sh native
# A build of the product alone, unless there is one with the tests.
native=linux-demo
[ ! -e build/linux/build.ninja ] || native=linux

model=$(dpkg -L glmark2-data 2>/dev/null | grep '/bunny\.obj$') || die "the package glmark2-data is missing; ./dev setup installs it"

# One instruction set and one seed, so that both builds draw the same.
export VELMAR_PREVIEW_ISA=sse2
picture=(--width 640 --height 360 --samples 16)

say "building velmar for Linux"
compile "$native" velmar

rm -rf demo
mkdir -p demo/native
cp "$model" demo/bunny.obj

say "velmar render bunny.obj bunny.png"
(cd demo && "../build/$native/velmar" render -q "${picture[@]}" bunny.obj bunny.png)
printf 'the picture: demo/bunny.png\n'

say "installing what the Windows build needs (a few minutes the first time)"
scripts/setup.sh

say "building VelmarAPI.dll and velmar.exe (a few minutes the first time)"
compile windows velmar wineprefix render_in_c

say "velmar.exe render bunny.obj bunny-windows.png      (VelmarAPI.dll, run by Wine)"
(cd demo && ../build/windows/wine ../build/windows/velmar.exe render -q "${picture[@]}" bunny.obj bunny-windows.png | tr -d '\r')
if cmp -s demo/bunny.png demo/bunny-windows.png; then
    printf 'the Windows build drew the same picture, byte for byte\n'
else
    printf 'the Windows build drew it too, with other roundings\n'
fi

say "velmar.exe export bunny.obj scene.xml      (VelmarAPI.dll, run by Wine)"
(cd demo && ../build/windows/wine ../build/windows/velmar.exe export bunny.obj scene.xml | tr -d '\r')

say "files"
(cd demo && find bunny.obj scene.xml scene_meshes -type f -printf '%10s  %p\n')

say "the nodes of scene.xml"
awk -F'[<>]' '{ gsub(/\r/, "") }
    /^\t<[a-z]/ { kind = $2 }
    /^\t\t<uid>/ { uid = $3 }
    /^\t\t<name>/ { printf "%4d  %-20s %s\n", uid, kind, $3 }' demo/scene.xml

say "the beginning of scene.xml"
tr -d '\r' <demo/scene.xml | sed 's/\t/  /g' | head -n 34
printf '  ... (%d lines)\n' "$(wc -l <demo/scene.xml)"

# The larger of the two; the other one is the ground.
mesh=$(cd demo && ls -S scene_meshes/*.vmmesh | head -n 1)
say "velmar.exe info ${mesh//\//\\}"
(cd demo && ../build/windows/wine ../build/windows/velmar.exe info "$mesh" | tr -d '\r')

(cd demo/native && "../../build/$native/velmar" export --quiet ../bunny.obj scene.xml)
diff -r demo/scene_meshes demo/native/scene_meshes || die "the two builds wrote different meshes"
tr -d '\r' <demo/scene.xml | cmp - demo/native/scene.xml || die "the two builds wrote different documents"
say "the native build wrote the same scene, byte for byte except for the line ends (demo/native/)"

say "render_in_c.exe passes a scene to a stub renderer library, which prints each call"
(cd build/windows/fake_library/demo && VELMAR_FAKE_LIBRARY_RECORD=- ../../wine ../../render_in_c.exe | tr -d '\r' | grep -v '^ ')
