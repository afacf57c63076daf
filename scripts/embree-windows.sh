#!/usr/bin/env bash
# Builds Embree for Windows, once, from Debian's source package into deps/windows-embree: static, with one instruction set,
# and with no more than the preview uses. Takes a minute or two, so setup.sh runs it beside its own work.
set -euo pipefail
cd "$(dirname "$0")/.."

. scripts/source-packages.sh

root=$PWD
build_once windows-embree scripts/embree-windows.sh
mkdir "$work/source"

say "fetching the source of Embree"
source_archives "$work"
cd "$work"
# The archive alone: Debian's changes to it are about its own packages.
fetch_sources --tar-only --download-only embree
tar -xf embree_*.orig.tar.* --strip-components=1 -C source
# The resource compiler of MinGW doesn't read UTF-16.
sed -i '/embree\.rc/d' source/kernels/CMakeLists.txt
# Debian's archive leaves this document out, and the installation names it.
touch source/readme.pdf
# Sources of geometry and functions that the preview doesn't use. They would be compiled even where they are switched off.
unused='common/(rtcore_builder|scene_(curves|line_segments|grid_mesh|points))|subdiv/[a-z_]+|geometry/curve_[a-z0-9_]+'
unused+='|bvh/(bvh_builder_hair(_mb)?|bvh8_factory)'
sed -i -E "\\#^ *($unused)\\.cpp *\$#d" source/kernels/CMakeLists.txt
# Several sources are compiled at a time, because the headers that they include take longest.
sed -i '1i #pragma once' source/kernels/bvh/bvh_builder.h
cat >"$work/project.cmake" <<'END'
# CMake before 3.26 leaves this empty for GCC, and Embree then takes the options of Microsoft's compiler.
set(CMAKE_CXX_COMPILER_FRONTEND_VARIANT GNU)
if(PROJECT_IS_TOP_LEVEL)
    cmake_language(DEFER CALL set_target_properties embree PROPERTIES UNITY_BUILD ON UNITY_BUILD_BATCH_SIZE 5)
    # It has a variable of a name that others have too.
    cmake_language(DEFER CALL set_source_files_properties "${CMAKE_SOURCE_DIR}/kernels/common/rtcore.cpp"
                   TARGET_DIRECTORY embree PROPERTIES SKIP_UNITY_BUILD_INCLUSION ON)
endif()
END

say "building Embree for Windows"
features=()
for feature in CURVE SUBDIVISION POINT GRID; do features+=("-DEMBREE_GEOMETRY_$feature=OFF"); done
# SSE2, which every machine has: Embree has no code of its own for triangles between it and AVX.
quietly cmake -S source -B build -G Ninja -DCMAKE_TOOLCHAIN_FILE="$root/cmake/toolchain-windows.cmake" \
    -DCMAKE_PROJECT_INCLUDE="$work/project.cmake" -DCMAKE_BUILD_TYPE=Release -DCMAKE_INSTALL_PREFIX="$prefix" \
    -DCMAKE_INSTALL_LIBDIR=lib -DCMAKE_CXX_FLAGS="-w -ffile-prefix-map=$work/=" -DEMBREE_STATIC_LIB=ON \
    -DEMBREE_TASKING_SYSTEM=INTERNAL -DEMBREE_ISPC_SUPPORT=OFF -DEMBREE_TUTORIALS=OFF -DEMBREE_MAX_ISA=SSE2 \
    -DEMBREE_GEOMETRY_INSTANCE=ON -DEMBREE_RAY_PACKETS=OFF "${features[@]}" ||
    die "configuring Embree for Windows failed"
quietly nice cmake --build build --target install || die "building Embree for Windows failed"
cp source/LICENSE.txt "$prefix/"
built
