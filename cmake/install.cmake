# What is installed, in four components:
#   library      the library and what it stands on at run time;
#   development  headers, import libraries, a CMake package (zrkey::zrkey), a pkg-config file;
#   command      the zrkey command with its shell completion and manual page; on Windows the
#                Automation server too;
#   browser      zrkey-browser, which browsers start, with its manual page; zrkey browser install makes it
#                known to them.
include(CMakePackageConfigHelpers)
set(zsh_folder zsh/site-functions)
if(ZRKEY_PACKAGE STREQUAL "debian")  # Debian has a folder of its own for packages
  set(zsh_folder zsh/vendor-completions)
endif()

install(DIRECTORY include/zrkey ${ZRKEY_AUTOMATION_INCLUDE}/zrkey
        DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development
        FILES_MATCHING PATTERN *.h PATTERN *.hpp)

set(libraries zrkey)
if(TARGET zrautomation)
  list(APPEND libraries zrautomation)
endif()
install(TARGETS ${libraries} EXPORT zrkeyTargets
        RUNTIME COMPONENT library
        LIBRARY COMPONENT library NAMELINK_COMPONENT development
        ARCHIVE COMPONENT development)
if(ZRKEY_IMPORT_LIBRARY)
  install(FILES ${ZRKEY_IMPORT_LIBRARY} DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development)
endif()
if(TARGET zrkey_host)
  install(TARGETS zrkey_host COMPONENT command)
endif()
if(TARGET zrkey_browser)
  install(TARGETS zrkey_browser COMPONENT browser)
  if(NOT WIN32)
    configure_file(packaging/linux/zrkey-browser.1.in ${PROJECT_BINARY_DIR}/zrkey-browser.1 @ONLY)
    install(FILES ${PROJECT_BINARY_DIR}/zrkey-browser.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1
            COMPONENT browser)
  endif()
endif()
if(TARGET zrkeycom)
  install(TARGETS zrkeycom LIBRARY DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT command)
endif()
if(ZRKEY_SHELL_FILES)
  install(FILES ${ZRKEY_SHELL_FILES}/zrkey COMPONENT command
          DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)
  install(FILES ${ZRKEY_SHELL_FILES}/_zrkey COMPONENT command
          DESTINATION ${CMAKE_INSTALL_DATADIR}/${zsh_folder})
  install(FILES ${ZRKEY_SHELL_FILES}/zrkey.fish COMPONENT command
          DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d)
  install(FILES ${ZRKEY_SHELL_FILES}/zrkey.1 COMPONENT command
          DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
endif()

set(package_folder ${CMAKE_INSTALL_LIBDIR}/cmake/zrkey)
install(EXPORT zrkeyTargets NAMESPACE zrkey:: DESTINATION ${package_folder} COMPONENT development)
configure_package_config_file(cmake/zrkeyConfig.cmake.in ${PROJECT_BINARY_DIR}/zrkeyConfig.cmake
                              INSTALL_DESTINATION ${package_folder})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/zrkeyConfigVersion.cmake
                                 COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/zrkeyConfig.cmake
              ${PROJECT_BINARY_DIR}/zrkeyConfigVersion.cmake
        DESTINATION ${package_folder} COMPONENT development)

if(WIN32)
  set(ZRKEY_PC_LIBS "-lzrkey -loleaut32 -luuid")
else()
  set(ZRKEY_PC_LIBS "-lzrkey -lzrautomation")
endif()
# Found from the place of the .pc file, so that the installed tree can be moved. A packager's folders
# given by their full path are kept.
set(ZRKEY_PC_PREFIX ${CMAKE_INSTALL_PREFIX})
if(ZRKEY_PACKAGE STREQUAL "debian")
  # pkg-config leaves the system's folders out, but only when they are written like this.
  set(ZRKEY_PC_PREFIX /usr)
elseif(NOT IS_ABSOLUTE ${CMAKE_INSTALL_LIBDIR})
  file(RELATIVE_PATH up /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
  cmake_path(APPEND up_to_prefix "\${pcfiledir}" ${up})
  string(REGEX REPLACE "/$" "" ZRKEY_PC_PREFIX ${up_to_prefix})
endif()
cmake_path(APPEND ZRKEY_PC_LIBDIR "\${prefix}" ${CMAKE_INSTALL_LIBDIR})
cmake_path(APPEND ZRKEY_PC_INCLUDEDIR "\${prefix}" ${CMAKE_INSTALL_INCLUDEDIR})
configure_file(cmake/zrkey.pc.in ${PROJECT_BINARY_DIR}/zrkey.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/zrkey.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig
        COMPONENT development)

if(NOT WIN32)
  include(packaging/linux/documents.cmake)
endif()
