# Installs the build into a fresh folder, moves the tree, builds the host against it there and runs the host.
# Takes BUILD, SOURCE, WORK, C_COMPILER, and for cross-builds TOOLCHAIN and EMULATOR.
function(run)
    execute_process(COMMAND ${ARGN} RESULT_VARIABLE status OUTPUT_VARIABLE output ERROR_VARIABLE output
                    WORKING_DIRECTORY "${WORK}")
    if(NOT status EQUAL 0)
        message(FATAL_ERROR "${ARGN}\nended with ${status}:\n${output}")
    endif()
endfunction()

file(REMOVE_RECURSE "${WORK}")
file(MAKE_DIRECTORY "${WORK}")
run("${CMAKE_COMMAND}" --install "${BUILD}" --prefix "${WORK}/first")
# An install tree must work wherever it is unpacked.
file(RENAME "${WORK}/first" "${WORK}/moved")

set(options -DCMAKE_BUILD_TYPE=Release "-DVelmarAPI_ROOT=${WORK}/moved" -DCMAKE_FIND_USE_PACKAGE_REGISTRY=OFF)
if(TOOLCHAIN)
    list(APPEND options "-DCMAKE_TOOLCHAIN_FILE=${TOOLCHAIN}" "-DCMAKE_FIND_ROOT_PATH=${WORK}/moved"
                        -DCMAKE_FIND_ROOT_PATH_MODE_PACKAGE=BOTH)
else()
    list(APPEND options "-DCMAKE_C_COMPILER=${C_COMPILER}")
endif()
run("${CMAKE_COMMAND}" -G Ninja -S "${SOURCE}" -B "${WORK}/host" ${options})
run("${CMAKE_COMMAND}" --build "${WORK}/host")
file(GLOB host "${WORK}/host/host" "${WORK}/host/host.exe")
run(${EMULATOR} ${host})
