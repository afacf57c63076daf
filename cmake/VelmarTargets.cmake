# How our own targets are compiled and what they export.

find_program(VELMAR_CCACHE ccache)
if(VELMAR_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
    set(CMAKE_C_COMPILER_LAUNCHER "${VELMAR_CCACHE}")
    # Without these it doesn't cache what includes a precompiled header.
    set(CMAKE_CXX_COMPILER_LAUNCHER "${CMAKE_COMMAND}" -E env CCACHE_SLOPPINESS=pch_defines,time_macros "${VELMAR_CCACHE}")
endif()

if(MINGW)
    # Links the compiler's runtime and that of the stack protector statically: a DLL of ours is one file.
    add_link_options(-static $<$<BOOL:${VELMAR_HARDENING}>:-fstack-protector-strong>)
endif()
if(VELMAR_SANITIZE)
    # Also for GoogleTest: containers that pass between checked and unchecked code give false alarms.
    add_compile_options(-fsanitize=${VELMAR_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    add_link_options(-fsanitize=${VELMAR_SANITIZE})
    if(VELMAR_SANITIZE MATCHES "undefined")
        # Objects of the renderer library have our layout but not our type information.
        add_compile_options(-fno-sanitize=vptr)
    endif()
endif()

# velmar_sources(<out> <pattern>...): the files of the patterns that belong to this system.
function(velmar_sources out)
    list(TRANSFORM ARGN PREPEND "${CMAKE_CURRENT_SOURCE_DIR}/")
    file(GLOB files CONFIGURE_DEPENDS LIST_DIRECTORIES false ${ARGN})
    if(WIN32)
        list(FILTER files EXCLUDE REGEX "_posix\\.(cp*|S)$")
    else()
        list(FILTER files EXCLUDE REGEX "_win\\.(cp*|S)$")
    endif()
    # Where the renderer library is of another compiler than ours.
    if(MINGW)
        list(FILTER files EXCLUDE REGEX "_native\\.cpp$")
    else()
        list(FILTER files EXCLUDE REGEX "_mingw\\.cpp$")
    endif()
    set(${out} "${files}" PARENT_SCOPE)
endfunction()

# velmar_own_code(<target>): the compile options of our own targets.
function(velmar_own_code target)
    target_compile_features(${target} PRIVATE cxx_std_20 c_std_99)
    set_target_properties(${target} PROPERTIES CXX_EXTENSIONS OFF C_EXTENSIONS OFF
                          CXX_VISIBILITY_PRESET hidden C_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON)
    if(WIN32)
        target_compile_definitions(${target} PRIVATE NOMINMAX WIN32_LEAN_AND_MEAN _WIN32_WINNT=0x0601)
    endif()
    if(MSVC)
        target_compile_options(${target} PRIVATE /W4 /permissive- /utf-8 $<$<BOOL:${VELMAR_WARNINGS_AS_ERRORS}>:/WX>)
        return()
    endif()
    target_compile_options(${target} PRIVATE
        -Wall -Wextra -Wconversion -Wshadow $<$<BOOL:${VELMAR_WARNINGS_AS_ERRORS}>:-Werror>
        # Layouts are pinned by offset; all supported compilers define offsetof for these classes.
        $<$<COMPILE_LANGUAGE:CXX>:-Wno-invalid-offsetof>
        # Clang's -Wconversion includes sign conversions, GCC's doesn't.
        $<$<CXX_COMPILER_ID:Clang,AppleClang>:-Wno-sign-conversion>
        # GCC warns if it inlines only one of a class's operators new and delete.
        $<$<COMPILE_LANG_AND_ID:CXX,GNU>:-Wno-mismatched-new-delete>
        # operator new zeroes memory, and the zeros of padding must survive construction.
        $<$<CXX_COMPILER_ID:GNU>:-fno-lifetime-dse>
        # Fused multiply-adds round once where two operations round twice: with them, checksums and so the names of mesh
        # files would depend on the processor that is compiled for.
        -ffp-contract=off
        $<$<BOOL:${VELMAR_HARDENING}>:-fstack-protector-strong>
        # The binary doesn't depend on the path of the sources.
        "-ffile-prefix-map=${PROJECT_SOURCE_DIR}/=")
endfunction()

# velmar_hardened(<target>...): what is shipped also checks buffer sizes where the compiler knows them, and has no writable
# table of functions after loading. Windows does the latter by itself.
function(velmar_hardened)
    if(MSVC OR WIN32 OR VELMAR_SANITIZE OR NOT VELMAR_HARDENING)
        return()
    endif()
    foreach(target IN LISTS ARGN)
        target_compile_options(${target} PRIVATE -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2)
        get_target_property(type ${target} TYPE)
        if(type MATCHES "^(SHARED_LIBRARY|EXECUTABLE)$")
            target_link_options(${target} PRIVATE LINKER:-z,relro,-z,now)
        endif()
    endforeach()
endfunction()

set(VELMAR_COMPILED_TOGETHER 9 CACHE STRING "How many sources are compiled at a time")

# velmar_compile_together(<target>): compiles several sources at a time, because the headers that they include take longest.
# Each still includes what it needs; with CMAKE_UNITY_BUILD=OFF each is compiled alone, as for clang-tidy.
function(velmar_compile_together target)
    if(DEFINED CMAKE_UNITY_BUILD)
        return()
    endif()
    set_target_properties(${target} PROPERTIES UNITY_BUILD ON UNITY_BUILD_BATCH_SIZE ${VELMAR_COMPILED_TOGETHER})
    # System headers define macros with common names.
    get_target_property(sources ${target} SOURCES)
    list(FILTER sources INCLUDE REGEX "(_(win|posix)\\.cpp|\\.c)$")
    set_source_files_properties(${sources} PROPERTIES SKIP_UNITY_BUILD_INCLUSION ON)
    # The fixtures' unnamed namespaces are in included files then.
    target_compile_options(${target} PRIVATE $<$<COMPILE_LANG_AND_ID:CXX,GNU>:-Wno-subobject-linkage>)
endfunction()

# velmar_read_exports(<file.def> <names> <aliases>): the exported names, and those that are another function as Name=target.
function(velmar_read_exports def out_names out_aliases)
    set(names "")
    set(aliases "")
    file(STRINGS "${def}" lines REGEX "^[ \t]*[A-Za-z_]")
    foreach(line IN LISTS lines)
        if(line MATCHES "^[ \t]*(LIBRARY|EXPORTS)([ \t]|$)")
        elseif(line MATCHES "^[ \t]*([A-Za-z_][A-Za-z0-9_]*)[ \t]*(=[ \t]*([A-Za-z_][A-Za-z0-9_]*))?")
            list(APPEND names "${CMAKE_MATCH_1}")
            if(CMAKE_MATCH_3 AND NOT CMAKE_MATCH_3 STREQUAL CMAKE_MATCH_1)
                list(APPEND aliases "${CMAKE_MATCH_1}=${CMAKE_MATCH_3}")
            endif()
        endif()
    endforeach()
    set(${out_names} "${names}" PARENT_SCOPE)
    set(${out_aliases} "${aliases}" PARENT_SCOPE)
endfunction()

# velmar_link_aliases(<target> <file.def>): defines the exported names that are another function, for a library or program
# that is linked from the exports' sources.
function(velmar_link_aliases target def)
    velmar_read_exports("${def}" names aliases)
    list(TRANSFORM aliases PREPEND "LINKER:--defsym,")
    target_link_options(${target} PRIVATE ${aliases})
endfunction()

# velmar_failing_allocations(<program>): adds tests/faults/FailingAllocation.h. The exports are linked statically, because only
# calls of these go through the linker's wrappers.
function(velmar_failing_allocations target)
    set(functions malloc calloc realloc free)
    if(NOT WIN32)
        list(APPEND functions realpath)
    endif()
    if(NOT TARGET failing_allocations)
        set(sources FailingAllocation.cpp MallocOperators.cpp)
        if(NOT WIN32)
            list(APPEND sources FailingAllocation_posix.cpp)
        endif()
        list(TRANSFORM sources PREPEND "${PROJECT_SOURCE_DIR}/tests/faults/")
        add_library(failing_allocations OBJECT ${sources})
        velmar_own_code(failing_allocations)
        target_link_libraries(failing_allocations PRIVATE velmar_core)
    endif()
    target_sources(${target} PRIVATE $<TARGET_OBJECTS:failing_allocations> $<TARGET_OBJECTS:velmar_exports>)
    list(TRANSFORM functions PREPEND LINKER:--wrap=)
    target_link_options(${target} PRIVATE ${functions})
    velmar_link_aliases(${target} "${PROJECT_SOURCE_DIR}/api/VelmarAPI.def")
endfunction()

# velmar_exports(<library> <file.def>): the library exports the names of the file, on every system. A line "Name = target"
# exports the function `target` as `Name`, so that several names can be one function.
function(velmar_exports target def)
    set(def "${CMAKE_CURRENT_SOURCE_DIR}/${def}")
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${def}")
    set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS "${def}")
    if(WIN32)
        target_sources(${target} PRIVATE "${def}")
        return()
    endif()
    # The version script hides all other names.
    set_target_properties(${target} PROPERTIES CXX_VISIBILITY_PRESET default)
    velmar_read_exports("${def}" names aliases)
    velmar_link_aliases(${target} "${def}")
    list(JOIN names ";\n    " names)
    file(CONFIGURE OUTPUT "${CMAKE_CURRENT_BINARY_DIR}/${target}.map" CONTENT "{\nglobal:\n    @names@;\nlocal:\n    *;\n};\n" @ONLY)
    target_link_options(${target} PRIVATE "LINKER:--version-script,${CMAKE_CURRENT_BINARY_DIR}/${target}.map"
                                          LINKER:--no-undefined-version)
    if(NOT VELMAR_SANITIZE)
        target_link_options(${target} PRIVATE LINKER:-z,defs)
    endif()
    set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS "${CMAKE_CURRENT_BINARY_DIR}/${target}.map")
endfunction()

# velmar_names(<file.def> <names>): the exported names of a definition file, without the functions that implement them.
function(velmar_names def out)
    file(STRINGS "${def}" lines REGEX "^[ \t]*[A-Za-z_]")
    list(FILTER lines EXCLUDE REGEX "^[ \t]*(LIBRARY|EXPORTS)([ \t]|$)")
    list(TRANSFORM lines REPLACE "^[ \t]*([A-Za-z0-9_]+).*" "    \\1")
    list(JOIN lines "\n" names)
    set(${out} "${names}" PARENT_SCOPE)
endfunction()

# velmar_version_resource(<target> <file> <description>): the properties of the file in Windows, with the project's version.
function(velmar_version_resource target velmar_file velmar_description)
    if(NOT WIN32)
        return()
    endif()
    get_target_property(type ${target} TYPE)
    if(type STREQUAL "EXECUTABLE")
        set(velmar_file_type VFT_APP)
    else()
        set(velmar_file_type VFT_DLL)
    endif()
    configure_file("${PROJECT_SOURCE_DIR}/cmake/version.rc.in" "${CMAKE_CURRENT_BINARY_DIR}/${target}.rc" @ONLY)
    target_sources(${target} PRIVATE "${CMAKE_CURRENT_BINARY_DIR}/${target}.rc")
endfunction()
