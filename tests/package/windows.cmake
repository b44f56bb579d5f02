# What is packed for Windows, from this build: the archive, the installer, and that another build of the
# same sources gives the same files. On Windows only, because the packages are for Windows.
set(packages ${CMAKE_CURRENT_BINARY_DIR}/packages)
add_test(NAME windows_packages COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/check-windows-packages
         ${PROJECT_BINARY_DIR} ${packages} ${PROJECT_VERSION})
add_test(NAME windows_archive COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/check-windows-archive
         ${packages} ${CMAKE_CURRENT_BINARY_DIR}/archive ${PROJECT_VERSION} ${CMAKE_COMMAND})
add_test(NAME windows_installer COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/check-windows-installer
         ${packages} ${CMAKE_CURRENT_BINARY_DIR}/installer ${PROJECT_VERSION})
add_test(NAME windows_rebuild COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/check-windows-rebuild
         ${packages} ${CMAKE_CURRENT_BINARY_DIR}/rebuild ${PROJECT_VERSION} ${CMAKE_COMMAND})
set(tests windows_packages windows_archive windows_installer windows_rebuild)
set_tests_properties(${tests} PROPERTIES LABELS slow TIMEOUT 600)
set_tests_properties(windows_packages PROPERTIES FIXTURES_SETUP windows_packages)
set_tests_properties(windows_archive windows_installer windows_rebuild PROPERTIES
                     FIXTURES_REQUIRED windows_packages)
set_property(TEST windows_archive APPEND PROPERTY FIXTURES_REQUIRED wine)
# The command lists a software token through the bridge.
set_property(TEST windows_archive windows_installer PROPERTY ENVIRONMENT
             "ZRKEY_MODULE=$<TARGET_PROPERTY:pkcs11bridge,ZR_FILE>"
             "ZRKEY_BRIDGE_MODULE=${ZR_SOFTHSM_MODULE}")
