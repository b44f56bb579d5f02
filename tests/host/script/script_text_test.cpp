// Text conversion for scripts: the engine's form, UTF-16 and UTF-8.
#include "host/script/script_text.h"

#include <gtest/gtest.h>

namespace zr::host {
namespace {

using Units = std::basic_string<OLECHAR>;

const Units kKey = {OLECHAR{0xD83D}, OLECHAR{0xDD11}};
constexpr const char* kKeyUtf8 = "\xF0\x9F\x94\x91";
constexpr const char* kKeyCesu8 = "\xED\xA0\xBD\xED\xB4\x91";

Units unitsOf(std::string_view text) {
    const zrkey::Text converted = fromScriptText(text);
    return {converted.get(), SysStringLen(converted.get())};
}

std::string scriptTextOf(const Units& units) {
    return std::string(viewOf(toScriptText(units.data(), units.size())));
}

std::string utf8Of(std::string_view text) {
    return std::string(viewOf(toUtf8(text)));
}

TEST(ScriptTextTest, Utf8OfFourBytesBecomesASurrogatePair) {
    EXPECT_EQ(unitsOf(kKeyUtf8), kKey);
}

TEST(ScriptTextTest, Cesu8BecomesTheSameSurrogatePair) {
    EXPECT_EQ(unitsOf(kKeyCesu8), kKey);
    EXPECT_EQ(utf8Of(kKeyCesu8), kKeyUtf8);
    EXPECT_EQ(utf8Of(kKeyUtf8), kKeyUtf8);
}

TEST(ScriptTextTest, SurrogatePairBecomesCesu8) {
    EXPECT_EQ(scriptTextOf(kKey), kKeyCesu8);
}

TEST(ScriptTextTest, NullTextBecomesEmptyText) {
    EXPECT_TRUE(toScriptText(nullptr, 0).empty());
}

TEST(ScriptTextTest, BoundaryCharactersOfEveryLengthConvert) {
    const std::pair<const char*, Units> boundaries[] = {
        {"", {}},
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
    for (const auto& [utf8, units] : boundaries) {
        EXPECT_EQ(unitsOf(utf8), units) << utf8;
        EXPECT_EQ(unitsOf(scriptTextOf(units)), units) << utf8;
        EXPECT_EQ(utf8Of(scriptTextOf(units)), utf8);
        if (units.size() < 2) {
            EXPECT_EQ(scriptTextOf(units), utf8);
        }
    }
}

TEST(ScriptTextTest, NulInsideATextIsKept) {
    const std::string text("a\0b", 3);
    EXPECT_EQ(unitsOf(text).size(), 3U);
    EXPECT_EQ(scriptTextOf(unitsOf(text)), text);
}

TEST(ScriptTextTest, LoneSurrogateIsKeptAndBecomesTheReplacementCharacterInUtf8) {
    for (const OLECHAR half :
         {OLECHAR{0xD800}, OLECHAR{0xDBFF}, OLECHAR{0xDC00}, OLECHAR{0xDFFF}}) {
        const Units units = {OLECHAR{'a'}, half, OLECHAR{'b'}};
        const std::string text = scriptTextOf(units);
        EXPECT_EQ(text.size(), 5U);
        EXPECT_EQ(unitsOf(text), units);
        EXPECT_EQ(utf8Of(text),
                  "a\xEF\xBF\xBD"
                  "b");
    }
    // In the wrong order they are no pair.
    const Units reversed = {OLECHAR{0xDC00}, OLECHAR{0xD800}};
    EXPECT_EQ(unitsOf(scriptTextOf(reversed)), reversed);
    EXPECT_EQ(utf8Of(scriptTextOf(reversed)), "\xEF\xBF\xBD\xEF\xBF\xBD");
    EXPECT_EQ(utf8Of(scriptTextOf(kKey).substr(0, 3)), "\xEF\xBF\xBD");
}

TEST(ScriptTextTest, MalformedBytesAreReplacedOneByOne) {
    const OLECHAR replacement = 0xFFFD;
    for (const std::string_view text :
         {"\x80", "\xC3", "\xE9\x8D", "\xC0\x80", "\xC1\xBF", "\xE0\x9F\xBF", "\xF0\x8F\xBF\xBF",
          "\xF4\x90\x80\x80", "\xF5\x80\x80\x80", "\xF8\x88\x80\x80\x80", "\xFF", "\xED\xA0",
          "\xED"}) {
        EXPECT_EQ(unitsOf(text), Units(text.size(), replacement)) << text;
    }
    EXPECT_EQ(unitsOf("\xC3z"), (Units{replacement, OLECHAR{'z'}}));
    EXPECT_EQ(unitsOf("\xED\xA0z"), (Units{replacement, replacement, OLECHAR{'z'}}));
    EXPECT_EQ(unitsOf("\xED\x7Fz"), (Units{replacement, OLECHAR{0x7F}, OLECHAR{'z'}}));
    EXPECT_EQ(unitsOf(std::string("a\xE9\x8D") + kKeyCesu8 + "\xFF"),
              (Units{OLECHAR{'a'}, replacement, replacement} + kKey + Units(1, replacement)));
}

}  // namespace
}  // namespace zr::host
