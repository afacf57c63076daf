# Finds the dependencies of the library and gathers them in one target. They may come from the system, from deps/
# (`./dev setup`) or from a package manager of your choice through CMAKE_PREFIX_PATH.
find_package(zstd CONFIG REQUIRED)
find_package(xxHash REQUIRED)
find_package(double-conversion CONFIG REQUIRED)
find_package(RPly REQUIRED)
set(THREADS_PREFER_PTHREAD_FLAG ON)
find_package(Threads REQUIRED)

# A DLL is one file, so its zstd is the static one; elsewhere the system's shared library is shared with the host.
if(NOT WIN32 AND TARGET zstd::libzstd_shared)
    set(velmar_zstd zstd::libzstd_shared)
else()
    set(velmar_zstd zstd::libzstd_static)
endif()

add_library(velmar_dependencies INTERFACE)
target_link_libraries(velmar_dependencies INTERFACE ${velmar_zstd} xxHash::xxhash double-conversion::double-conversion
                                                    RPly::rply Threads::Threads)
if(NOT WIN32)
    target_link_libraries(velmar_dependencies INTERFACE ${CMAKE_DL_LIBS})
endif()
