// Modules for scripts: the global require.
#pragma once

#include <duktape.h>

#include <string>

namespace zr::host {

/// Adds require to an engine.
/// @param file  the path of the script, in whose folder require looks; empty for a script that is
///              no file: require looks in the current directory then.
void addModules(duk_context* script, const std::string& file);

}  // namespace zr::host
