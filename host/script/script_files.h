// Files for scripts: the globals readFile and writeFile.
#pragma once

#include <duktape.h>

#include <string>

namespace zr::host {

void addFileFunctions(duk_context* script);

/// Pushes the bytes of a file as a buffer, which counts towards the script's memory. Throws an Error
/// when they cannot be read.
/// @param path      opened.
/// @param name      names the file in the error.
/// @param function  that the script called, for the error.
void pushFile(duk_context* script, const std::string& path, const std::string& name,
              const std::string& function);

}  // namespace zr::host
