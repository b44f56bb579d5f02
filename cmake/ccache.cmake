# Compiles through ccache where it is installed. A launcher given on the command line is kept.
option(ZRKEY_CCACHE "Compile through ccache if it is installed" ON)
find_program(ZRKEY_CCACHE_PROGRAM ccache NO_CMAKE_FIND_ROOT_PATH)
mark_as_advanced(ZRKEY_CCACHE_PROGRAM)
if(ZRKEY_CCACHE AND ZRKEY_CCACHE_PROGRAM)
  # Without these settings ccache does not cache files that use a precompiled header.
  set(launcher ${CMAKE_COMMAND} -E env CCACHE_SLOPPINESS=pch_defines,time_macros
               ${ZRKEY_CCACHE_PROGRAM})
  foreach(language C CXX)
    if(NOT CMAKE_${language}_COMPILER_LAUNCHER)
      set(CMAKE_${language}_COMPILER_LAUNCHER ${launcher})
    endif()
  endforeach()
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    add_compile_options($<$<COMPILE_LANGUAGE:CXX>:-fpch-preprocess>)
  endif()
endif()
