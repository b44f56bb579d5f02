# What cpack packs on Linux, by ZRKEY_PACKAGE: "archive", one .tar.gz with every component, or "debian",
# one package a component. packaging/linux/make sets it, and the library folder to match.
set(CPACK_PACKAGE_NAME zrkey)
set(CPACK_PACKAGE_VENDOR "ZRKey")
set(CPACK_PACKAGE_FILE_NAME zrkey-${PROJECT_VERSION}-linux-${CMAKE_SYSTEM_PROCESSOR})
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_POST_BUILD_SCRIPTS ${CMAKE_CURRENT_LIST_DIR}/repack.cmake)
set(CPACK_ARCHIVE_COMPONENT_INSTALL OFF)

if(ZRKEY_PACKAGE STREQUAL "debian")
  include(${CMAKE_CURRENT_LIST_DIR}/debian.cmake)
endif()
include(CPack)
