# Installs the build into a fresh folder, moves the tree, builds the hosts against it there and runs them.
# Takes BUILD, SOURCE, WORK, C_COMPILER, CXX_COMPILER, and for cross-builds TOOLCHAIN and EMULATOR.
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

set(options -DCMAKE_BUILD_TYPE=Release "-DCMAKE_PREFIX_PATH=${WORK}/moved")
if(TOOLCHAIN)
    list(APPEND options "-DCMAKE_TOOLCHAIN_FILE=${TOOLCHAIN}" "-DCMAKE_FIND_ROOT_PATH=${WORK}/moved")
else()
    list(APPEND options "-DCMAKE_C_COMPILER=${C_COMPILER}" "-DCMAKE_CXX_COMPILER=${CXX_COMPILER}")
endif()
run("${CMAKE_COMMAND}" -G Ninja -S "${SOURCE}" -B "${WORK}/host" ${options})
run("${CMAKE_COMMAND}" --build "${WORK}/host")
foreach(host host_in_c host_in_cpp)
    file(GLOB program "${WORK}/host/${host}" "${WORK}/host/${host}.exe")
    run(${EMULATOR} "${program}")
endforeach()
