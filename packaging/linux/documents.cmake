# Documents and examples. Developers get all of them; the command, where it is a package of its own,
# gets those about it, and so does the native messaging host. Links are changed to fit the place where the documents are installed.
find_program(ZRKEY_PYTHON python3)
# zr_install_documents(COMPONENT FOLDER ARGUMENT...): the ARGUMENTs are those of packaging/documents.
function(zr_install_documents component folder)
  set(made ${PROJECT_BINARY_DIR}/documents/${component})
  set(command ${ZRKEY_PYTHON} ${PROJECT_SOURCE_DIR}/packaging/documents ${made} ${ARGN})
  list(TRANSFORM command REPLACE "(.+)" "[==[\\1]==]")
  list(JOIN command " " command)
  # At the installation, since documents change more often than the build is configured.
  install(CODE "file(REMOVE_RECURSE [==[${made}]==])
  execute_process(COMMAND ${command} COMMAND_ERROR_IS_FATAL ANY)" COMPONENT ${component})
  install(DIRECTORY ${made}/ DESTINATION ${folder} COMPONENT ${component})
endfunction()

set(developer_documents ${CMAKE_INSTALL_DOCDIR})
if(ZRKEY_PACKAGE STREQUAL "debian")
  set(developer_documents ${CMAKE_INSTALL_DATADIR}/doc/libzrkey-dev)
  set(without --without CHANGELOG.md)  # a Debian package has one of its own
endif()
if(NOT ZRKEY_PYTHON)
  message(STATUS "Documents are not installed: there is no python3.")
else()
  set(from /prefix)
  cmake_path(APPEND from ${developer_documents})
  set(to /prefix)
  cmake_path(APPEND to ${CMAKE_INSTALL_INCLUDEDIR})
  file(RELATIVE_PATH headers ${from} ${to})
  zr_install_documents(development ${developer_documents} --headers ${headers} ${without})
  if(ZRKEY_PACKAGE STREQUAL "debian")
    set(names command-reference comparison object-model packages script-reference security
      start-script start-terminal tokens troubleshooting)
    list(TRANSFORM names REPLACE "(.+)" "docs/\\1.md")
    zr_install_documents(command ${CMAKE_INSTALL_DOCDIR}
      --others /usr/share/doc/libzrkey-dev ${names} examples/config.xml
      examples/sign_letter.js examples/tour.js)
    file(GLOB names RELATIVE ${PROJECT_SOURCE_DIR} ${PROJECT_SOURCE_DIR}/docs/web*.md
      ${PROJECT_SOURCE_DIR}/docs/browser.schema.json)
    zr_install_documents(browser ${CMAKE_INSTALL_DATADIR}/doc/zrkey-browser
      --others /usr/share/doc/libzrkey-dev ${names} docs/security.md)
  endif()
endif()

if(NOT ZRKEY_PACKAGE STREQUAL "debian")  # whose packages have a copyright each
  execute_process(COMMAND ${PROJECT_SOURCE_DIR}/packaging/copyright linux
                  OUTPUT_FILE ${PROJECT_BINARY_DIR}/COPYRIGHT.txt
                  RESULT_VARIABLE lacks ERROR_VARIABLE lacking)
  if(NOT lacks)
    install(FILES ${PROJECT_BINARY_DIR}/COPYRIGHT.txt DESTINATION ${CMAKE_INSTALL_DOCDIR}
            COMPONENT command)
  elseif(ZRKEY_PACKAGE)
    message(FATAL_ERROR "${lacking}")
  else()  # another system, which keeps the notices elsewhere
    message(STATUS "COPYRIGHT.txt is not installed: ${lacking}")
  endif()
endif()
