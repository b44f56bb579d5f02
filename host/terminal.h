// Asking on the controlling terminal, whatever the standard streams lead to; one implementation per
// target.
#pragma once

#include <string>

#include "secret.h"

namespace zr::host {

enum class Asked { kAnswered, kNoTerminal, kCancelled, kTooLong };

/// Whether there is a terminal to ask on.
bool hasTerminal();

/// Asks for a line that is not shown while it is typed.
/// @param answer  receives the line without its end.
Asked askSecret(const std::string& prompt, Secret& answer);

}  // namespace zr::host
