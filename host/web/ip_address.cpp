// Addresses in the hosts of origins, in the one form that browsers write.
#include "host/web/ip_address.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <vector>

namespace zr::host {
namespace {

constexpr std::size_t kWords = 8;

std::vector<std::string_view> split(std::string_view text, char separator) {
    std::vector<std::string_view> parts;
    for (std::size_t end = 0; end != std::string_view::npos;) {
        end = text.find(separator);
        parts.push_back(text.substr(0, end));
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    }
    return parts;
}

/// @return nullopt when it is not 1 to 4 hexadecimal digits.
std::optional<std::uint16_t> readWord(std::string_view text) {
    constexpr std::string_view kDigits = "0123456789abcdef";
    if (text.empty() || text.size() > 4) {
        return std::nullopt;
    }
    unsigned word = 0;
    for (const char c : text) {
        const std::size_t digit = kDigits.find(c);
        if (digit == std::string_view::npos) {
            return std::nullopt;
        }
        word = word * 16 + static_cast<unsigned>(digit);
    }
    return static_cast<std::uint16_t>(word);
}

/// The words of one side of "::", or of a whole address; nullopt when one is wrong.
std::optional<std::vector<std::uint16_t>> readWords(std::string_view text) {
    std::vector<std::uint16_t> words;
    if (text.empty()) {
        return words;
    }
    for (const std::string_view part : split(text, ':')) {
        const std::optional<std::uint16_t> word = readWord(part);
        if (!word) {
            return std::nullopt;
        }
        words.push_back(*word);
    }
    return words;
}

std::string hexadecimal(std::uint16_t word) {
    std::string text;
    do {
        text.insert(text.begin(), "0123456789abcdef"[word % 16]);
        word = static_cast<std::uint16_t>(word / 16);
    } while (word != 0);
    return text;
}

/// The first of the longest runs of at least two zeros.
struct Zeros {
    std::size_t begin = kWords;
    std::size_t count = 1;
};

Zeros longestZeros(const std::array<std::uint16_t, kWords>& words) {
    Zeros longest;
    for (std::size_t begin = 0; begin < kWords; ++begin) {
        std::size_t end = begin;
        while (end < kWords && words[end] == 0) {
            ++end;
        }
        if (end - begin > longest.count) {
            longest = {begin, end - begin};
        }
    }
    return longest;
}

std::string written(const std::array<std::uint16_t, kWords>& words) {
    const Zeros zeros = longestZeros(words);
    std::string text;
    for (std::size_t i = 0; i < kWords; ++i) {
        if (i == zeros.begin) {
            text.append(i == 0 ? "::" : ":");
            i += zeros.count - 1;
            continue;
        }
        text.append(hexadecimal(words[i]));
        text.append(i + 1 < kWords ? ":" : "");
    }
    return text;
}

}  // namespace

bool isIpv4Address(std::string_view text) {
    const std::vector<std::string_view> parts = split(text, '.');
    return parts.size() == 4 && std::all_of(parts.begin(), parts.end(), [](std::string_view part) {
               constexpr int kLast = 255;
               const bool isNumber = !part.empty() && part.size() <= 3 &&
                                     (part == "0" || part.front() != '0') &&
                                     part.find_first_not_of("0123456789") == part.npos;
               return isNumber && std::stoi(std::string(part)) <= kLast;
           });
}

std::optional<std::string> ipv6Address(std::string_view text) {
    std::array<std::uint16_t, kWords> words = {};
    const std::size_t gap = text.find("::");
    const auto front = readWords(text.substr(0, gap));
    const auto back =
        readWords(gap == std::string_view::npos ? std::string_view() : text.substr(gap + 2));
    if (!front || !back) {
        return std::nullopt;
    }
    const std::size_t count = front->size() + back->size();
    if (gap == std::string_view::npos ? count != kWords : count >= kWords) {
        return std::nullopt;
    }
    std::copy(front->begin(), front->end(), words.begin());
    std::copy(back->rbegin(), back->rend(), words.rbegin());
    return written(words);
}

}  // namespace zr::host
