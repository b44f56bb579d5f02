# The packages for Linux: their rules, the archive, and the Debian packages in a system of their own. On
# Linux only, because the packages are for Linux.
set(packages ${PROJECT_SOURCE_DIR}/build/packages)
set(version ${PROJECT_VERSION})
include(${PROJECT_SOURCE_DIR}/cmake/softtoken_test.cmake)
add_test(NAME linux_make_packages COMMAND ${PROJECT_SOURCE_DIR}/scripts/package linux)
add_test(NAME linux_packages COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/check-linux-packages
         ${packages} ${PROJECT_BINARY_DIR} ${CMAKE_CURRENT_BINARY_DIR}/packages ${version} ${CMAKE_COMMAND})
add_test(NAME linux_archive
         COMMAND ${PROJECT_SOURCE_DIR}/scripts/with-softtoken ${CMAKE_CURRENT_BINARY_DIR}/archive_token
                 ${CMAKE_CURRENT_SOURCE_DIR}/check-linux-archive ${packages}
                 ${CMAKE_CURRENT_BINARY_DIR}/archive ${version} ${CMAKE_COMMAND})
add_test(NAME linux_install COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/check-linux-install
         ${packages} ${PROJECT_SOURCE_DIR}/build/debian-root ${CMAKE_CURRENT_BINARY_DIR}/install ${version}
         ${CMAKE_COMMAND})
set(tests linux_packages linux_archive linux_install)
set_tests_properties(linux_make_packages ${tests} PROPERTIES LABELS slow TIMEOUT 900)
set_tests_properties(linux_make_packages PROPERTIES FIXTURES_SETUP linux_packages PROCESSORS 2)
set_tests_properties(${tests} PROPERTIES FIXTURES_REQUIRED linux_packages)
set_tests_properties(linux_install PROPERTIES SKIP_REGULAR_EXPRESSION "^skipped: ")
