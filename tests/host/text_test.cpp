// Text conversion of the command: the script engine's form, UTF-16 and UTF-8.
#include "text.h"

#include <gtest/gtest.h>

namespace zr::host {
namespace {

const OleString kKey = {OLECHAR{0xD83D}, OLECHAR{0xDD11}};
constexpr const char* kKeyUtf8 = "\xF0\x9F\x94\x91";
constexpr const char* kKeyCesu8 = "\xED\xA0\xBD\xED\xB4\x91";

TEST(TextTest, Utf8PastTheFirstPlaneBecomesAPair) {
    EXPECT_EQ(toUtf16(kKeyUtf8), kKey);
}

TEST(TextTest, EngineFormBecomesTheSamePair) {
    EXPECT_EQ(toUtf16(kKeyCesu8), kKey);
}

TEST(TextTest, PairIsOneCharacterInUtf8) {
    EXPECT_EQ(toUtf8(kKey), kKeyUtf8);
}

TEST(TextTest, PairIsTwoCharactersInTheEngine) {
    EXPECT_EQ(toScriptText(kKey), kKeyCesu8);
}

TEST(TextTest, LengthsOneToThreeRoundTrip) {
    const std::string text = "a\xC3\xA9\xE9\x8D\xB5";
    EXPECT_EQ(toUtf16(text), (OleString{OLECHAR{0x61}, OLECHAR{0xE9}, OLECHAR{0x9375}}));
    EXPECT_EQ(toUtf8(toUtf16(text)), text);
    EXPECT_EQ(toScriptText(toUtf16(text)), text);
}

TEST(TextTest, TheEndsOfEveryLengthRoundTrip) {
    const std::pair<const char*, OleString> ends[] = {
        {"\x01", {OLECHAR{1}}},
        {"\x7F", {OLECHAR{0x7F}}},
        {"\xC2\x80", {OLECHAR{0x80}}},
        {"\xDF\xBF", {OLECHAR{0x7FF}}},
        {"\xE0\xA0\x80", {OLECHAR{0x800}}},
        {"\xED\x9F\xBF", {OLECHAR{0xD7FF}}},
        {"\xEE\x80\x80", {OLECHAR{0xE000}}},
        {"\xEF\xBF\xBF", {OLECHAR{0xFFFF}}},
        {"\xF0\x90\x80\x80", {OLECHAR{0xD800}, OLECHAR{0xDC00}}},
        {"\xF0\x90\x8F\xBF", {OLECHAR{0xD800}, OLECHAR{0xDFFF}}},
        {"\xF4\x8F\xB0\x80", {OLECHAR{0xDBFF}, OLECHAR{0xDC00}}},
        {"\xF4\x8F\xBF\xBF", {OLECHAR{0xDBFF}, OLECHAR{0xDFFF}}}};
    for (const auto& [utf8, units] : ends) {
        EXPECT_EQ(toUtf16(utf8), units) << utf8;
        EXPECT_EQ(toUtf8(units), utf8);
        EXPECT_TRUE(isUtf8(utf8)) << utf8;
    }
}

TEST(TextTest, WhatLiesPastTheEndsIsMalformed) {
    for (const char* text : {"\xBF", "\xC1\xBF", "\xE0\x9F\xBF", "\xF0\x8F\xBF\xBF",
                             "\xF4\x90\x80\x80", "\xF7\xBF\xBF\xBF", "\xF8\x88\x80\x80\x80", "\xFF",
                             "\xC2\x7F", "\xC2\xC0", "\xE1\x80\x41", "\xF1\x80\x80\x41"}) {
        EXPECT_FALSE(isUtf8(text)) << text;
        EXPECT_EQ(toUtf16(text).front(), OLECHAR{0xFFFD});
    }
}

TEST(TextTest, HalvesAreThoseOfTheirRange) {
    for (const OLECHAR half :
         {OLECHAR{0xD800}, OLECHAR{0xDBFF}, OLECHAR{0xDC00}, OLECHAR{0xDFFF}}) {
        EXPECT_EQ(toUtf8(OleString(1, half)), "\xEF\xBF\xBD");
        EXPECT_FALSE(isUtf8(toScriptText(OleString(1, half))));
    }
    // In the wrong order they are no pair.
    EXPECT_EQ(toUtf8(OleString{OLECHAR{0xDC00}, OLECHAR{0xD800}}), "\xEF\xBF\xBD\xEF\xBF\xBD");
    EXPECT_EQ(toUtf8(OleString{OLECHAR{0xD800}, OLECHAR{0xE000}}), "\xEF\xBF\xBD\xEE\x80\x80");
    EXPECT_EQ(toUtf8(OleString{OLECHAR{0xD800}, OLECHAR{0xDBFF}, OLECHAR{0xDC00}}),
              "\xEF\xBF\xBD\xF4\x8F\xB0\x80");
}

TEST(TextTest, NulIsACharacter) {
    const std::string text("a\0b", 3);
    EXPECT_EQ(toUtf16(text).size(), 3U);
    EXPECT_EQ(toUtf8(toUtf16(text)), text);
}

TEST(TextTest, LoneHalfStaysInTheEngineAndIsReplacedInUtf8) {
    const OleString half(1, OLECHAR{0xD83D});
    EXPECT_EQ(toUtf16(toScriptText(half)), half);
    EXPECT_EQ(toUtf8(half), "\xEF\xBF\xBD");
    EXPECT_EQ(toUtf8(OleString(1, OLECHAR{0xDD11})), "\xEF\xBF\xBD");
}

TEST(TextTest, Utf8IsToldFromTheEngineFormAndFromMalformedBytes) {
    for (const char* text : {"", "a", "\xC3\xA9", "\xE9\x8D\xB5", "\xEF\xBF\xBD", kKeyUtf8}) {
        EXPECT_TRUE(isUtf8(text)) << text;
    }
    for (const char* text : {"\x80", "a\xC3", "\xC0\x80", "\xF5\x80\x80\x80", "\xED\xA0\xBD",
                             "\xED\xB4\x91", kKeyCesu8}) {
        EXPECT_FALSE(isUtf8(text)) << text;
    }
}

TEST(TextTest, MalformedBytesAreReplacedOneByOne) {
    const OLECHAR replacement = 0xFFFD;
    EXPECT_EQ(toUtf16("\x80"), OleString(1, replacement));
    EXPECT_EQ(toUtf16("\xC3"), OleString(1, replacement));
    EXPECT_EQ(toUtf16("\xE9\x8D"), OleString(2, replacement));
    EXPECT_EQ(toUtf16("\xC0\x80"), OleString(2, replacement));
    EXPECT_EQ(toUtf16("\xF8\x88"), OleString(2, replacement));
    EXPECT_EQ(toUtf16("\xF5\x80\x80\x80"), OleString(4, replacement));
    EXPECT_EQ(toUtf16("\xC3z"), (OleString{replacement, OLECHAR{'z'}}));
}

}  // namespace
}  // namespace zr::host
