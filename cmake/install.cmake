# Installed: the library, its headers, a CMake package (zrkey::zrkey), a pkg-config file, and the command
# with its shell completion and manual page.
include(CMakePackageConfigHelpers)

install(DIRECTORY include/zrkey DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(DIRECTORY ${ZRKEY_AUTOMATION_INCLUDE}/zrkey DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})

install(TARGETS zrkey EXPORT zrkeyTargets)
if(TARGET zrautomation)
  install(TARGETS zrautomation EXPORT zrkeyTargets)
endif()
if(TARGET zrkey_host)
  install(TARGETS zrkey_host)
endif()
if(ZRKEY_SHELL_FILES)
  install(FILES ${ZRKEY_SHELL_FILES}/zrkey
          DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)
  install(FILES ${ZRKEY_SHELL_FILES}/_zrkey DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/site-functions)
  install(FILES ${ZRKEY_SHELL_FILES}/zrkey.fish
          DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d)
  install(FILES ${ZRKEY_SHELL_FILES}/zrkey.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
endif()
install(EXPORT zrkeyTargets NAMESPACE zrkey:: DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/zrkey)

configure_package_config_file(cmake/zrkeyConfig.cmake.in ${PROJECT_BINARY_DIR}/zrkeyConfig.cmake
                              INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/zrkey)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/zrkeyConfigVersion.cmake
                                 COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/zrkeyConfig.cmake
              ${PROJECT_BINARY_DIR}/zrkeyConfigVersion.cmake
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/zrkey)

if(WIN32)
  set(ZRKEY_PC_LIBS "-lzrkey -loleaut32 -luuid")
else()
  set(ZRKEY_PC_LIBS "-lzrkey -lzrautomation")
endif()
# Below the prefix, unless a packager chose a folder by its full path.
cmake_path(APPEND ZRKEY_PC_LIBDIR "\${prefix}" ${CMAKE_INSTALL_LIBDIR})
cmake_path(APPEND ZRKEY_PC_INCLUDEDIR "\${prefix}" ${CMAKE_INSTALL_INCLUDEDIR})
configure_file(cmake/zrkey.pc.in ${PROJECT_BINARY_DIR}/zrkey.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/zrkey.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
