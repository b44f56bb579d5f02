// A command's failure: what was asked, what was answered, what to try; and the exit code.
#include "failure.h"

#include <utility>

#include "library.h"

namespace zr::host {

std::string Failure::cause() const {
    return answer ? "the library answered " + resultText(*answer) : reason;
}

std::string Failure::line() const {
    return printable("zrkey: cannot " + asked + ": " + cause() + "; " + advice) + "\n";
}

Failure refused(int exitCode, std::string asked, HRESULT answer, std::string advice) {
    return {exitCode, std::move(asked), answer, {}, std::move(advice)};
}

Failure failed(int exitCode, std::string asked, std::string reason, std::string advice) {
    return {exitCode, std::move(asked), std::nullopt, std::move(reason), std::move(advice)};
}

std::string printable(std::string_view utf8) {
    std::string text(utf8);
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        const auto before = static_cast<unsigned char>(i > 0 ? text[i - 1] : 0);
        if (byte < 0x20 || byte == 0x7F) {
            text[i] = '?';
        } else if (before == 0xC2 && byte < 0xA0) {
            // U+0080 to U+009F, which terminals obey too.
            text.replace(i - 1, 2, "??");
        }
    }
    return text;
}

std::string inQuotes(std::string_view utf8) {
    return '"' + printable(utf8) + '"';
}

}  // namespace zr::host
