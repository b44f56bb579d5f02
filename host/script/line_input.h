// Lines of standard input for scripts: the global readLine.
#pragma once

#include <duktape.h>

namespace zr::host {

void addLineInput(duk_context* script);

}  // namespace zr::host
