// Conversions between UTF-8 and UTF-16, under both sets of names.
#include "runtime/string_convert.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "tests/support/console_capture.h"

namespace zr::test {
namespace {

using Wide = std::basic_string<OLECHAR>;

Wide take(BSTR text) {
    const Wide result(text, text + SysStringLen(text));
    SysFreeString(text);
    return result;
}

TEST(StringConvertTest, ConvUtf8OfNullOrEmptyTextReturnsOneAndWritesNothing) {
    OLECHAR out[2] = {'x', 'y'};
    EXPECT_EQ(1, ZConvUTF8ToUnicode(nullptr, out, 2));
    EXPECT_EQ(1, ZConvUTF8ToUnicode("", out, 2));
    EXPECT_EQ(1, _ZConvUTF8ToUnicode("", nullptr, 0));
    EXPECT_EQ('x', out[0]);
}

TEST(StringConvertTest, ConversionsCountTheTerminator) {
    OLECHAR wide[8] = {};
    EXPECT_EQ(4, ZConvUTF8ToUnicode("a\xe2\x82\xac"
                                    "b",
                                    nullptr, 0));
    EXPECT_EQ(4, ZConvUTF8ToUnicode("a\xe2\x82\xac"
                                    "b",
                                    wide, 8));
    EXPECT_EQ(Wide(OLESTR("a\u20acb")), wide);
    EXPECT_EQ(0, ZConvUTF8ToUnicode("abc", wide, 3));
    char narrow[8] = {};
    EXPECT_EQ(6, ZConvUnicodeToUTF8(OLESTR("a\u20acb"), nullptr, 0));
    EXPECT_EQ(6, _ZConvUnicodeToUTF8(OLESTR("a\u20acb"), narrow, 8));
    EXPECT_STREQ(
        "a\xe2\x82\xac"
        "b",
        narrow);
    EXPECT_EQ(0, ZConvUnicodeToUTF8(nullptr, narrow, 8));
}

TEST(StringConvertTest, AllocUtf8OfNullOrEmptyTextReturnsAnEmptyString) {
    for (const char* text : {static_cast<const char*>(nullptr), ""}) {
        BSTR string = ZSysAllocUTF8String(text);
        ASSERT_TRUE(string);
        EXPECT_EQ(0u, SysStringLen(string));
        SysFreeString(string);
    }
}

TEST(StringConvertTest, AllocUtf8OfIncompleteSequencesStaysInBounds) {
    for (const char* text : {"\xe2", "\xf0\x9f", "ab\xe2\x82", "\xc3", "\xff", "\x80"}) {
        BSTR string = ZSysAllocUTF8String(text);
        ASSERT_TRUE(string);
        EXPECT_LE(SysStringLen(string), 8u);
        SysFreeString(string);
    }
}

TEST(StringConvertTest, AllocUtf8OfTextOfAnyLengthConvertsTheWhole) {
    for (std::size_t length = 0; length <= 300; ++length) {
        const std::string text(length, 'a');
        EXPECT_EQ(Wide(length, 'a'), take(ZSysAllocUTF8String(text.c_str())));
        EXPECT_EQ(Wide(length, 'a') + OLESTR("\u20ac"),
                  take(ZSysAllocUTF8String((text + "\xe2\x82\xac").c_str())));
    }
}

TEST(StringConvertTest, AllocUtf8LenCutsTheTextAtTheLength) {
    EXPECT_EQ(OLESTR("ab"), take(ZSysAllocUTF8StringLen("abc", 2)));
    EXPECT_EQ(OLESTR("abc"), take(ZSysAllocUTF8StringLen("abc", 3)));
    EXPECT_EQ(OLESTR("abc"), take(ZSysAllocUTF8StringLen("abc", 10)));
    const std::vector<char> unterminated = {'a', 'b', 'c'};
    EXPECT_EQ(OLESTR("abc"), take(ZSysAllocUTF8StringLen(unterminated.data(), 3)));
    EXPECT_EQ(OLESTR(""), take(ZSysAllocUTF8StringLen("abc", 0)));
    EXPECT_EQ(nullptr, ZSysAllocUTF8StringLen(nullptr, 3));
    EXPECT_EQ(nullptr, _ZSysAllocUTF8StringLen(nullptr, 3));
}

TEST(StringConvertTest, AllocUtf8LenInsideASequenceConvertsTheIncompleteSequence) {
    const Wide cut = take(ZSysAllocUTF8String("a\xe2\x82"));
    EXPECT_LT(1u, cut.size());  // a replacement for the incomplete sequence
    EXPECT_EQ(cut, take(ZSysAllocUTF8StringLen("a\xe2\x82\xac", 3)));
    EXPECT_EQ(OLESTR("a\u20ac"), take(ZSysAllocUTF8StringLen("a\xe2\x82\xac", 4)));
}

TEST(StringConvertTest, UnderscoreAllocUtf8OfNullOrEmptyTextReturnsAnEmptyString) {
    for (const char* text : {static_cast<const char*>(nullptr), ""}) {
        ConsoleCapture console;
        BSTR string = _ZSysAllocUTF8String(text);
        EXPECT_EQ(
            text ? "_ZSysAllocUTF8String call...[]\n" : "_ZSysAllocUTF8String call...[(null)]\n",
            console.stop().out);
        ASSERT_TRUE(string);
        EXPECT_EQ(0u, SysStringLen(string));
        SysFreeString(string);
    }
}

TEST(StringConvertTest, BstrToUtf8EndsAtTheFirstZero) {
    BSTR text = SysAllocStringByteLen(reinterpret_cast<const char*>(OLESTR("ab\0cd")), 10);
    char out[8];
    std::memset(out, 'x', sizeof out);
    EXPECT_EQ(3, ZBstrToUtf8(text, nullptr, 0));
    EXPECT_EQ(3, ZBstrToUtf8(text, out, sizeof out));
    EXPECT_EQ(0, std::memcmp(out, "ab\0\0\0\0\0\0", 8));
    EXPECT_EQ(16, ZSysStringGetStreamSize(text));
    SysFreeString(text);
}

TEST(StringConvertTest, UnderscoreAllocUtf8PrintsItsInput) {
    ConsoleCapture console;
    EXPECT_EQ(OLESTR("abc"), take(_ZSysAllocUTF8String("abc")));
    EXPECT_EQ(OLESTR("abc"), take(ZSysAllocUTF8String("abc")));
    EXPECT_EQ(OLESTR("ab"), take(_ZSysAllocUTF8StringLen("abc", 2)));
    const std::string longText(10000, 'x');
    SysFreeString(_ZSysAllocUTF8String(longText.c_str()));
    EXPECT_EQ(
        "_ZSysAllocUTF8String call...[abc]\n_ZSysAllocUTF8String call...[ab]\n"
        "_ZSysAllocUTF8String call...[" +
            longText + "]\n",
        console.stop().out);
}

TEST(StringConvertTest, StreamSizeCountsPrefixAndTerminator) {
    BSTR text = SysAllocString(OLESTR("abc"));
    EXPECT_EQ(4, ZSysStringGetStreamSize(nullptr));
    EXPECT_EQ(12, ZSysStringGetStreamSize(text));
    EXPECT_EQ(12, _ZSysStringGetStreamSize(text));
    SysFreeString(text);
}

TEST(StringConvertTest, BstrToUtf8WithoutRoomLeavesTheBufferUntouched) {
    BSTR text = SysAllocString(OLESTR("abc"));
    char out[8];
    std::memset(out, 'x', sizeof out);
    EXPECT_EQ(4, ZBstrToUtf8(text, out, 3));
    EXPECT_EQ('x', out[0]);
    EXPECT_EQ(4, ZBstrToUtf8(text, nullptr, 8));
    EXPECT_EQ(4, _ZBstrToUtf8(text, out, 8));
    EXPECT_EQ(0, std::memcmp(out, "abc\0\0\0\0\0", 8));
    EXPECT_EQ(0, ZBstrToUtf8(nullptr, out, 8));
    SysFreeString(text);
}

TEST(StringConvertTest, StrlenCountsUnitsAndLeadBytes) {
    EXPECT_EQ(3u, strlen_unicode(OLESTR("a\u20acb")));
    EXPECT_EQ(0u, _strlen_unicode(OLESTR("")));
    EXPECT_EQ(0u, strlen_utf8(""));
    EXPECT_EQ(3u, strlen_utf8("abc"));
    EXPECT_EQ(3u, _strlen_utf8("a\xe2\x82\xac"
                               "b"));
    EXPECT_EQ(1u, strlen_utf8("\xf0\x9f\x98\x80"));
    EXPECT_EQ(1u, strlen_utf8("\xc3\xa4"));
    EXPECT_EQ(1u, strlen_utf8("\x80\xbf"
                              "a"));
    // The bytes after a lead byte are skipped unread, the terminator too.
    EXPECT_EQ(2u, strlen_utf8("\xc3\0a"));
    EXPECT_EQ(2u, strlen_utf8("\xc0\0a"));
    EXPECT_EQ(2u, strlen_utf8("\xe2\0\0a"));
    EXPECT_EQ(2u, strlen_utf8("\xf0\0\0\0a"));
}

}  // namespace
}  // namespace zr::test
