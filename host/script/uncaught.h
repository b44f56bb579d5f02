// The report of a script that ended with an error.
#pragma once

#include <duktape.h>

#include <string>

namespace zr::host {

/// The report of a script that is out of time.
std::string timeoutReport(const std::string& place);

/// Describes the thrown value on top of the stack and pops it: a line "FILE:LINE: message", an
/// explanation if there is one, and the callers in the script. The lines contain no control
/// characters; the last one has no line end.
/// @param file     the script's name, for a value that names no place.
/// @param timeout  the report when the time is up and the place is unknown.
std::string describeFailure(duk_context* script, const std::string& file,
                            const std::string& timeout);

}  // namespace zr::host
