# What makes prm at home in a shell: its manual pages and its completion.
set(shell_dir "${PROJECT_SOURCE_DIR}/tool/shell")
install(FILES "${shell_dir}/prm.bash" DESTINATION "${CMAKE_INSTALL_DATADIR}/bash-completion/completions" RENAME prm
    COMPONENT Tool)

# The pages are what the program says of itself, so the program has to run here, and without special care.
if(NOT CMAKE_CROSSCOMPILING AND NOT PRM_SANITIZE)
    set(manual "${CMAKE_CURRENT_BINARY_DIR}/man")
    add_custom_command(OUTPUT "${manual}/prm.1.gz"
        COMMAND "${CMAKE_COMMAND}" -E rm -rf "${manual}"
        COMMAND "${shell_dir}/manual.sh" "$<TARGET_FILE:prm_tool>" "${PROJECT_VERSION}" "${manual}"
        COMMAND gzip -9nfr "${manual}"
        DEPENDS prm_tool "${shell_dir}/manual.sh"
        COMMENT "Writing the manual pages"
        VERBATIM)
    add_custom_target(prm_manual ALL DEPENDS "${manual}/prm.1.gz")
    install(DIRECTORY "${manual}/" DESTINATION "${CMAKE_INSTALL_MANDIR}/man1" COMPONENT Tool)
endif()
