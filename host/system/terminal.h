// Terminals, and prompting on the controlling one, wherever the standard streams lead; one
// implementation per target.
#pragma once

#include <functional>
#include <string>

namespace zr::host {

enum class PromptResult { kAnswered, kNoTerminal, kCancelled, kTooLong };

/// Whether there is a terminal to prompt on.
bool hasTerminal();

/// Prompts for a line that is not shown while it is typed. Every copy of the line is erased.
/// @param take  gets the line byte by byte in UTF-8, without its end; returns false when it takes
///              no more, which makes the line too long.
PromptResult promptHidden(const std::string& prompt, const std::function<bool(char)>& take);

/// The same for a line that is shown and is not secret.
PromptResult promptVisible(const std::string& prompt, const std::function<bool(char)>& take);

/// Switches the echo on again that a prompt switched off. For a process that ends while it prompts;
/// on any thread.
void restoreTerminal();

/// Whether a descriptor is a terminal.
bool isTerminal(int descriptor);

/// Whether a descriptor writes to a terminal that can show colours and draw a line again.
bool isCapableTerminal(int descriptor);

}  // namespace zr::host
