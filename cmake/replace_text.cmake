# zr_replace_text(VARIABLE OLD NEW)
#
# string(REPLACE) that fails when the variable does not hold the old text exactly once: an edit of a
# file that is not ours must not pass silently when a new version of the file is different.
function(zr_replace_text variable old new)
  string(FIND "${${variable}}" "${old}" first)
  string(FIND "${${variable}}" "${old}" last REVERSE)
  if(first EQUAL -1 OR NOT first EQUAL last)
    message(FATAL_ERROR "${variable} must hold this text exactly once: ${old}")
  endif()
  string(REPLACE "${old}" "${new}" text "${${variable}}")
  set(${variable} "${text}" PARENT_SCOPE)
endfunction()
