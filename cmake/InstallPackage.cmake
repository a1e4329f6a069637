# What users get. The components are the packages of cmake/DebianPackages.cmake: Runtime, Development and Tool.
include(CMakePackageConfigHelpers)

set(package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/Prm")
set(installed_targets Prm)
set(installed_headers prm)
if(PRM_HOST_TARGET STREQUAL "PrmHost")
    list(APPEND installed_targets PrmHost)
    list(APPEND installed_headers host)
endif()

install(TARGETS ${installed_targets} EXPORT PrmTargets
    LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT Runtime NAMELINK_COMPONENT Development
    ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT Development
    RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}" COMPONENT Runtime)
install(DIRECTORY ${installed_headers} DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}" COMPONENT Development
    FILES_MATCHING PATTERN "*.h" PATTERN "*.hpp" PATTERN "gdb" EXCLUDE)
install(EXPORT PrmTargets NAMESPACE Prm:: DESTINATION "${package_dir}" COMPONENT Development)

configure_package_config_file("${PROJECT_SOURCE_DIR}/cmake/PrmConfig.cmake.in" PrmConfig.cmake
    INSTALL_DESTINATION "${package_dir}" NO_SET_AND_CHECK_MACRO)
# As with the names of the shared libraries, each minor version may differ from the one before.
write_basic_package_version_file(PrmConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES "${CMAKE_CURRENT_BINARY_DIR}/PrmConfig.cmake" "${CMAKE_CURRENT_BINARY_DIR}/PrmConfigVersion.cmake"
    DESTINATION "${package_dir}" COMPONENT Development)

# Paths start at the place of the file itself, so that the tree may be installed or moved anywhere.
set(pc_dir "${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig")
file(RELATIVE_PATH pc_to_prefix "${pc_dir}" "${CMAKE_INSTALL_PREFIX}")
string(REGEX REPLACE "/$" "" pc_to_prefix "${pc_to_prefix}")
cmake_path(APPEND pc_libdir "\${prefix}" "${CMAKE_INSTALL_LIBDIR}")
cmake_path(APPEND pc_includedir "\${prefix}" "${CMAKE_INSTALL_INCLUDEDIR}")

function(prm_install_pkg_config library description requires)
    configure_file("${PROJECT_SOURCE_DIR}/cmake/library.pc.in" ${library}.pc @ONLY)
    install(FILES "${CMAKE_CURRENT_BINARY_DIR}/${library}.pc"
        DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig" COMPONENT Development)
endfunction()

# A host with services of its own links them itself: pkg-config cannot know them.
set(pc_host "")
if(PRM_HOST_TARGET STREQUAL "PrmHost")
    set(pc_host ", prmhost = ${PROJECT_VERSION}")
    prm_install_pkg_config(prmhost "What Prm expects of its host: undo commands, snapshots, hashes, settings" "")
endif()
prm_install_pkg_config(prm "${PROJECT_DESCRIPTION}" "${pc_host}")

# Where gdb looks for the printers of a library: below the library's own path, which is that of the installation.
cmake_path(APPEND gdb_libdir "\${CMAKE_INSTALL_PREFIX}" "${CMAKE_INSTALL_LIBDIR}")
install(FILES "${PROJECT_SOURCE_DIR}/prm/gdb/printers.py"
    DESTINATION "${CMAKE_INSTALL_DATADIR}/gdb/auto-load${gdb_libdir}" RENAME "libprm.so.${PROJECT_VERSION}-gdb.py"
    COMPONENT Development)
