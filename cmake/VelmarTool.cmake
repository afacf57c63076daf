# The command line tool.
include(VelmarZip)
velmar_sources(tool_sources tools/*.cpp)

# What tests and fuzzers link too.
set(tool_parts ${tool_sources})
list(FILTER tool_parts INCLUDE REGEX "/(Console|OrderedWork|OutputFile|SafeNames|System_[a-z]+|Unpacking|ZipFile)\\.cpp$")
list(REMOVE_ITEM tool_sources ${tool_parts})
add_library(velmar_tool_parts STATIC EXCLUDE_FROM_ALL ${tool_parts})
velmar_own_code(velmar_tool_parts)
velmar_hardened(velmar_tool_parts)
target_link_libraries(velmar_tool_parts PUBLIC velmar_import velmar_zip)

if(VELMAR_FUZZ)
    return()
endif()

find_package(CLI11 REQUIRED)
find_path(VELMAR_JSON_DIR nlohmann/json.hpp PATHS /usr/include NO_CMAKE_FIND_ROOT_PATH REQUIRED)
# A folder of these headers alone, which serves both systems.
file(MAKE_DIRECTORY "${CMAKE_CURRENT_BINARY_DIR}/json")
file(CREATE_LINK "${VELMAR_JSON_DIR}/nlohmann" "${CMAKE_CURRENT_BINARY_DIR}/json/nlohmann" SYMBOLIC COPY_ON_ERROR)

# Neighbours are compiled together, and these headers take longest.
set(including_large_headers ${tool_sources})
list(FILTER including_large_headers INCLUDE REGEX "/([A-Za-z]*Command|main|Manual|ModelOptions|MeshStore|StoreConversion)\\.cpp$")
list(REMOVE_ITEM tool_sources ${including_large_headers})
add_executable(velmar ${including_large_headers} ${tool_sources})
velmar_own_code(velmar)
velmar_compile_together(velmar)
velmar_hardened(velmar)
target_link_libraries(velmar PRIVATE velmar_tool_parts VelmarAPI velmar_reading CLI11::CLI11)
target_include_directories(velmar SYSTEM PRIVATE "${CMAKE_CURRENT_BINARY_DIR}/json")
# Its headers alone: the library is loaded when a scene is to be read.
find_path(VELMAR_ASSIMP_DIR assimp/cimport.h)
if(VELMAR_ASSIMP_DIR AND NOT WIN32)
    set_source_files_properties(tools/SceneImport.cpp PROPERTIES COMPILE_DEFINITIONS VELMAR_WITH_ASSIMP)
endif()
target_compile_definitions(velmar PRIVATE VELMAR_VERSION="${PROJECT_VERSION}")
if(TARGET velmar_preview)
    # Loaded at run time, from beside the tool.
    add_dependencies(velmar velmar_preview)
endif()
velmar_version_resource(velmar velmar.exe "Makes scenes of mesh files")
set_target_properties(velmar PROPERTIES INSTALL_RPATH "$ORIGIN/../${CMAKE_INSTALL_LIBDIR}")
