# Run by cpack after it has written the packages.
execute_process(COMMAND ${CMAKE_CURRENT_LIST_DIR}/repack ${CPACK_PACKAGE_FILES}
                COMMAND_ERROR_IS_FATAL ANY)
