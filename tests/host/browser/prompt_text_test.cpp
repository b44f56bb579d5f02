// Text of others in a prompt stays on its line, in its order, and visible.
#include "host/browser/prompt_text.h"

#include <gtest/gtest.h>

namespace zr::host {
namespace {

using Lines = std::vector<std::string>;

std::string shown(const std::string& text) {
    return shownText(text, 1000);
}

TEST(PromptTextTest, OrdinaryTextStays) {
    for (const char* text :
         {"", "My token", "CN=M\u00fcller, O=A & B <x@y.example>", "\u4f60\u597d",
          "\u05d0\u05d1 \u0627\u0628", "a+b=\"c\" 50%", "\U0001F511"}) {
        EXPECT_EQ(text, shown(text));
    }
}

TEST(PromptTextTest, ControlCharactersAreCodes) {
    EXPECT_EQ("a[U+000A]b[U+000D][U+0009][U+001B][31m[U+007F][U+0085]",
              shown("a\nb\r\t\x1B[31m\x7F\u0085"));
    EXPECT_EQ("[U+0000]x", shown(std::string("\0x", 2)));
}

TEST(PromptTextTest, CharactersThatTurnTheTextAreCodes) {
    for (const char* text : {"\u202a", "\u202b", "\u202c", "\u202d", "\u202e", "\u2066", "\u2067",
                             "\u2068", "\u2069", "\u200e", "\u200f", "\u061c"}) {
        const std::string code = shown(std::string("a") + text + "b");
        EXPECT_TRUE(code.starts_with("a[U+") && code.ends_with("]b")) << code;
    }
    EXPECT_EQ("[U+202E]txt.exe", shown("\u202etxt.exe"));
}

TEST(PromptTextTest, CharactersThatAreNotSeenAreCodes) {
    for (const char* text :
         {"\u00ad", "\u200b", "\u200c",     "\u200d", "\u2060", "\ufeff",    "\u3164",
          "\u115f", "\u2028", "\u2029",     "\u00a0", "\u3000", "\u2003",    "\u2800",
          "\ufe0f", "\ufff9", "\U000E0041", "\ue000", "\uffff", "\U0010FFFF"}) {
        const std::string code = shown(std::string("a") + text + "b");
        EXPECT_TRUE(code.starts_with("a[U+") && code.ends_with("]b")) << code;
    }
}

TEST(PromptTextTest, BlanksThatMoveTextAreCodes) {
    EXPECT_EQ("a b c", shown("a b c"));
    EXPECT_EQ("a [U+0020] b", shown("a   b"));
    EXPECT_EQ("[U+0020]a[U+0020]", shown(" a "));
}

TEST(PromptTextTest, HeapsOfMarksAreCodes) {
    EXPECT_EQ("e\u0301", shown("e\u0301"));
    EXPECT_EQ("e\u0301[U+0302][U+0303]", shown("e\u0301\u0302\u0303"));
    EXPECT_EQ("[U+0301]e", shown("\u0301e"));
}

TEST(PromptTextTest, BytesThatAreNotUtf8AreCodes) {
    EXPECT_EQ("a[0xFF]b[0xC3]", shown("a\xFF"
                                      "b\xC3"));
    EXPECT_EQ("[0xC0][0xAF][0xED][0xA0][0x80]", shown("\xC0\xAF\xED\xA0\x80"));
}

TEST(PromptTextTest, MarkupIsCodesWhereItMayBeRead) {
    EXPECT_EQ("[U+003C]b>a [U+0026]amp; b", shownText("<b>a &amp; b", 100, Markup::kPossible));
    EXPECT_EQ("<b>a &amp; b", shownText("<b>a &amp; b", 100, Markup::kNone));
}

TEST(PromptTextTest, LongTextIsCutWithAMark) {
    EXPECT_EQ(std::string(20, 'a'), shownText(std::string(20, 'a'), 20));
    EXPECT_EQ(std::string(14, 'a') + " [cut]", shownText(std::string(21, 'a'), 20));
    // Not within a character or a code.
    EXPECT_EQ("\u00fc\u00fc\u00fc\u00fc\u00fc\u00fc\u00fc [cut]",
              shownText("\u00fc\u00fc\u00fc\u00fc\u00fc\u00fc\u00fc\u00fc\u00fc\u00fc\u00fc", 21));
    EXPECT_EQ("[U+000A] [cut]", shownText("\n\n\n\n", 20));
}

TEST(PromptTextTest, LongValueGoesOnInLinesThatBeginWithBlanks) {
    const Lines lines = shownValue("Token", std::string(100, 'a'), 1000);
    EXPECT_EQ((Lines{"Token: " + std::string(39, 'a'), "    " + std::string(42, 'a'),
                     "    " + std::string(19, 'a')}),
              lines);
}

TEST(PromptTextTest, WideLettersCountTwice) {
    EXPECT_EQ((Lines{"T: " + std::string(21, 'W'), "    WWWW"}),
              shownValue("T", std::string(25, 'W'), 1000));
}

TEST(PromptTextTest, BlockKeepsItsLines) {
    EXPECT_EQ((Lines{"> one", ">   two  ", "> ", "> three"}),
              shownBlock("one\r\n  two  \n\nthree"));
    EXPECT_EQ((Lines{"> a[U+000D]b[U+0009]c"}), shownBlock("a\rb\tc\n"));
    EXPECT_EQ((Lines{"> " + std::string(44, 'a'), "    > forged"}),
              shownBlock(std::string(44, 'a') + "> forged"));
}

/// Whatever a page, a token or a certificate says, no line looks like one of ours.
TEST(PromptTextTest, NoTextForgesALine) {
    const std::string forged = "Site: https://bank.example";
    for (const std::string& before :
         {std::string("\n"), std::string("\r\n"), std::string("\u2028"), std::string("\x0B"),
          std::string("\u0085"), std::string(39, ' '), std::string(39, 'x'), std::string(20, 'W'),
          std::string("%0A"), std::string("<br>"), std::string("\\n"), std::string("\n\n> ")}) {
        PinQuestion question = {"https://shop.example",
                                before + forged,
                                before + forged,
                                "log in to the token",
                                "",
                                {}};
        Confirmation confirmation = {"https://shop.example",
                                     "A web site asks for a signature.",
                                     {{"Certificate", before + forged}},
                                     before + forged,
                                     "Sign"};
        for (const PromptLines& lines : {linesOf(question), linesOf(confirmation)}) {
            EXPECT_EQ((Lines{lines.head[0], "Site: https://shop.example"}), lines.head);
            for (const std::string& line : lines.body) {
                EXPECT_FALSE(line.starts_with("Site")) << before << line;
            }
        }
    }
}

TEST(PromptTextTest, OriginIsNeverCut) {
    const std::string origin = "https://" + std::string(240, 'a') + ".example:65535";
    const PinQuestion question = {origin, "x", "1", "log in to the token", "", {}};
    std::string all;
    for (const std::string& line : linesOf(question).head) {
        all += line.starts_with("    ") ? line.substr(4) : line;
    }
    EXPECT_TRUE(all.ends_with("Site: " + origin)) << all;
}

TEST(PromptTextTest, TextThatIsTooLongIsNotShownInPart) {
    const Confirmation confirmation = {
        "https://shop.example", "t", {}, std::string(5000, 'x'), "y"};
    EXPECT_EQ((Lines{"", "The text is too long to be shown here."}), linesOf(confirmation).body);
}

}  // namespace
}  // namespace zr::host
