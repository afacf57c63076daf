# VelmarKit: the same code once more, with statuses in place of exceptions. It needs no VelmarAPI.
velmar_sources(kit_sources kit/*.cpp kit/*${assembly})
# Compiled once for the library and for the tests that link it statically.
add_library(velmar_kit OBJECT ${kit_sources})
velmar_own_code(velmar_kit)
set_target_properties(velmar_kit PROPERTIES POSITION_INDEPENDENT_CODE ON CXX_VISIBILITY_PRESET default)
target_include_directories(velmar_kit PRIVATE kit)
target_compile_definitions(velmar_kit PRIVATE VELMAR_VERSION="${PROJECT_VERSION}")
target_link_libraries(velmar_kit PUBLIC velmar_reading velmar_import)

add_library(velmarkit SHARED $<TARGET_OBJECTS:velmar_kit> $<TARGET_OBJECTS:velmar_exports>)
add_library(VelmarAPI::velmarkit ALIAS velmarkit)
velmar_own_code(velmarkit)
velmar_exports(velmarkit kit/VelmarKit.def)
velmar_link_aliases(velmarkit api/VelmarAPI.def)
target_include_directories(velmarkit
    PUBLIC "$<BUILD_INTERFACE:${CMAKE_CURRENT_SOURCE_DIR}/include>" "$<BUILD_INTERFACE:${CMAKE_CURRENT_SOURCE_DIR}/kit>"
           "$<BUILD_INTERFACE:${CMAKE_CURRENT_SOURCE_DIR}/cpp>" "$<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>")
target_link_libraries(velmarkit PRIVATE $<BUILD_INTERFACE:velmar_reading> $<BUILD_INTERFACE:velmar_import>
                                        $<BUILD_INTERFACE:velmar_core>)
velmar_hardened(velmar_kit velmarkit)
set_target_properties(velmarkit PROPERTIES VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR})
if(WIN32)
    set_target_properties(velmarkit PROPERTIES PREFIX "")
endif()
# velmar_static_kit(<program>): links the kit statically, with tests/faults/FailingAllocation.h.
function(velmar_static_kit target)
    velmar_failing_allocations(${target})
    target_sources(${target} PRIVATE $<TARGET_OBJECTS:velmar_kit>)
    target_include_directories(${target} PRIVATE "${PROJECT_SOURCE_DIR}/kit")
    target_link_libraries(${target} PRIVATE velmar_reading velmar_import)
endfunction()

velmar_version_resource(velmarkit velmarkit.dll "VelmarAPI with statuses, and more")
