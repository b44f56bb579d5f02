// The conversions beside slow ones that follow the rules character by character: all short texts,
// texts around the words of eight bytes, and all sizes of the target. Linux only: Wine has code of
// its own, which does not terminate every text.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <string>
#include <vector>

#include "platform/kernel.h"

namespace {

using Wide = std::u16string;

constexpr WCHAR kWidePoison = 0x5a5a;
constexpr char kPoison = '\x5a';

/// The lead bytes of sequences with the second bytes that may follow, from the table of well-formed
/// sequences in the Unicode standard. The other bytes are 80 to BF.
struct SequenceRow {
    unsigned char firstLead, lastLead, firstSecond, lastSecond;
    std::size_t length;
};

constexpr SequenceRow kSequences[] = {{0xC2, 0xDF, 0x80, 0xBF, 2}, {0xE0, 0xE0, 0xA0, 0xBF, 3},
                                      {0xE1, 0xEC, 0x80, 0xBF, 3}, {0xED, 0xED, 0x80, 0x9F, 3},
                                      {0xEE, 0xEF, 0x80, 0xBF, 3}, {0xF0, 0xF0, 0x90, 0xBF, 4},
                                      {0xF1, 0xF3, 0x80, 0xBF, 4}, {0xF4, 0xF4, 0x80, 0x8F, 4}};

unsigned char byteAt(const std::string& text, std::size_t at) {
    return at < text.size() ? static_cast<unsigned char>(text[at]) : 0;
}

bool isIn(unsigned char byte, unsigned char first, unsigned char last) {
    return byte >= first && byte <= last;
}

/// What was read of a text.
template <class Text>
struct Character {
    Text converted;
    std::size_t length;  ///< how much of the text it takes
    bool isValid;
};

/// @param inputLength  the length of the input, with the terminator when that is converted too.
Character<Wide> firstOf(const std::string& text, std::size_t inputLength) {
    const unsigned char lead = byteAt(text, 0);
    if (lead < 0x80) {
        return {Wide(1, lead), 1, true};
    }
    for (const SequenceRow& row : kSequences) {
        if (!isIn(lead, row.firstLead, row.lastLead)) {
            continue;
        }
        if (row.length > inputLength) {
            return {u"\ufffd", text.size(), false};
        }
        if (!isIn(byteAt(text, 1), 0x80, 0xBF)) {
            return {u"\ufffd", 1, false};
        }
        const bool isSecond = isIn(byteAt(text, 1), row.firstSecond, row.lastSecond);
        std::size_t continued = 2;
        while (isSecond && continued < row.length && isIn(byteAt(text, continued), 0x80, 0xBF)) {
            ++continued;
        }
        if (!isSecond || continued < row.length) {
            // A wrong second byte of three bytes is part of the sequence, and so is a third of four.
            return {u"\ufffd", continued, false};
        }
        char32_t value = lead & (0xFFu >> (row.length + 1));
        for (std::size_t i = 1; i < row.length; ++i) {
            value = value * 64 + (byteAt(text, i) - 0x80u);
        }
        if (value < 0x10000) {
            return {Wide(1, static_cast<char16_t>(value)), row.length, true};
        }
        const char16_t pair[] = {static_cast<char16_t>(0xD800 + (value - 0x10000) / 1024),
                                 static_cast<char16_t>(0xDC00 + (value - 0x10000) % 1024)};
        return {Wide(pair, 2), row.length, true};
    }
    return {u"\ufffd", 1, false};
}

Character<std::string> firstOf(const Wide& text) {
    const char32_t unit = text[0];
    const bool isSurrogate = unit >= 0xD800 && unit <= 0xDFFF;
    const bool isPair =
        isSurrogate && unit < 0xDC00 && text.size() > 1 && text[1] >= 0xDC00 && text[1] <= 0xDFFF;
    const char32_t value = isPair        ? 0x10000 + (unit - 0xD800) * 1024 + (text[1] - 0xDC00u)
                           : isSurrogate ? 0xFFFD
                                         : unit;
    std::string bytes;
    if (value < 0x80) {
        bytes = {static_cast<char>(value)};
    } else if (value < 0x800) {
        bytes = {static_cast<char>(0xC0 + value / 64), static_cast<char>(0x80 + value % 64)};
    } else if (value < 0x10000) {
        bytes = {static_cast<char>(0xE0 + value / 4096), static_cast<char>(0x80 + value / 64 % 64),
                 static_cast<char>(0x80 + value % 64)};
    } else {
        bytes = {static_cast<char>(0xF0 + value / 262144),
                 static_cast<char>(0x80 + value / 4096 % 64),
                 static_cast<char>(0x80 + value / 64 % 64), static_cast<char>(0x80 + value % 64)};
    }
    return {bytes, isPair ? 2u : 1u, isPair || !isSurrogate};
}

/// What a conversion returns, and what it writes into a target with the given size.
template <class Text>
struct Outcome {
    int result;
    Text written;
    bool operator==(const Outcome&) const = default;
};

Outcome<Wide> slowlyDecoded(std::string text, bool isTerminated, bool isStrict, std::size_t size) {
    Wide all;
    bool isValid = true;
    bool isCut = false;
    const std::size_t room = size == 0 ? SIZE_MAX : size;
    while (!text.empty() && all.size() <= room && !isCut) {
        const auto next = firstOf(text, text.size() + (isTerminated ? 1 : 0));
        text.erase(0, next.length);
        all += next.converted;
        isValid = isValid && next.isValid;
        // A pair at the very end is cut when there is room for one unit.
        isCut =
            next.converted.size() == 2 && all.size() == room + 1 && text.empty() && !isTerminated;
    }
    if (isTerminated) {
        all += u'\0';
    }
    const Wide written = size == 0 ? Wide() : all.substr(0, room);
    const bool isDone = (all.size() <= room || isCut) && (isValid || !isStrict);
    return {isDone ? static_cast<int>(std::min(all.size(), room)) : 0, written};
}

Outcome<std::string> slowlyEncoded(Wide text, bool isTerminated, bool isStrict, std::size_t size) {
    if (isTerminated) {
        text += u'\0';
    }
    std::string all;
    bool isValid = true;
    const std::size_t room = size == 0 ? SIZE_MAX : size;
    while (!text.empty()) {
        const auto next = firstOf(text);
        if (next.converted.size() > room - all.size()) {
            return {0, all};
        }
        text.erase(0, next.length);
        all += next.converted;
        isValid = isValid && next.isValid;
    }
    return {isValid || !isStrict ? static_cast<int>(all.size()) : 0, size == 0 ? "" : all};
}

/// The units up to the last one that is not poison. No text here ends in poison.
template <class Text>
Text writtenIn(Text buffer, typename Text::value_type poison) {
    return buffer.substr(0, buffer.find_last_not_of(poison) + 1);
}

Outcome<Wide> decoded(const std::string& text, bool isTerminated, bool isStrict, std::size_t size) {
    Wide buffer(size + 4, kWidePoison);
    const int result = MultiByteToWideChar(
        CP_UTF8, isStrict ? MB_ERR_INVALID_CHARS : 0, text.c_str(),
        isTerminated ? -1 : static_cast<int>(text.size()), buffer.data(), static_cast<int>(size));
    return {result, writtenIn(buffer, kWidePoison)};
}

Outcome<std::string> encoded(const Wide& text, bool isTerminated, bool isStrict, std::size_t size) {
    std::string buffer(size + 4, kPoison);
    const int result =
        WideCharToMultiByte(CP_UTF8, isStrict ? WC_ERR_INVALID_CHARS : 0, text.c_str(),
                            isTerminated ? -1 : static_cast<int>(text.size()), buffer.data(),
                            static_cast<int>(size), nullptr, nullptr);
    return {result, writtenIn(buffer, kPoison)};
}

/// The units of a text as numbers, for messages.
template <class Text>
std::string unitsOf(const Text& text) {
    std::string units;
    for (const auto unit : text) {
        units
            .append(testing::PrintToString(
                static_cast<std::make_unsigned_t<typename Text::value_type>>(unit)))
            .append(" ");
    }
    return units;
}

/// Compares two conversions of a text with all sizes of the target up to the largest.
template <class Text, class Fast, class Slow>
void compare(const Text& text, std::size_t largest, Fast fast, Slow slow) {
    for (std::size_t size = 0; size <= largest; ++size) {
        for (const bool isTerminated : {false, true}) {
            for (const bool isStrict : {false, true}) {
                if (text.empty() && !isTerminated) {
                    continue;  // a length of 0 is an error
                }
                ASSERT_TRUE(slow(text, isTerminated, isStrict, size) ==
                            fast(text, isTerminated, isStrict, size))
                    << unitsOf(text) << "into " << size << " units, terminated: " << isTerminated
                    << ", strict: " << isStrict;
            }
        }
    }
}

/// Calls a function with each text of at most so many of the units.
template <class Text>
void forAllTexts(const Text& units, std::size_t most,
                 const std::function<void(const Text&)>& call) {
    std::vector<Text> texts = {Text()};
    for (std::size_t length = 0; length <= most; ++length) {
        std::vector<Text> longer;
        for (const Text& text : texts) {
            call(text);
            for (const auto unit : units) {
                longer.push_back(text + unit);
            }
        }
        texts.swap(longer);
    }
}

/// Calls a function with each text between ASCII characters, so many that the words of eight bytes
/// begin and end at each place around it.
template <class Text>
void forAllPlaces(const std::vector<Text>& texts, const std::function<void(const Text&)>& call) {
    for (const Text& text : texts) {
        for (std::size_t before = 0; before <= 17; ++before) {
            for (const std::size_t behind : {0, 1, 7, 8, 9}) {
                call(Text(before, 'p') + text + Text(behind, 's'));
            }
        }
    }
}

TEST(TextConversionRulesTest, ShortUtf8OfAnyBytesIsDecodedByTheRules) {
    const std::string bytes =
        "a\x7f\x80\x8f\x90\x9f\xa0\xbf\xc1\xc2\xdf\xe0\xe2\xed\xef\xf0\xf1\xf4\xf5";
    forAllTexts<std::string>(
        bytes, 3, [](const std::string& text) { compare(text, 4, decoded, slowlyDecoded); });
    forAllTexts<std::string>("a\x80\x90\xa0\xc3\xe0\xed\xf0\xf4", 4, [](const std::string& text) {
        compare(text, 2, decoded, slowlyDecoded);
    });
}

TEST(TextConversionRulesTest, Utf8AroundWordsOfEightBytesIsDecodedByTheRules) {
    forAllPlaces<std::string>(
        {"", "\x80", "\xc3\xa9", "\xe2\x82\xac", "\xf0\x9f\x98\x80", "\xe2\x82", "\xf0\x9f",
         "\xff\xff", "\xe2\x82\xac\x61\xc3\xa9"},
        [](const std::string& text) { compare(text, text.size() + 1, decoded, slowlyDecoded); });
}

TEST(TextConversionRulesTest, ShortUtf16OfAnyUnitsIsEncodedByTheRules) {
    const Wide units = {u'a',   0x7f,   0x80,   0x7ff,  0x800,  0xd7ff,
                        0xd800, 0xdbff, 0xdc00, 0xdfff, 0xe000, 0xffff};
    forAllTexts<Wide>(units, 3,
                      [](const Wide& text) { compare(text, 10, encoded, slowlyEncoded); });
}

TEST(TextConversionRulesTest, Utf16AroundWordsOfEightBytesIsEncodedByTheRules) {
    forAllPlaces<Wide>(
        {u"", u"\u00e9", u"\u20ac", u"\U0001f600", Wide(1, 0xd83d), Wide(1, 0xde00),
         u"\u20aca\u00e9"},
        [](const Wide& text) { compare(text, text.size() + 4, encoded, slowlyEncoded); });
}

}  // namespace
