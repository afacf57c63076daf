# Finds minizip and zlib, by which the command line tool packs, and gathers them in one target. For Windows they are built by
# scripts/zip-windows.sh.
set(velmar_zip_options "")
if(WIN32 AND CMAKE_CROSSCOMPILING)
    set(velmar_zip_options PATHS "${PROJECT_SOURCE_DIR}/deps/windows-zip" NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH)
endif()
find_path(VELMAR_ZIP_DIR minizip/unzip.h ${velmar_zip_options} PATH_SUFFIXES include REQUIRED)
find_library(VELMAR_MINIZIP NAMES libminizip.a minizip ${velmar_zip_options} PATH_SUFFIXES lib REQUIRED)
find_library(VELMAR_ZLIB NAMES libz.a z zlib ${velmar_zip_options} PATH_SUFFIXES lib REQUIRED)
mark_as_advanced(VELMAR_ZIP_DIR VELMAR_MINIZIP VELMAR_ZLIB)

add_library(velmar_zip INTERFACE)
target_include_directories(velmar_zip SYSTEM INTERFACE "${VELMAR_ZIP_DIR}")
target_link_libraries(velmar_zip INTERFACE "${VELMAR_MINIZIP}" "${VELMAR_ZLIB}")
