# Finds the dependencies of the library and gathers them in one target. They may come from the system, from deps/
# (`./dev setup`) or from a package manager of your choice through CMAKE_PREFIX_PATH.
find_package(zstd CONFIG REQUIRED)
find_package(xxHash REQUIRED)
find_package(double-conversion CONFIG REQUIRED)
find_package(RPly REQUIRED)
set(THREADS_PREFER_PTHREAD_FLAG ON)
find_package(Threads REQUIRED)

# A library of ours is one file that runs wherever the compiler's runtime does: what it depends on is linked in where the
# static library is there. The linker keeps its symbols inside.
set(velmar_zstd zstd::libzstd_static)
if(NOT TARGET zstd::libzstd_static)
    set(velmar_zstd zstd::libzstd_shared)
endif()
find_library(VELMAR_DOUBLE_CONVERSION NAMES libdouble-conversion.a)
mark_as_advanced(VELMAR_DOUBLE_CONVERSION)
set(velmar_double_conversion double-conversion::double-conversion)
if(VELMAR_DOUBLE_CONVERSION AND NOT WIN32)
    get_target_property(velmar_double_conversion_headers double-conversion::double-conversion INTERFACE_INCLUDE_DIRECTORIES)
    add_library(velmar_double_conversion STATIC IMPORTED)
    set_target_properties(velmar_double_conversion PROPERTIES IMPORTED_LOCATION "${VELMAR_DOUBLE_CONVERSION}"
                          INTERFACE_INCLUDE_DIRECTORIES "${velmar_double_conversion_headers}")
    set(velmar_double_conversion velmar_double_conversion)
endif()

add_library(velmar_dependencies INTERFACE)
target_link_libraries(velmar_dependencies INTERFACE ${velmar_zstd} xxHash::xxhash ${velmar_double_conversion}
                                                    RPly::rply Threads::Threads)
if(NOT WIN32)
    target_link_libraries(velmar_dependencies INTERFACE ${CMAKE_DL_LIBS})
endif()
