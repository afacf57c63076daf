# Finds RPly and defines RPly::rply.
find_path(RPly_INCLUDE_DIR rply.h)
find_library(RPly_LIBRARY rply)
mark_as_advanced(RPly_INCLUDE_DIR RPly_LIBRARY)

include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(RPly REQUIRED_VARS RPly_LIBRARY RPly_INCLUDE_DIR)

if(RPly_FOUND AND NOT TARGET RPly::rply)
    add_library(RPly::rply UNKNOWN IMPORTED)
    set_target_properties(RPly::rply PROPERTIES IMPORTED_LOCATION "${RPly_LIBRARY}"
                                                INTERFACE_INCLUDE_DIRECTORIES "${RPly_INCLUDE_DIR}")
endif()
