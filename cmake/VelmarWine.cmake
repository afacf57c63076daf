# Cross-built Windows programs are run by Wine, in a prefix of the build folder, which is independent of the user's prefix and of
# other builds.
if(NOT (WIN32 AND CMAKE_CROSSCOMPILING))
    return()
endif()

find_program(VELMAR_WINE NAMES wine64 wine PATHS /usr/lib/wine NO_CMAKE_FIND_ROOT_PATH)
find_program(VELMAR_WINESERVER NAMES wineserver64 wineserver PATHS /usr/lib/wine NO_CMAKE_FIND_ROOT_PATH)
if(NOT VELMAR_WINE OR NOT VELMAR_WINESERVER)
    if(VELMAR_BUILD_TESTS)
        message(FATAL_ERROR "Wine is needed to run the tests of the Windows build and wasn't found. Install it "
                            "(./dev setup does), or configure with -DVELMAR_BUILD_TESTS=OFF.")
    endif()
    return()
endif()

set(VELMAR_WINEPREFIX "${CMAKE_BINARY_DIR}/wineprefix")
configure_file(cmake/wine.in "${CMAKE_BINARY_DIR}/wine" @ONLY FILE_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE
               GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CMAKE_CROSSCOMPILING_EMULATOR "${CMAKE_BINARY_DIR}/wine")

# Created before the tests: two programs that start at the same time would both create it.
add_custom_command(OUTPUT "${VELMAR_WINEPREFIX}/made"
    COMMAND "${CMAKE_COMMAND}" -E rm -rf "${VELMAR_WINEPREFIX}"
    COMMAND "${CMAKE_BINARY_DIR}/wine" wineboot --init
    COMMAND "${CMAKE_COMMAND}" -E touch "${VELMAR_WINEPREFIX}/made"
    COMMENT "Creating the Wine prefix of this build" VERBATIM)
add_custom_target(wineprefix ALL DEPENDS "${VELMAR_WINEPREFIX}/made")
