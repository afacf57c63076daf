# One libFuzzer executable for each tests/fuzz/<Name>.cpp.
velmar_sources(fuzz_sources tests/fuzz/*.cpp)
foreach(source IN LISTS fuzz_sources)
    cmake_path(GET source STEM name)
    add_executable(${name} "${source}")
    velmar_own_code(${name})
    # Several exports can be one function, which has the type of one of them.
    target_compile_options(${name} PRIVATE -fsanitize=fuzzer -fno-sanitize=function)
    target_link_options(${name} PRIVATE -fsanitize=fuzzer)
    target_link_libraries(${name} PRIVATE velmar_core)
    if(name STREQUAL "ExportsFuzz")
        velmar_failing_allocations(${name})
    elseif(name STREQUAL "KitFuzz")
        velmar_static_kit(${name})
    endif()
    set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/fuzzers")
endforeach()
# The code under test reports its branches to the fuzzer.
target_compile_options(velmar_core PRIVATE -fsanitize=fuzzer-no-link)
