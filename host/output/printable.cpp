// Text from a token or a user, made safe to show.
#include "host/output/printable.h"

#include <utf8cpp/utf8.h>

#include <iterator>

namespace zr::host {

std::string printable(std::string_view utf8) {
    std::string text;
    utf8::replace_invalid(utf8.begin(), utf8.end(), std::back_inserter(text), U'?');
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        const auto before = static_cast<unsigned char>(i > 0 ? text[i - 1] : 0);
        if (byte < 0x20 || byte == 0x7F) {
            text[i] = '?';
        } else if (before == 0xC2 && byte < 0xA0) {
            // U+0080 to U+009F, control characters of terminals too.
            text[i - 1] = '?';
            text[i] = '?';
        }
    }
    return text;
}

std::string inQuotes(std::string_view utf8) {
    return '"' + printable(utf8) + '"';
}

}  // namespace zr::host
