// Data that a person can read in a prompt.
#pragma once

#include <string_view>

namespace zr::host {

/// Whether data is a short text that a prompt can show whole, because every character is visible as it is.
/// False for text with control characters other than line ends and tabs, with characters that are
/// invisible or change the direction of others, or that mixes left-to-right and right-to-left words, or
/// has digits between right-to-left words: a window changes the order of those.
bool isShortPlainText(std::string_view data);

}  // namespace zr::host
