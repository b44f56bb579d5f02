// The words of a prompt. Text from a page, a token or a certificate cannot leave its line, look like a
// line of ours, change the order of characters or hide.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "host/browser/prompt.h"

namespace zr::host {

/// What the window makes of "<" and "&".
enum class Markup { kNone, kPossible };

/// A line has at most so many columns, so that no window breaks it at a place that a page chose. Wide
/// letters count twice.
inline constexpr std::size_t kPromptColumns = 46;

/// The lines of a prompt, without line ends.
struct PromptLines {
    std::vector<std::string> head;  ///< what is asked, and the site
    std::vector<std::string> body;
};

/// A text on one line. Control characters, those for the direction of text, those without a width,
/// spaces but single blanks, and bytes that are not UTF-8 are shown as codes: "[U+202E]", "[0xFF]".
/// @param most  bytes of the result; a longer one is cut, and ends with a mark.
std::string shownText(std::string_view text, std::size_t most, Markup markup = Markup::kNone);

/// "NAME: VALUE". A long value goes on in lines that begin with blanks; no other line does.
std::vector<std::string> shownValue(const std::string& name, std::string_view value,
                                    std::size_t most, Markup markup = Markup::kNone);

/// A text of several lines, each after "> "; a long line goes on in lines that begin with blanks.
std::vector<std::string> shownBlock(std::string_view text, Markup markup = Markup::kNone);

PromptLines linesOf(const PinQuestion& question, Markup markup = Markup::kNone);
PromptLines linesOf(const Confirmation& confirmation, Markup markup = Markup::kNone);

}  // namespace zr::host
