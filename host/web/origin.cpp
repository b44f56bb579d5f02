// A site: what may ask for a token, as browsers name it.
#include "host/web/origin.h"

#include <algorithm>
#include <cstdint>

#include "host/web/ip_address.h"

namespace zr::host {
namespace {

constexpr std::size_t kMostLetters = 300;
constexpr std::size_t kMostHostLetters = 253;
constexpr std::size_t kMostLabelLetters = 63;
constexpr unsigned kLastPort = 65535;

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

/// ASCII only: the locale does not matter.
std::string lowerCase(std::string_view text) {
    std::string lower(text);
    std::transform(lower.begin(), lower.end(), lower.begin(), [](char c) {
        return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    });
    return lower;
}

/// @return empty when all letters may stand in an origin.
std::string problemOfLetters(std::string_view text) {
    if (text.empty()) {
        return "is empty";
    }
    if (text.size() > kMostLetters) {
        return "is too long";
    }
    for (const char c : text) {
        if (static_cast<unsigned char>(c) >= 0x80) {
            return "has letters outside ASCII; write its host in Punycode, which begins with xn--, "
                   "as "
                   "the browser sends it";
        }
        if (c <= ' ' || c == 0x7F) {
            return "contains a blank or a control character";
        }
    }
    return {};
}

/// What follows the host and the port.
std::string problemOfRest(std::string_view rest) {
    if (rest.empty() || rest == "/") {
        return {};
    }
    switch (rest.front()) {
        case '?':
            return "has a query; leave it out";
        case '#':
            return "has a fragment; leave it out";
        case '\\':
            return "contains \"\\\"";
        default:
            return "has a path; end it before the \"/\"";
    }
}

std::string problemOfName(std::string_view name) {
    if (name.size() > kMostHostLetters) {
        return "has a host that is too long";
    }
    if (name.find('*') != std::string_view::npos) {
        return "contains \"*\"; name each site by itself";
    }
    // Browsers take it for another origin with the same site behind it: a denial would not cover it.
    if (name.size() > 1 && name.ends_with('.')) {
        return "has a host that ends with a dot; leave the dot out";
    }
    std::string_view rest = name;
    std::string_view label;
    for (std::size_t end = 0; end != std::string_view::npos;) {
        end = rest.find('.');
        label = rest.substr(0, end);
        if (label.empty() || label.size() > kMostLabelLetters) {
            return "has a host with a part that is empty or too long";
        }
        if (label.find_first_not_of("abcdefghijklmnopqrstuvwxyz0123456789-_") != label.npos) {
            return "has a host with a character that is not allowed";
        }
        rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 1);
    }
    const bool isNumber =
        std::all_of(label.begin(), label.end(), isDigit) ||
        (label.starts_with("0x") &&
         label.find_first_not_of("0123456789abcdef", 2) == std::string_view::npos);
    // Browsers read every such host as an address, and write it in one form.
    return isNumber && !isIpv4Address(name) ? "has an address that is not written as four numbers"
                                            : "";
}

/// @param host  in lower case; an address gets the form that browsers write.
std::string problemOfHost(std::string& host) {
    if (host.empty()) {
        return "has no host";
    }
    if (host.front() != '[') {
        return problemOfName(host);
    }
    const std::optional<std::string> address =
        host.back() == ']' ? ipv6Address(std::string_view(host).substr(1, host.size() - 2))
                           : std::nullopt;
    if (!address) {
        return "has an address that is not IPv6";
    }
    host = std::string("[").append(*address).append("]");
    return {};
}

/// @param port  the text after ":"; nullopt for a wrong one.
std::optional<unsigned> readPort(std::string_view port) {
    constexpr std::size_t kMostDigits = 5;
    const bool isNumber = !port.empty() && port.size() <= kMostDigits && port.front() != '0' &&
                          std::all_of(port.begin(), port.end(), isDigit);
    unsigned number = 0;
    for (const char c : isNumber ? port : std::string_view()) {
        number = number * 10 + static_cast<unsigned>(c - '0');
    }
    return isNumber && number <= kLastPort ? std::optional(number) : std::nullopt;
}

bool isThisMachine(const std::string& host) {
    return host == "localhost" || host == "127.0.0.1";
}

}  // namespace

std::optional<Origin> Origin::read(std::string_view text, std::string& problem) {
    problem = problemOfLetters(text);
    if (!problem.empty()) {
        return std::nullopt;
    }
    const std::size_t schemeEnd = text.find("://");
    if (schemeEnd == std::string_view::npos || schemeEnd == 0) {
        problem = "has no scheme; write https:// before it";
        return std::nullopt;
    }
    const std::string scheme = lowerCase(text.substr(0, schemeEnd));
    if (scheme != "https" && scheme != "http") {
        problem = "is neither https nor http";
        return std::nullopt;
    }
    text.remove_prefix(schemeEnd + 3);
    const std::size_t end = std::min(text.find_first_of("/?#\\"), text.size());
    problem = problemOfRest(text.substr(end));
    const std::string authority = lowerCase(text.substr(0, end));
    if (problem.empty() && authority.find('@') != std::string::npos) {
        problem = "has a user name; leave it out";
    }
    if (!problem.empty()) {
        return std::nullopt;
    }
    // The colons of an IPv6 address stand within its brackets.
    const std::size_t colon = authority.find(':', authority.find(']') + 1);
    std::string host = authority.substr(0, colon);
    problem = problemOfHost(host);
    std::optional<unsigned> port;
    if (problem.empty() && colon != std::string::npos) {
        port = readPort(std::string_view(authority).substr(colon + 1));
        problem = port ? "" : "has a port that is not a number from 1 to 65535";
    }
    if (problem.empty() && scheme == "http" && !isThisMachine(host)) {
        problem = "is http; only https is safe, and http with localhost or 127.0.0.1";
    }
    if (!problem.empty()) {
        return std::nullopt;
    }
    constexpr unsigned kHttpsPort = 443;
    constexpr unsigned kHttpPort = 80;
    std::string written = scheme;
    written.append("://").append(host);
    if (port && *port != (scheme == "https" ? kHttpsPort : kHttpPort)) {
        written.append(":").append(std::to_string(*port));
    }
    return Origin(std::move(written));
}

}  // namespace zr::host
