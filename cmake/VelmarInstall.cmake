# The install tree: library, public headers, tool, and the files for CMake and pkg-config.
include(CMakePackageConfigHelpers)

install(TARGETS VelmarAPI velmarkit EXPORT VelmarAPI
        RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}"
        LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}"
        ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}")
if(TARGET velmar)
    install(TARGETS velmar RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}")
    # The tool itself makes them of its help texts.
    if(NOT CMAKE_CROSSCOMPILING)
        install(CODE "
            set(share \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_DATADIR}\")
            file(MAKE_DIRECTORY \"\${share}/man/man1\" \"\${share}/bash-completion/completions\")
            execute_process(COMMAND \"$<TARGET_FILE:velmar>\" manual OUTPUT_FILE \"\${share}/man/man1/velmar.1\"
                            COMMAND_ERROR_IS_FATAL ANY)
            execute_process(COMMAND \"$<TARGET_FILE:velmar>\" completion
                            OUTPUT_FILE \"\${share}/bash-completion/completions/velmar\" COMMAND_ERROR_IS_FATAL ANY)")
    endif()
endif()

# The preview renderer, where the tool looks for it and hosts that are started in bin/ do.
if(TARGET velmar_preview)
    install(TARGETS velmar_preview RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}/vs2017_64"
                                   LIBRARY DESTINATION "${CMAKE_INSTALL_BINDIR}/vs2017_64")
    install(FILES preview/velmarpreview.h DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}")
endif()

# The flat interface. For hosts in C++ also the exceptions, with the headers that they include.
set(velmar_headers include/velmarapi.h include/velmarexceptions.h include/velmarstring.h include/velmarmemory.h
                   include/velmarcompiler.h)
install(FILES ${velmar_headers} DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}")
install(DIRECTORY include/velmarapi DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}" FILES_MATCHING PATTERN "*.h")
# Its companion.
install(FILES kit/velmarkit.h DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}")
install(DIRECTORY kit/velmarkit DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}" FILES_MATCHING PATTERN "*.h")
# For hosts in C++.
install(FILES cpp/velmar.hpp DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}")
install(DIRECTORY cpp/velmar DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}" FILES_MATCHING PATTERN "*.hpp")

# The Python package finds the library from there; the files next to it are for pip.
install(DIRECTORY python/velmar DESTINATION "${CMAKE_INSTALL_DATADIR}/velmar/python" FILES_MATCHING
        PATTERN "*.py" PATTERN "py.typed" PATTERN "__pycache__" EXCLUDE)
install(FILES python/pyproject.toml python/README.md DESTINATION "${CMAKE_INSTALL_DATADIR}/velmar/python")
# The package for C#, as sources with a project file.
install(DIRECTORY csharp/Velmar DESTINATION "${CMAKE_INSTALL_DATADIR}/velmar/csharp" FILES_MATCHING
        PATTERN "*.cs" PATTERN "*.csproj" PATTERN "bin" EXCLUDE PATTERN "obj" EXCLUDE)
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
    velmar_names(api/VelmarAPI.def velmar_def_names)
    file(CONFIGURE OUTPUT "${CMAKE_CURRENT_BINARY_DIR}/VelmarAPI.def" @ONLY
         CONTENT "LIBRARY VelmarAPI.dll\nEXPORTS\n@velmar_def_names@\n")
    velmar_names(kit/VelmarKit.def velmar_def_names)
    file(CONFIGURE OUTPUT "${CMAKE_CURRENT_BINARY_DIR}/velmarkit.def" @ONLY
         CONTENT "LIBRARY velmarkit.dll\nEXPORTS\n@velmar_def_names@\n")
    install(FILES "${CMAKE_CURRENT_BINARY_DIR}/VelmarAPI.def" "${CMAKE_CURRENT_BINARY_DIR}/velmarkit.def"
            DESTINATION "${CMAKE_INSTALL_LIBDIR}")
endif()

# ---- the tree for Microsoft's compiler, a component of its own ----------------------------------------------------------

if(TARGET VelmarAPI_msvc)
    set(velmar_msvc COMPONENT msvc EXCLUDE_FROM_ALL)
    install(TARGETS VelmarAPI_msvc velmarkit RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}" ${velmar_msvc})
    install(FILES "${CMAKE_CURRENT_BINARY_DIR}/msvc/VelmarAPI.lib" "${CMAKE_CURRENT_BINARY_DIR}/msvc/VelmarAPI.def"
                  "${CMAKE_CURRENT_BINARY_DIR}/msvc/velmarkit.lib" "${CMAKE_CURRENT_BINARY_DIR}/msvc/velmarkit.def"
            DESTINATION "${CMAKE_INSTALL_LIBDIR}" ${velmar_msvc})
    install(FILES ${velmar_headers} kit/velmarkit.h cpp/velmar.hpp DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}" ${velmar_msvc})
    install(DIRECTORY include/velmarapi kit/velmarkit cpp/velmar DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}" ${velmar_msvc}
            FILES_MATCHING PATTERN "*.h" PATTERN "*.hpp")
    install(DIRECTORY api/functions DESTINATION "${CMAKE_INSTALL_DATADIR}/velmar" ${velmar_msvc}
            FILES_MATCHING PATTERN "*.toml")
    install(DIRECTORY csharp/Velmar DESTINATION "${CMAKE_INSTALL_DATADIR}/velmar/csharp" ${velmar_msvc} FILES_MATCHING
            PATTERN "*.cs" PATTERN "*.csproj" PATTERN "bin" EXCLUDE PATTERN "obj" EXCLUDE)
    install(DIRECTORY python/velmar DESTINATION "${CMAKE_INSTALL_DATADIR}/velmar/python" ${velmar_msvc} FILES_MATCHING
            PATTERN "*.py" PATTERN "py.typed" PATTERN "__pycache__" EXCLUDE)
    install(FILES python/pyproject.toml python/README.md DESTINATION "${CMAKE_INSTALL_DATADIR}/velmar/python"
            ${velmar_msvc})
    install(FILES cmake/package/VelmarAPITargets.cmake "${CMAKE_CURRENT_BINARY_DIR}/VelmarAPIConfig.cmake"
                  "${CMAKE_CURRENT_BINARY_DIR}/VelmarAPIConfigVersion.cmake"
            DESTINATION "${package_dir}" ${velmar_msvc})
endif()

# The input of scripts/package.py.
if(PROJECT_IS_TOP_LEVEL)
    set(velmar_component "")
    set(velmar_archive tar.gz)
    if(WIN32)
        set(velmar_archive zip)
    endif()
    string(TOLOWER "velmar-${PROJECT_VERSION}-${CMAKE_SYSTEM_NAME}-x64" velmar_package)
    configure_file(cmake/package/package.json.in "${CMAKE_CURRENT_BINARY_DIR}/package.json" @ONLY)
    if(TARGET VelmarAPI_msvc)
        set(velmar_component msvc)
        set(velmar_package "velmar-${PROJECT_VERSION}-windows-msvc")
        configure_file(cmake/package/package.json.in "${CMAKE_CURRENT_BINARY_DIR}/package-msvc.json" @ONLY)
    endif()
endif()
