# zr_add_windows_resource(NAME TARGET DESCRIPTION text FILE name KIND APP|DLL [MANIFEST file]
#                         [TYPE_LIBRARY file])
#
# An object library NAME that adds to the file of TARGET its version resource, with the project's
# version, and a manifest or a type library. It is a target of its own, because the resource compiler
# does not take the options of the C++ compiler.
enable_language(RC)

function(zr_add_windows_resource name target)
  cmake_parse_arguments(arg "" "DESCRIPTION;FILE;KIND;MANIFEST;TYPE_LIBRARY" "" ${ARGN})
  set(folder ${CMAKE_CURRENT_BINARY_DIR}/${name})
  set(ZR_FILE_DESCRIPTION ${arg_DESCRIPTION})
  set(ZR_FILE_KIND ${arg_KIND})
  set(ZR_FILE_NAME ${arg_FILE})
  cmake_path(GET arg_FILE STEM ZR_INTERNAL_NAME)
  set(ZR_FILE_VERSION ${PROJECT_VERSION}.0)
  string(REPLACE . , ZR_FILE_VERSION_NUMBERS ${ZR_FILE_VERSION})
  set(ZR_OTHER_LINE)
  if(arg_MANIFEST)
    configure_file(${arg_MANIFEST} ${folder}/zrkey.manifest @ONLY)
    # Resource 1 of type 24 (RT_MANIFEST).
    set(ZR_OTHER_LINE "1 24 \"zrkey.manifest\"")
  elseif(arg_TYPE_LIBRARY)
    set(ZR_OTHER_LINE "1 TYPELIB \"${arg_TYPE_LIBRARY}\"")
  endif()
  configure_file(${PROJECT_SOURCE_DIR}/cmake/windows_resource.rc.in ${folder}/zrkey.rc @ONLY)
  add_library(${name} OBJECT ${folder}/zrkey.rc)
  set_target_properties(${name} PROPERTIES COMPILE_OPTIONS "" COMPILE_DEFINITIONS "")
  if(arg_MANIFEST)
    set_property(SOURCE ${folder}/zrkey.rc PROPERTY OBJECT_DEPENDS ${folder}/zrkey.manifest)
  elseif(arg_TYPE_LIBRARY)
    set_property(SOURCE ${folder}/zrkey.rc PROPERTY OBJECT_DEPENDS ${arg_TYPE_LIBRARY})
  endif()
  target_sources(${target} PRIVATE $<TARGET_OBJECTS:${name}>)
endfunction()
