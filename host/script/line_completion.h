// The names that a line of a script can go on with.
#pragma once

#include <duktape.h>

#include <string>
#include <string_view>
#include <vector>

namespace zr::host {

/// What can replace the end of a line.
struct LineCompletion {
    std::size_t typed = 0;           ///< how many bytes of the names are typed already
    std::vector<std::string> names;  ///< sorted
};

/// Finds the globals, or the members of the object before the last dot. No function of the script
/// is called but getters; the engine's stack stays as it is.
LineCompletion completeLine(duk_context* script, std::string_view line);

}  // namespace zr::host
