// The names that a line of a script can go on with.
#pragma once

#include <duktape.h>

#include <string_view>

#include "host/system/line_editor.h"

namespace zr::host {

/// Finds the globals, or the members of the object before the last dot. No function of the script
/// is called but getters; the engine's stack stays as it is.
LineCompletion completeLine(duk_context* script, std::string_view line);

}  // namespace zr::host
