# Finds xxHash and defines xxHash::xxhash. Systems that package it without a CMake file of its own are the reason for
# this module.
find_path(xxHash_INCLUDE_DIR xxhash.h)
find_library(xxHash_STATIC_OR_SHARED_LIBRARY NAMES libxxhash.a xxhash)
mark_as_advanced(xxHash_INCLUDE_DIR xxHash_STATIC_OR_SHARED_LIBRARY)

include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(xxHash REQUIRED_VARS xxHash_STATIC_OR_SHARED_LIBRARY xxHash_INCLUDE_DIR)

if(xxHash_FOUND AND NOT TARGET xxHash::xxhash)
    add_library(xxHash::xxhash UNKNOWN IMPORTED)
    set_target_properties(xxHash::xxhash PROPERTIES IMPORTED_LOCATION "${xxHash_STATIC_OR_SHARED_LIBRARY}"
                                                    INTERFACE_INCLUDE_DIRECTORIES "${xxHash_INCLUDE_DIR}")
endif()
