# The Debian packages: libzrkey0 (component library), libzrkey-dev (development), zrkey (command) and
# zrkey-browser (browser).
set(revision 1)
set(ZRKEY_MAINTAINER "ZRKey maintainers <maintainers@zrkey.example>" CACHE STRING
  "Who maintains the Debian packages, as Name <address>")
set(library_package libzrkey${ZRKEY_ABI})
set(same_version "(= ${PROJECT_VERSION}-${revision})")

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE ${revision})
set(CPACK_DEBIAN_PACKAGE_SOURCE zrkey)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER ${ZRKEY_MAINTAINER})
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
# dpkg-shlibdeps finds our libraries in the build tree.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_LIBRARY_OUTPUT_DIRECTORY})

set(about_library "ZRKey gives applications one object model for cryptographic USB tokens over the
PKCS #11 module of the token's maker: PINs, small files, certificates,
signatures. Objects are called by virtual functions or by name.")
macro(zr_debian_package component package section summary text)
  set(CPACK_DEBIAN_${component}_PACKAGE_NAME ${package})
  set(CPACK_DEBIAN_${component}_PACKAGE_SECTION ${section})
  set(CPACK_DEBIAN_${component}_DESCRIPTION "${summary}\n${about_library}\n\n${text}")
endmacro()
zr_debian_package(LIBRARY ${library_package} libs
  "component library for cryptographic USB tokens"
  "This package contains the library, and the automation functions it needs.")
zr_debian_package(DEVELOPMENT libzrkey-dev libdevel
  "component library for cryptographic USB tokens (development)"
  "This package contains what is needed to build programs with the library.")
zr_debian_package(COMMAND zrkey utils
  "command and script host for cryptographic USB tokens"
  "This package contains the command zrkey.")
zr_debian_package(BROWSER zrkey-browser web
  "cryptographic USB tokens in web pages (native messaging host)"
  "This package contains the program that browsers start for the extension, and
the manifests by which Chromium, Chrome, Edge and Firefox find it.")

set(CPACK_DEBIAN_LIBRARY_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${library_package} ${same_version}")
set(CPACK_DEBIAN_COMMAND_PACKAGE_SHLIBDEPS ON)
# Like every program that is built with the library, the command needs this version or a newer one.
set(CPACK_DEBIAN_COMMAND_PACKAGE_DEPENDS "${library_package} (>= ${PROJECT_VERSION})")
# opensc-pkcs11 is a module for many cards, and contains the spy that "zrkey trace" needs.
set(CPACK_DEBIAN_COMMAND_PACKAGE_RECOMMENDS "opensc-pkcs11")
set(CPACK_DEBIAN_COMMAND_PACKAGE_SUGGESTS "softhsm2, p11-kit-modules, bash-completion")
set(CPACK_DEBIAN_BROWSER_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_BROWSER_PACKAGE_DEPENDS "${library_package} (>= ${PROJECT_VERSION})")
# PINs are asked by a pinentry with windows; the command keeps the list of sites.
set(CPACK_DEBIAN_BROWSER_PACKAGE_RECOMMENDS
  "pinentry-gtk2 | pinentry-gnome3 | pinentry-qt | pinentry-x11, zrkey, opensc-pkcs11")
set(CPACK_DEBIAN_BROWSER_PACKAGE_SUGGESTS "chromium | firefox-esr | firefox")

# What dpkg needs to know of the libraries.
set(files ${PROJECT_BINARY_DIR}/debian)
file(WRITE ${files}/shlibs "libzrkey ${ZRKEY_ABI} ${library_package} (>= ${PROJECT_VERSION})
libzrautomation ${ZRKEY_ABI} ${library_package} (>= ${PROJECT_VERSION})
")
file(WRITE ${files}/triggers "activate-noawait ldconfig\n")
set(CPACK_DEBIAN_LIBRARY_PACKAGE_CONTROL_EXTRA ${files}/shlibs ${files}/triggers)

# The manifests for the browsers of all users, with the text that the command writes. Those below /etc
# may be changed or removed by the administrator, which an upgrade respects.
set(chromium_folders etc/chromium/native-messaging-hosts etc/opt/chrome/native-messaging-hosts
  etc/opt/edge/native-messaging-hosts)
set(firefox_folders usr/lib/mozilla/native-messaging-hosts)
set(conffiles)
foreach(kind chromium firefox)
  foreach(folder IN LISTS ${kind}_folders)
    # Beside the prefix /usr; an absolute path would be that of this machine.
    install(FILES ${ZRKEY_HOST_MANIFESTS}/${kind}.json DESTINATION ../${folder}
            RENAME zrkey.browser.json COMPONENT browser)
    if(folder MATCHES "^etc/")
      string(APPEND conffiles "/${folder}/zrkey.browser.json\n")
    endif()
  endforeach()
endforeach()
file(WRITE ${files}/conffiles "${conffiles}")
set(CPACK_DEBIAN_BROWSER_PACKAGE_CONTROL_EXTRA ${files}/conffiles)

# The copyright file. That of a program ends with those of the sources that are compiled into it.
configure_file(${CMAKE_CURRENT_LIST_DIR}/copyright ${files}/copyright COPYONLY)
foreach(program command:linux browser:browser)
  string(REPLACE ":" ";" program ${program})
  list(GET program 0 component)
  list(GET program 1 kind)
  file(MAKE_DIRECTORY ${files}/${component})
  execute_process(COMMAND ${PROJECT_SOURCE_DIR}/packaging/copyright ${kind}
                  OUTPUT_FILE ${files}/${component}/copyright COMMAND_ERROR_IS_FATAL ANY)
endforeach()

execute_process(
  COMMAND ${CMAKE_CURRENT_LIST_DIR}/changelog ${PROJECT_SOURCE_DIR}/CHANGELOG.md
          ${PROJECT_VERSION} ${revision} ${ZRKEY_MAINTAINER}
  OUTPUT_FILE ${files}/changelog.Debian COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND gzip -9nf ${files}/changelog.Debian COMMAND_ERROR_IS_FATAL ANY)

function(zr_install_debian_files component package copyright)
  install(FILES ${copyright} ${files}/changelog.Debian.gz
          DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${package} COMPONENT ${component})
  # Overrides of lintian, with their reasons.
  file(READ ${CMAKE_CURRENT_LIST_DIR}/lintian-overrides overrides)
  if(component STREQUAL "browser")
    file(READ ${CMAKE_CURRENT_LIST_DIR}/lintian-overrides-browser more)
    string(APPEND overrides "${more}")
  endif()
  string(REPLACE "PACKAGE" ${package} overrides "${overrides}")
  file(WRITE ${files}/overrides/${package} "${overrides}")
  install(FILES ${files}/overrides/${package} COMPONENT ${component}
          DESTINATION ${CMAKE_INSTALL_DATADIR}/lintian/overrides)
endfunction()
zr_install_debian_files(library ${library_package} ${files}/copyright)
zr_install_debian_files(development libzrkey-dev ${files}/copyright)
zr_install_debian_files(command zrkey ${files}/command/copyright)
zr_install_debian_files(browser zrkey-browser ${files}/browser/copyright)

# In the system's folders the loader finds the libraries without a path in the files.
set(installed "\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}")
install(CODE "file(GLOB libraries ${installed}/${CMAKE_INSTALL_LIBDIR}/libzrkey.so.*.*
                                  ${installed}/${CMAKE_INSTALL_LIBDIR}/libzrautomation.so.*.*)
  foreach(library IN LISTS libraries)
    file(RPATH_REMOVE FILE \"\${library}\")
  endforeach()" COMPONENT library)
foreach(program command:zrkey browser:zrkey-browser)
  string(REPLACE ":" ";" program ${program})
  list(GET program 0 component)
  list(GET program 1 name)
  install(CODE "file(RPATH_REMOVE FILE \"${installed}/${CMAKE_INSTALL_BINDIR}/${name}\")
  execute_process(COMMAND gzip -9nf \"${installed}/${CMAKE_INSTALL_MANDIR}/man1/${name}.1\"
                  COMMAND_ERROR_IS_FATAL ANY)" COMPONENT ${component})
endforeach()
