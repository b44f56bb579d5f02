# zr_tinyxml2: the system's library on Linux; for Windows built from the source that
# scripts/setup unpacked under build/deps.
if(WIN32)
  set(ZRKEY_TINYXML2_SOURCE ${PROJECT_SOURCE_DIR}/build/deps/tinyxml2
      CACHE PATH "tinyxml2's source folder")
  add_library(zr_tinyxml2 STATIC ${ZRKEY_TINYXML2_SOURCE}/tinyxml2.cpp)
  target_include_directories(zr_tinyxml2 SYSTEM PUBLIC ${ZRKEY_TINYXML2_SOURCE})
  # It reads one small file for each Load, and would be a fifth of the DLL.
  target_compile_options(zr_tinyxml2 PRIVATE $<$<CONFIG:Release>:-Os>)
else()
  find_package(PkgConfig REQUIRED)
  pkg_check_modules(TINYXML2 REQUIRED IMPORTED_TARGET tinyxml2)
  add_library(zr_tinyxml2 INTERFACE)
  target_link_libraries(zr_tinyxml2 INTERFACE PkgConfig::TINYXML2)
endif()
