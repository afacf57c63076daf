#!/usr/bin/env bash
# A real mesh becomes a scene on disk: the Windows tool and library export the Stanford bunny, and what came of it is
# shown. The same run by the native build must give the same scene.
set -euo pipefail
cd "$(dirname "$0")/.."

die() { printf 'demo: %s\n' "$*" >&2; exit 1; }
say() { printf '\n== %s\n' "$*"; }

# compile PRESET TARGET...: the output is shown only when it fails.
compile() {
    local preset=$1 log=build/$1-demo.log
    shift
    mkdir -p build
    { cmake --preset "$preset" && cmake --build --preset "$preset" --target "$@"; } >"$log" 2>&1 ||
        { tail -n 50 "$log" >&2; die "building $preset failed; the whole output is in $log"; }
}

model=$(dpkg -L glmark2-data 2>/dev/null | grep '/bunny\.obj$') || die "the package glmark2-data is missing; ./dev setup installs it"

say "building VelmarAPI.dll and velmar.exe, and their native twins (a few minutes the first time)"
compile windows velmar wineprefix
compile linux velmar

rm -rf demo
mkdir -p demo/native
cp "$model" demo/bunny.obj

say "velmar.exe export bunny.obj scene.xml      (VelmarAPI.dll, run by Wine)"
(cd demo && ../build/windows/wine ../build/windows/velmar.exe export bunny.obj scene.xml | tr -d '\r')

say "velmar.exe info, of the mesh file that it wrote"
mesh=$(cd demo && ls scene_meshes/*.vmmesh)
(cd demo && ../build/windows/wine ../build/windows/velmar.exe info "$mesh" | tr -d '\r')

say "demo/scene.xml"
tr -d '\r' <demo/scene.xml | sed 's/\t/  /g'

(cd demo/native && ../../build/linux/velmar export --quiet ../bunny.obj scene.xml)
cmp "demo/$mesh" "demo/native/$mesh" || die "the two builds wrote different meshes"
tr -d '\r' <demo/scene.xml | cmp - demo/native/scene.xml || die "the two builds wrote different documents"

say "demo/"
(cd demo && find scene.xml scene_meshes -type f -printf '%10s  %p\n')
say "the native build wrote the same scene, byte for byte but for the line ends (demo/native/)"
