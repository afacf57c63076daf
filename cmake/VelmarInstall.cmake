# The install tree: library, public headers, tool, and the files for CMake and pkg-config.
include(CMakePackageConfigHelpers)

install(TARGETS VelmarAPI EXPORT VelmarAPI
        RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}"
        LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}"
        ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}")
if(TARGET velmar)
    install(TARGETS velmar RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}")
endif()

# The flat interface. For hosts in C++ also the exceptions, with the headers that they include.
install(FILES include/velmarapi.h include/velmarexceptions.h include/velmarstring.h include/velmarmemory.h
              include/velmarcompiler.h DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}")
install(DIRECTORY include/velmarapi DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}" FILES_MATCHING PATTERN "*.h")

# The Python package finds the library from there; the files next to it are for pip.
install(DIRECTORY python/velmar DESTINATION "${CMAKE_INSTALL_DATADIR}/velmar/python" FILES_MATCHING
        PATTERN "*.py" PATTERN "py.typed" PATTERN "__pycache__" EXCLUDE)
install(FILES python/pyproject.toml python/README.md DESTINATION "${CMAKE_INSTALL_DATADIR}/velmar/python")
# For authors of other bindings.
install(DIRECTORY api/functions DESTINATION "${CMAKE_INSTALL_DATADIR}/velmar" FILES_MATCHING PATTERN "*.toml")

set(package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/VelmarAPI")
install(EXPORT VelmarAPI NAMESPACE VelmarAPI:: FILE VelmarAPITargets.cmake DESTINATION "${package_dir}")
configure_package_config_file(cmake/VelmarAPIConfig.cmake.in "${CMAKE_CURRENT_BINARY_DIR}/VelmarAPIConfig.cmake"
                              INSTALL_DESTINATION "${package_dir}")
write_basic_package_version_file("${CMAKE_CURRENT_BINARY_DIR}/VelmarAPIConfigVersion.cmake"
                                 COMPATIBILITY SameMajorVersion)
install(FILES "${CMAKE_CURRENT_BINARY_DIR}/VelmarAPIConfig.cmake"
              "${CMAKE_CURRENT_BINARY_DIR}/VelmarAPIConfigVersion.cmake" DESTINATION "${package_dir}")

file(RELATIVE_PATH velmar_pc_prefix "/p/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/p")
string(REGEX REPLACE "/$" "" velmar_pc_prefix "${velmar_pc_prefix}")
configure_file(cmake/velmarapi.pc.in "${CMAKE_CURRENT_BINARY_DIR}/velmarapi.pc" @ONLY)
install(FILES "${CMAKE_CURRENT_BINARY_DIR}/velmarapi.pc" DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig")

# For import libraries of other compilers: the names only, without the functions that implement them.
if(WIN32)
    file(STRINGS api/VelmarAPI.def velmar_def_lines REGEX "^[ \t]*[A-Za-z_]")
    list(FILTER velmar_def_lines EXCLUDE REGEX "^[ \t]*(LIBRARY|EXPORTS)([ \t]|$)")
    list(TRANSFORM velmar_def_lines REPLACE "^[ \t]*([A-Za-z0-9_]+).*" "    \\1")
    list(JOIN velmar_def_lines "\n" velmar_def_names)
    file(CONFIGURE OUTPUT "${CMAKE_CURRENT_BINARY_DIR}/VelmarAPI.def" @ONLY
         CONTENT "LIBRARY VelmarAPI.dll\nEXPORTS\n@velmar_def_names@\n")
    install(FILES "${CMAKE_CURRENT_BINARY_DIR}/VelmarAPI.def" DESTINATION "${CMAKE_INSTALL_LIBDIR}")
endif()

# The input of scripts/package.py.
if(PROJECT_IS_TOP_LEVEL)
    set(velmar_archive tar.gz)
    if(WIN32)
        set(velmar_archive zip)
    endif()
    string(TOLOWER "velmar-${PROJECT_VERSION}-${CMAKE_SYSTEM_NAME}-x64" velmar_package)
    configure_file(cmake/package/package.json.in "${CMAKE_CURRENT_BINARY_DIR}/package.json" @ONLY)
endif()
