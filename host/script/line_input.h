// Lines of standard input for scripts: the global readLine.
#pragma once

#include <duktape.h>

namespace zr::host {

void addLineInput(duk_context* script);

/// Pushes the next line of standard input without its end; null after the last one.
void pushInputLine(duk_context* script);

}  // namespace zr::host
