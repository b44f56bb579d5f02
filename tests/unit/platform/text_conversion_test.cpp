// Conversion between UTF-8 and UTF-16: all kinds of invalid text and small buffers.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include "platform/kernel.h"

namespace {

using Wide = std::basic_string<OLECHAR>;
using namespace std::literals;

constexpr OLECHAR kWidePoison = 0x5a5a;
constexpr char kPoison = '\x5a';

/// A text as UTF-16. U+FFFD stands once for each invalid sequence.
struct Utf8Row {
    std::string_view text;
    Wide expected;
    /// What follows when the text is terminated.
    Wide end;
};

const Wide kEnd(1, 0);

/// A terminated text whose conversion differs between the targets, with the reason.
struct Divergence {
    std::string_view text;
    Wide system;  ///< the system's conversion, here Wine's
    Wide ours;
    const char* reason;
};

const std::vector<Utf8Row>& utf8Rows() {
    static const std::vector<Utf8Row> rows = {
        {"a"sv, OLESTR("a"), kEnd},
        {"abc"sv, OLESTR("abc"), kEnd},
        {"\xc3\xa9"sv, OLESTR("\u00e9"), kEnd},
        {"\xe2\x82\xac"sv, OLESTR("\u20ac"), kEnd},
        {"\xed\x9f\xbf"sv, OLESTR("\ud7ff"), kEnd},
        {"\xef\xbf\xbf"sv, OLESTR("\uffff"), kEnd},
        {"\xef\xbb\xbf\x61"sv, OLESTR("\ufeff\u0061"), kEnd},
        {"\xf0\x90\x80\x80"sv, OLESTR("\U00010000"), kEnd},
        {"\xf0\x9f\x98\x80"sv, OLESTR("\U0001f600"), kEnd},
        {"\xf4\x8f\xbf\xbf"sv, OLESTR("\U0010ffff"), kEnd},
        {"a\0b"sv, Wide(OLESTR("a\0b"), 3), kEnd},
    };
    return rows;
}

const std::vector<Utf8Row>& invalidRows() {
    static const std::vector<Utf8Row> rows = {
        // bytes that cannot begin a sequence
        {"\x80"sv, OLESTR("\ufffd"), kEnd},
        {"\xbf\xbf"sv, OLESTR("\ufffd\ufffd"), kEnd},
        {"\xff"sv, OLESTR("\ufffd"), kEnd},
        {"\xf5\x80\x80\x80"sv, OLESTR("\ufffd\ufffd\ufffd\ufffd"), kEnd},
        {"\xf8\x88\x80\x80\x80"sv, OLESTR("\ufffd\ufffd\ufffd\ufffd\ufffd"), kEnd},
        // longer than the value needs
        {"\xc0\x80"sv, OLESTR("\ufffd\ufffd"), kEnd},
        {"\xc1\xbf"sv, OLESTR("\ufffd\ufffd"), kEnd},
        {"\xe0\x80\x80"sv, OLESTR("\ufffd\ufffd"), kEnd},
        {"\xe0\x9f\xbf"sv, OLESTR("\ufffd\ufffd"), kEnd},
        {"\xf0\x80\x80\x80"sv, OLESTR("\ufffd\ufffd\ufffd"), kEnd},
        {"\xf0\x8f\xbf\xbf"sv, OLESTR("\ufffd\ufffd\ufffd"), kEnd},
        // surrogates, and values beyond the last code point
        {"\xed\xa0\x80"sv, OLESTR("\ufffd\ufffd"), kEnd},
        {"\xed\xa0\xbd\xed\xb8\x80"sv, OLESTR("\ufffd\ufffd\ufffd\ufffd"), kEnd},
        {"\xf4\x90\x80\x80"sv, OLESTR("\ufffd\ufffd\ufffd"), kEnd},
        // sequences that another character ends
        {"\xc3\x61"sv, OLESTR("\ufffd\u0061"), kEnd},
        {"\xe2\x82\x61"sv, OLESTR("\ufffd\u0061"), kEnd},
        {"\xe2\x61\x62"sv, OLESTR("\ufffd\u0061\u0062"), kEnd},
        {"\xf0\x61\x62\x63"sv, OLESTR("\ufffd\u0061\u0062\u0063"), kEnd},
        {"\xf0\x9f\x98\x61"sv, OLESTR("\ufffd\u0061"), kEnd},
        {"\xc3\xc3\xa9"sv, OLESTR("\ufffd\u00e9"), kEnd},
        {"\xe2\xe2\x82\xac"sv, OLESTR("\ufffd\u20ac"), kEnd},
        {"\xf0\x9f\xc3\xa9"sv, OLESTR("\ufffd\u00e9"), kEnd},
        {"\xf0\xf0\x9f\x98\x80"sv, OLESTR("\ufffd\U0001f600"), kEnd},
        // sequences that the end of the text cuts: the remaining bytes belong to the sequence
        {"\xc3"sv, OLESTR("\ufffd"), kEnd},
        {"\xe2\x82"sv, OLESTR("\ufffd"), kEnd},
        {"\xf0\x9f\x98"sv, OLESTR("\ufffd"), kEnd},
        {"\xe2\x61"sv, OLESTR("\ufffd"), Wide(OLESTR("a\0"), 2)},
        {"\xf0\x9f\x61"sv, OLESTR("\ufffd"), Wide(OLESTR("a\0"), 2)},
    };
    return rows;
}

const std::vector<Divergence>& divergences() {
    static const char kTerminator[] =
        "terminated input gives terminated output; Wine takes the terminator for a byte of the "
        "incomplete sequence";
    static const std::vector<Divergence> rows = {
        {"\xe2"sv, OLESTR("\ufffd"), OLESTR("\ufffd") + kEnd, kTerminator},
        {"\xf0"sv, OLESTR("\ufffd"), OLESTR("\ufffd") + kEnd, kTerminator},
        {"\xf0\x9f"sv, OLESTR("\ufffd"), OLESTR("\ufffd") + kEnd, kTerminator},
        {"\xf0\x61"sv, OLESTR("\ufffd"), OLESTR("\ufffd") + kEnd, kTerminator},
        {"ab\xe2"sv, OLESTR("ab\ufffd"), OLESTR("ab\ufffd") + kEnd, kTerminator},
    };
    return rows;
}

std::string bytesOf(std::string_view text) {
    std::string hex;
    for (const unsigned char c : text) {
        hex += "0123456789abcdef"[c >> 4];
        hex += "0123456789abcdef"[c & 15];
    }
    return hex;
}

/// Converts into a poisoned buffer and returns the text up to the first poison.
Wide decoded(std::string_view text, int length, int size, int* result, DWORD flags = 0) {
    std::vector<WCHAR> buffer(64, kWidePoison);
    *result = MultiByteToWideChar(CP_UTF8, flags, text.data(), length, buffer.data(), size);
    return Wide(buffer.begin(), std::find(buffer.begin(), buffer.end(), kWidePoison));
}

std::string encoded(const Wide& text, int length, int size, int* result, DWORD flags = 0) {
    std::vector<char> buffer(64, kPoison);
    *result = WideCharToMultiByte(CP_UTF8, flags, text.data(), length, buffer.data(), size, nullptr,
                                  nullptr);
    return std::string(buffer.begin(), std::find(buffer.begin(), buffer.end(), kPoison));
}

void expectDecoded(const Utf8Row& row) {
    const auto length = static_cast<int>(row.text.size());
    int result = -1;
    EXPECT_EQ(row.expected, decoded(row.text, length, 40, &result)) << bytesOf(row.text);
    EXPECT_EQ(static_cast<int>(row.expected.size()), result) << bytesOf(row.text);
    decoded(row.text, length, 0, &result);
    EXPECT_EQ(static_cast<int>(row.expected.size()), result) << bytesOf(row.text);
    if (row.text.find('\0') != std::string_view::npos) {
        return;
    }
    const Wide whole = row.expected + row.end;
    const std::string terminated(row.text);
    EXPECT_EQ(whole, decoded(terminated, -1, 40, &result)) << bytesOf(row.text);
    EXPECT_EQ(static_cast<int>(whole.size()), result) << bytesOf(row.text);
    decoded(terminated, -1, 0, &result);
    EXPECT_EQ(static_cast<int>(whole.size()), result) << bytesOf(row.text);
}

TEST(MultiByteToWideCharTest, ValidTextIsConverted) {
    for (const Utf8Row& row : utf8Rows()) {
        expectDecoded(row);
    }
}

TEST(MultiByteToWideCharTest, InvalidSequencesAreReplacedOneByOne) {
    for (const Utf8Row& row : invalidRows()) {
        expectDecoded(row);
    }
}

TEST(MultiByteToWideCharTest, KnownDivergencesGiveOneOfTheTwoListedResults) {
    for (const Divergence& row : divergences()) {
        const std::string text(row.text);
        const auto length = static_cast<int>(text.size());
        int result = -1;
        // Without its terminator the text is the same on both targets.
        EXPECT_EQ(row.system, decoded(text, length, 40, &result)) << bytesOf(text);
        for (const int given : {-1, length + 1}) {
            const Wide whole = decoded(text, given, 40, &result);
            EXPECT_TRUE(whole == row.system || whole == row.ours)
                << bytesOf(text) << " (" << row.reason << ")";
            EXPECT_EQ(static_cast<int>(whole.size()), result) << bytesOf(text);
            decoded(text, given, 0, &result);
            EXPECT_EQ(static_cast<int>(whole.size()), result) << bytesOf(text);
        }
    }
}

TEST(MultiByteToWideCharTest, InvalidTextWithTheStrictFlagFails) {
    int result = -1;
    for (const Utf8Row& row : invalidRows()) {
        const auto length = static_cast<int>(row.text.size());
        decoded(row.text, length, 40, &result, MB_ERR_INVALID_CHARS);
        EXPECT_EQ(0, result) << bytesOf(row.text);
        decoded(row.text, length, 0, &result, MB_ERR_INVALID_CHARS);
        EXPECT_EQ(0, result) << bytesOf(row.text);
    }
    for (const Utf8Row& row : utf8Rows()) {
        decoded(row.text, static_cast<int>(row.text.size()), 40, &result, MB_ERR_INVALID_CHARS);
        EXPECT_EQ(static_cast<int>(row.expected.size()), result) << bytesOf(row.text);
    }
}

TEST(MultiByteToWideCharTest, SmallBufferIsFilledAndFails) {
    int result = -1;
    EXPECT_EQ(Wide(OLESTR("abc")), decoded("abcdef", 6, 3, &result));
    EXPECT_EQ(0, result);
    EXPECT_EQ(Wide(OLESTR("abc")), decoded("abc", -1, 3, &result));
    EXPECT_EQ(0, result);
    EXPECT_EQ(Wide(OLESTR("a\ufffd")), decoded("a\xff\x62", 3, 2, &result));
    EXPECT_EQ(0, result);
    EXPECT_EQ(Wide(OLESTR("abc\0"), 4), decoded("abc", -1, 4, &result));
    EXPECT_EQ(4, result);
}

TEST(MultiByteToWideCharTest, BufferThatIsFullBeforeACharacterFails) {
    for (const std::string_view last : {"b"sv, "\xe2\x82\xac"sv, "\xf0\x9f\x98\x80"sv, "\x80"sv}) {
        const std::string text = "\xc3\xa9" + std::string(last);
        WCHAR unit = 0;
        EXPECT_EQ(0, MultiByteToWideChar(CP_UTF8, 0, text.data(), static_cast<int>(text.size()),
                                         &unit, 1));
    }
}

TEST(MultiByteToWideCharTest, LastSurrogatePairWithRoomForOneUnitIsCut) {
    int result = -1;
    EXPECT_EQ(Wide(1, 0xd83d), decoded("\xf0\x9f\x98\x80", 4, 1, &result));
    EXPECT_EQ(1, result);
    EXPECT_EQ(Wide(1, 0xd83d), decoded("\xf0\x9f\x98\x80z", 5, 1, &result));
    EXPECT_EQ(0, result);
}

TEST(MultiByteToWideCharTest, InvalidArgumentsFail) {
    WCHAR buffer[4] = {kWidePoison};
    EXPECT_EQ(0, MultiByteToWideChar(CP_UTF8, 0, "abc", 0, buffer, 4));
    EXPECT_EQ(0, MultiByteToWideChar(CP_UTF8, 0, nullptr, 3, buffer, 4));
    EXPECT_EQ(0, MultiByteToWideChar(CP_UTF8, 0, nullptr, -1, nullptr, 0));
    EXPECT_EQ(0, MultiByteToWideChar(CP_UTF8, 0, "abc", 3, nullptr, 4));
    EXPECT_EQ(0, MultiByteToWideChar(CP_UTF8, 0, "abc", 3, buffer, -1));
    EXPECT_EQ(0, MultiByteToWideChar(CP_UTF8, 0x10, "abc", 3, buffer, 4));
    EXPECT_EQ(0, MultiByteToWideChar(12345, 0, "abc", 3, buffer, 4));
    EXPECT_EQ(kWidePoison, buffer[0]);
}

TEST(MultiByteToWideCharTest, NegativeLengthsMeanTerminatedText) {
    int result = -1;
    EXPECT_EQ(Wide(OLESTR("abc\0"), 4), decoded("abc", -2, 8, &result));
    EXPECT_EQ(4, result);
}

TEST(WideCharToMultiByteTest, ValidTextIsConverted) {
    int result = -1;
    for (const Utf8Row& row : utf8Rows()) {
        const auto length = static_cast<int>(row.expected.size());
        const auto size = static_cast<int>(row.text.size());
        EXPECT_EQ(row.text, encoded(row.expected, length, 40, &result));
        EXPECT_EQ(size, result);
        encoded(row.expected, length, 0, &result);
        EXPECT_EQ(size, result);
        encoded(row.expected, length, 40, &result, WC_ERR_INVALID_CHARS);
        EXPECT_EQ(size, result);
        encoded(row.expected, length, size, &result);
        EXPECT_EQ(size, result);
        encoded(row.expected, length, size - 1, &result);
        EXPECT_EQ(size > 1 ? 0 : 1, result);
    }
}

TEST(WideCharToMultiByteTest, LoneSurrogatesAreReplaced) {
    const std::pair<Wide, std::string_view> rows[] = {
        {{0xd83d}, "\xef\xbf\xbd"sv},
        {{0xde00}, "\xef\xbf\xbd"sv},
        {{0xd83d, 'x'}, "\xef\xbf\xbdx"sv},
        {{0xde00, 'x'}, "\xef\xbf\xbdx"sv},
        {{0xd83d, 0xd83d, 0xde00}, "\xef\xbf\xbd\xf0\x9f\x98\x80"sv},
        {{0xd83d, 0xdbff}, "\xef\xbf\xbd\xef\xbf\xbd"sv},
        {{0xd83d, 0xe000}, "\xef\xbf\xbd\xee\x80\x80"sv},
        {{0xde00, 0xd83d}, "\xef\xbf\xbd\xef\xbf\xbd"sv}};
    for (const auto& [text, expected] : rows) {
        int result = -1;
        EXPECT_EQ(expected, encoded(text, static_cast<int>(text.size()), 40, &result));
        EXPECT_EQ(static_cast<int>(expected.size()), result);
        const std::string terminated = std::string(expected) + '\0';
        EXPECT_EQ(terminated, encoded(text, -1, 40, &result));
        EXPECT_EQ(static_cast<int>(terminated.size()), result);
        encoded(text, static_cast<int>(text.size()), 40, &result, WC_ERR_INVALID_CHARS);
        EXPECT_EQ(0, result);
        encoded(text, static_cast<int>(text.size()), 0, &result, WC_ERR_INVALID_CHARS);
        EXPECT_EQ(0, result);
    }
}

TEST(WideCharToMultiByteTest, SmallBufferReceivesWholeSequencesAndFails) {
    int result = -1;
    EXPECT_EQ("abc", encoded(OLESTR("abcdef"), 6, 3, &result));
    EXPECT_EQ(0, result);
    EXPECT_EQ("a", encoded(OLESTR("a\u20ac"), 2, 3, &result));
    EXPECT_EQ(0, result);
    EXPECT_EQ("", encoded({0xd83d, 0xde00}, 2, 3, &result));
    EXPECT_EQ(0, result);
    EXPECT_EQ("", encoded({0xd83d}, 1, 2, &result));
    EXPECT_EQ(0, result);
    EXPECT_EQ("abc", encoded(OLESTR("abc"), -1, 3, &result));
    EXPECT_EQ(0, result);
    EXPECT_EQ("abc\0"s, encoded(OLESTR("abc"), -1, 4, &result));
    EXPECT_EQ(4, result);
}

TEST(WideCharToMultiByteTest, InvalidArgumentsFail) {
    char buffer[8] = {kPoison};
    EXPECT_EQ(0, WideCharToMultiByte(CP_UTF8, 0, OLESTR("abc"), 0, buffer, 8, nullptr, nullptr));
    EXPECT_EQ(0, WideCharToMultiByte(CP_UTF8, 0, nullptr, 3, buffer, 8, nullptr, nullptr));
    EXPECT_EQ(0, WideCharToMultiByte(CP_UTF8, 0, OLESTR("abc"), 3, nullptr, 8, nullptr, nullptr));
    EXPECT_EQ(0, WideCharToMultiByte(CP_UTF8, 0, OLESTR("abc"), 3, buffer, -1, nullptr, nullptr));
    EXPECT_EQ(0, WideCharToMultiByte(12345, 0, OLESTR("abc"), 3, buffer, 8, nullptr, nullptr));
    EXPECT_EQ(kPoison, buffer[0]);
}

}  // namespace
