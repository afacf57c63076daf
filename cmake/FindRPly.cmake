# Finds RPly and defines RPly::rply. It is compiled with -Dply_open=velmar_ply_open and so on (see scripts/setup.sh), so that it
# reads what mesh/PlyInput.h serves it.
find_path(RPly_INCLUDE_DIR rply.h)
find_library(RPly_STREAM_LIBRARY rply_stream)
mark_as_advanced(RPly_INCLUDE_DIR RPly_STREAM_LIBRARY)

include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(RPly REQUIRED_VARS RPly_STREAM_LIBRARY RPly_INCLUDE_DIR)

if(RPly_FOUND AND NOT TARGET RPly::rply)
    add_library(RPly::rply UNKNOWN IMPORTED)
    set_target_properties(RPly::rply PROPERTIES IMPORTED_LOCATION "${RPly_STREAM_LIBRARY}"
                                                INTERFACE_INCLUDE_DIRECTORIES "${RPly_INCLUDE_DIR}")
endif()
