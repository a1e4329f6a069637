# What makes prm at home in a shell: its manual page and its completion.
set(shell_dir "${PROJECT_SOURCE_DIR}/tool/shell")
install(FILES "${shell_dir}/prm.bash" DESTINATION "${CMAKE_INSTALL_DATADIR}/bash-completion/completions" RENAME prm
    COMPONENT Tool)

# The page is what the program says of itself, so the program has to run here, and without special care.
if(NOT CMAKE_CROSSCOMPILING AND NOT PRM_SANITIZE)
    set(manual "${CMAKE_CURRENT_BINARY_DIR}/prm.1")
    add_custom_command(OUTPUT "${manual}.gz"
        COMMAND "${shell_dir}/manual.sh" "$<TARGET_FILE:prm_tool>" "${PROJECT_VERSION}" > "${manual}"
        COMMAND gzip -9nf "${manual}"
        DEPENDS prm_tool "${shell_dir}/manual.sh"
        COMMENT "Writing the manual page"
        VERBATIM)
    add_custom_target(prm_manual ALL DEPENDS "${manual}.gz")
    install(FILES "${manual}.gz" DESTINATION "${CMAKE_INSTALL_MANDIR}/man1" COMPONENT Tool)
endif()
