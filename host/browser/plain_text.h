// Data that a person can read in a prompt.
#pragma once

#include <string_view>

namespace zr::host {

/// Whether data is a short text whose every character is visible as it is: a prompt shows it whole. Not
/// with control characters except line ends and tabs, characters that change the direction of others,
/// or characters that cannot be seen. Not with words of both directions of writing, such as Hebrew and
/// Latin ones, or digits between words from right to left: a window changes their order.
bool isShortPlainText(std::string_view data);

}  // namespace zr::host
