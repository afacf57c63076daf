# The library for hosts of Microsoft's compiler, made by MinGW: the same code, but what is thrown leaves it in the form of
# that compiler. Its install tree is one of its own, component `msvc`. Built with that compiler, the library itself is such
# a one.
if(NOT MINGW)
    return()
endif()

add_library(VelmarAPI_msvc SHARED $<TARGET_OBJECTS:velmar_exports> api/msvc/Exports.cpp api/msvc/Throwing.cpp
                                  api/msvc/ThrowInfo.S)
velmar_own_code(VelmarAPI_msvc)
velmar_exports(VelmarAPI_msvc api/msvc/VelmarAPI.def)
target_link_libraries(VelmarAPI_msvc PRIVATE velmar_core)
set_target_properties(VelmarAPI_msvc PROPERTIES PREFIX "" OUTPUT_NAME VelmarAPI
                      RUNTIME_OUTPUT_DIRECTORY "${CMAKE_CURRENT_BINARY_DIR}/msvc"
                      ARCHIVE_OUTPUT_DIRECTORY "${CMAKE_CURRENT_BINARY_DIR}/msvc")
velmar_version_resource(VelmarAPI_msvc VelmarAPI.dll "${PROJECT_DESCRIPTION}")

# velmar_import_library(<target> <library> <file.def>): what linkers of Microsoft's form link, <library>.lib in the build's
# folder `msvc`, and the list of names from which it is made.
function(velmar_import_library target library def)
    find_program(VELMAR_LLVM_DLLTOOL llvm-dlltool REQUIRED)
    set(folder "${CMAKE_CURRENT_BINARY_DIR}/msvc")
    velmar_names("${def}" names)
    file(CONFIGURE OUTPUT "${folder}/${library}.def" @ONLY CONTENT "LIBRARY ${library}.dll\nEXPORTS\n@names@\n")
    add_custom_command(OUTPUT "${folder}/${library}.lib"
        COMMAND "${VELMAR_LLVM_DLLTOOL}" -m i386:x86-64 -d "${folder}/${library}.def" -l "${folder}/${library}.lib"
        DEPENDS "${folder}/${library}.def" VERBATIM)
    add_custom_target(${target} ALL DEPENDS "${folder}/${library}.lib")
endfunction()

velmar_import_library(VelmarAPI_msvc_import VelmarAPI api/VelmarAPI.def)
add_dependencies(VelmarAPI_msvc VelmarAPI_msvc_import)
velmar_import_library(velmarkit_msvc_import velmarkit kit/VelmarKit.def)
add_dependencies(velmarkit velmarkit_msvc_import)
