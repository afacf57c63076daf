# The install tree: the library, its public headers, the tool, and what lets CMake and pkg-config find them.
include(CMakePackageConfigHelpers)

install(TARGETS VelmarAPI EXPORT VelmarAPI
        RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}"
        LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}"
        ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}")
if(TARGET velmar)
    install(TARGETS velmar RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}")
endif()

# The flat interface is one header; those in the folder of its name are for C++.
install(FILES include/velmarapi.h DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}")
if(IS_DIRECTORY "${CMAKE_CURRENT_SOURCE_DIR}/include/velmarapi")
    install(DIRECTORY include/velmarapi DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}" FILES_MATCHING PATTERN "*.h")
endif()

set(package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/VelmarAPI")
install(EXPORT VelmarAPI NAMESPACE VelmarAPI:: FILE VelmarAPITargets.cmake DESTINATION "${package_dir}")
configure_package_config_file(cmake/VelmarAPIConfig.cmake.in "${CMAKE_CURRENT_BINARY_DIR}/VelmarAPIConfig.cmake"
                              INSTALL_DESTINATION "${package_dir}")
write_basic_package_version_file("${CMAKE_CURRENT_BINARY_DIR}/VelmarAPIConfigVersion.cmake"
                                 COMPATIBILITY SameMajorVersion)
install(FILES "${CMAKE_CURRENT_BINARY_DIR}/VelmarAPIConfig.cmake"
              "${CMAKE_CURRENT_BINARY_DIR}/VelmarAPIConfigVersion.cmake" DESTINATION "${package_dir}")

file(RELATIVE_PATH velmar_pc_prefix "/p/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/p")
configure_file(cmake/velmarapi.pc.in "${CMAKE_CURRENT_BINARY_DIR}/velmarapi.pc" @ONLY)
install(FILES "${CMAKE_CURRENT_BINARY_DIR}/velmarapi.pc" DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
