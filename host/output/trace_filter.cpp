// The trace of a PKCS #11 module without PINs.
#include "host/output/trace_filter.h"

#include <algorithm>
#include <iterator>

#include "host/output/printable.h"

namespace zr::host {
namespace {

/// No line of the spy is longer; a module without line ends must not fill the memory.
constexpr std::size_t kLongestLine = 1 << 16;

constexpr std::string_view kSecretCalls[] = {"C_Login", "C_LoginUser", "C_SetPIN", "C_InitPIN",
                                             "C_InitToken"};
constexpr std::string_view kReturned = "Returned:";
constexpr std::string_view kArgument = "[in] ";
constexpr std::string_view kHexDigits = "0123456789abcdefABCDEF";

/// The name of the function in a line "7: C_Login"; empty when it is another line.
std::string_view calledIn(std::string_view line) {
    const std::size_t colon = line.find_first_not_of("0123456789");
    if (colon == 0 || colon == std::string_view::npos || !line.substr(colon).starts_with(": C_")) {
        return {};
    }
    const std::string_view name = line.substr(colon + 2);
    return name.substr(0, name.find_first_of(" \t\r("));
}

bool isSecretCall(std::string_view name) {
    return std::find(std::begin(kSecretCalls), std::end(kSecretCalls), name) !=
           std::end(kSecretCalls);
}

/// "[in] pPin[ulPinLen] ...", also pOldPin and others.
bool isPinArgument(std::string_view line) {
    return line.starts_with(kArgument) &&
           line.substr(0, line.find(' ', kArgument.size())).find("Pin") != std::string_view::npos;
}

/// "    00000000  31 32 33 34 ...": bytes of an argument.
bool isDump(std::string_view line) {
    constexpr std::size_t kIndent = 4;
    constexpr std::size_t kDigits = 8;
    return line.size() > kIndent + kDigits &&
           line.substr(0, kIndent).find_first_not_of(' ') == std::string_view::npos &&
           line.substr(kIndent, kDigits).find_first_not_of(kHexDigits) == std::string_view::npos;
}

}  // namespace

std::string TraceFilter::add(std::string_view bytes) {
    std::string shown;
    while (!bytes.empty()) {
        const std::size_t end = bytes.find('\n');
        const std::string_view part = bytes.substr(0, end);
        const std::size_t room = kLongestLine - m_line.size();
        m_isTooLong = m_isTooLong || part.size() > room;
        m_line.insert(m_line.end(), part.begin(),
                      part.begin() + static_cast<std::ptrdiff_t>(std::min(room, part.size())));
        if (end == std::string_view::npos) {
            break;
        }
        shown += show(viewOf(m_line));
        m_line.clear();
        m_isTooLong = false;
        bytes.remove_prefix(end + 1);
    }
    return shown;
}

std::string TraceFilter::finish() {
    std::string shown = m_line.empty() ? "" : show(viewOf(m_line));
    m_line.clear();
    return shown;
}

std::string TraceFilter::show(std::string_view line) {
    m_isPinDump = isPinArgument(line) || (m_isPinDump && isDump(line));
    if (m_isSecret) {
        m_isSecret = !line.starts_with(kReturned);
    }
    if (m_isSecret || m_isPinDump) {
        return {};
    }
    std::string shown = printable(line);
    if (isSecretCall(calledIn(line))) {
        m_isSecret = true;
        shown.append("\n(arguments are not shown)");
    }
    return shown.append(m_isTooLong ? "...\n" : "\n");
}

}  // namespace zr::host
