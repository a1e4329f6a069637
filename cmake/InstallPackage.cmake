include(CMakePackageConfigHelpers)

set(package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/Prm")
set(installed_targets Prm)
set(installed_headers prm)
if(PRM_HOST_TARGET STREQUAL "PrmHost")
    list(APPEND installed_targets PrmHost)
    list(APPEND installed_headers host)
endif()

install(TARGETS ${installed_targets} EXPORT PrmTargets
    LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}"
    ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}"
    RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}")
install(DIRECTORY ${installed_headers} DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}"
    FILES_MATCHING PATTERN "*.h" PATTERN "*.hpp")
install(EXPORT PrmTargets NAMESPACE Prm:: DESTINATION "${package_dir}")

configure_package_config_file("${PROJECT_SOURCE_DIR}/cmake/PrmConfig.cmake.in" PrmConfig.cmake
    INSTALL_DESTINATION "${package_dir}" NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file(PrmConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES "${CMAKE_CURRENT_BINARY_DIR}/PrmConfig.cmake" "${CMAKE_CURRENT_BINARY_DIR}/PrmConfigVersion.cmake"
    DESTINATION "${package_dir}")

# A host with services of its own links them itself: pkg-config cannot know them.
if(PRM_HOST_TARGET STREQUAL "PrmHost")
    set(pc_host_library "-lprmhost")
endif()
cmake_path(APPEND pc_libdir "\${prefix}" "${CMAKE_INSTALL_LIBDIR}")
cmake_path(APPEND pc_includedir "\${prefix}" "${CMAKE_INSTALL_INCLUDEDIR}")
configure_file("${PROJECT_SOURCE_DIR}/cmake/prm.pc.in" prm.pc @ONLY)
install(FILES "${CMAKE_CURRENT_BINARY_DIR}/prm.pc" DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
