// Texts of the protocol and of prompts: base64url, plain text, the browsers' arguments.
#include <gtest/gtest.h>
#include <utf8cpp/utf8.h>

#include <filesystem>
#include <iterator>

#include "host/browser/base64url.h"
#include "host/browser/browser_arguments.h"
#include "host/browser/plain_text.h"
#include "host/browser/prompt_text.h"

namespace zr::test {
namespace {

using host::extensionOf;
using host::fromBase64Url;
using host::isShortPlainText;
using host::toBase64Url;

TEST(Base64UrlTest, WritesAndReads) {
    const std::pair<std::string, std::string> samples[] = {{"", ""},
                                                           {"f", "Zg"},
                                                           {"fo", "Zm8"},
                                                           {"foo", "Zm9v"},
                                                           {"foob", "Zm9vYg"},
                                                           {"\xFB\xFF\xFE", "-__-"},
                                                           {{"\0\0", 2}, "AAA"},
                                                           {"fooba", "Zm9vYmE"},
                                                           {"foobar", "Zm9vYmFy"}};
    for (const auto& [bytes, text] : samples) {
        EXPECT_EQ(text, toBase64Url(bytes));
        EXPECT_EQ(bytes, fromBase64Url(text));
    }
}

TEST(Base64UrlTest, RefusesWhatItDoesNotWrite) {
    for (const char* text :
         {"A", "Zg==", "Zm9v\n", "Zm 9", "+A", "/A", "Zh", "Zm9", "AAAAB", "\xC3\xA4"}) {
        EXPECT_EQ(std::nullopt, fromBase64Url(text)) << text;
    }
}

TEST(PlainTextTest, TakesWhatAPersonCanRead) {
    for (const char* text :
         {"a", "I pay 10 EUR.", "a\nb\r\nc\td", "\xC3\xA4\xE2\x82\xAC \xF0\x9F\x98\x80",
          "1\n2\n3\n4\n5\n6\n7\n8\n9\n10\n11\n12"}) {
        EXPECT_TRUE(isShortPlainText(text)) << text;
    }
    EXPECT_TRUE(isShortPlainText(std::string(512, 'a')));
}

TEST(PlainTextTest, RefusesWhatIsNotSeenAsItIs) {
    for (const char* text : {"",
                             " \n\t",
                             "\x01",
                             "a\x1B[2J",
                             "a\rb",
                             "\r",
                             "\x7F",
                             "\xC2\x9B",
                             "\xC2\xAD",
                             "\xE2\x80\xAE"
                             "abc",
                             "\xE2\x81\xA6",
                             "a\xE2\x80\x8B",
                             "\xEF\xBB\xBF"
                             "a",
                             "\xE2\x80\xA8",
                             "\xFF",
                             "\xC0\x80",
                             "\xED\xA0\x80",
                             "\xF3\xA0\x81\x81",
                             "\xEE\x80\x80",
                             "\xE3\x85\xA4",
                             "1\n2\n3\n4\n5\n6\n7\n8\n9\n10\n11\n12\n"}) {
        EXPECT_FALSE(isShortPlainText(text)) << text;
    }
    EXPECT_FALSE(isShortPlainText(std::string("a\0b", 3)));
    EXPECT_FALSE(isShortPlainText(std::string(513, 'a')));
}

TEST(PlainTextTest, WordsOfBothDirectionsAreRefused) {
    EXPECT_TRUE(isShortPlainText("\u05e9\u05dc\u05d5\u05dd, \u05e2\u05d5\u05dc\u05dd!\n"));
    EXPECT_TRUE(isShortPlainText("\u0645\u0631\u062d\u0628\u0627"));
    for (const char* text :
         {"pay \u05e9\u05dc\u05d5\u05dd", "\u05d0 1 \u05d1 2", "\u0645 \u0661-\u0662",
          "\u00e4\u05d0", "\u05d0 \u4f60", "\U0001E900 x", "10 EUR\n\u05d0"}) {
        EXPECT_FALSE(isShortPlainText(text)) << text;
    }
}

/// A prompt has no codes in a text that it shows whole.
TEST(PlainTextTest, WhatAPromptShowsAsACodeIsRefused) {
    for (char32_t character = 0x21; character < 0x110000; ++character) {
        // Digits of Arabic are refused for their direction.
        if ((character >= 0xD800 && character < 0xE000) ||
            (character >= 0x660 && character <= 0x6F9)) {
            continue;
        }
        std::string text;
        utf8::append(character, std::back_inserter(text));
        const bool isCode = host::shownText(std::string("\u05d0").append(text), 100).find("[U+") !=
                            std::string::npos;
        EXPECT_EQ(isCode, !isShortPlainText(text)) << static_cast<unsigned>(character);
    }
}

const std::string kManifest = std::filesystem::absolute("zrkey.browser.json").string();
constexpr const char* kOrigin = "chrome-extension://abcdefghijklmnopabcdefghijklmnop/";
const std::string kIdentifier = "abcdefghijklmnopabcdefghijklmnop";

TEST(BrowserArgumentsTest, FindsTheExtension) {
    EXPECT_EQ(kIdentifier, extensionOf({kOrigin}));
    EXPECT_EQ(kIdentifier, extensionOf({kOrigin, "--parent-window=0"}));
    EXPECT_EQ(kIdentifier, extensionOf({"--parent-window=66342", kOrigin}));
    EXPECT_EQ("zrkey@zrkey.example", extensionOf({kManifest, "zrkey@zrkey.example"}));
}

TEST(BrowserArgumentsTest, RefusesOtherArguments) {
    const std::vector<std::string> refused[] = {
        {},
        {""},
        {"--help"},
        {"--version", "--version"},
        {"chrome-extension://abcdefghijklmnopabcdefghijklmno/"},
        {"chrome-extension://abcdefghijklmnopabcdefghijklmnop"},
        {"chrome-extension://abcdefghijklmnopabcdefghijklmnoq/"},
        {"chrome-extension://ABCDEFGHIJKLMNOPABCDEFGHIJKLMNOP/"},
        {"https://example.com/"},
        {kOrigin, kOrigin},
        {kOrigin, "--parent-window=x"},
        {kOrigin, "--parent-window="},
        {kOrigin, "--parent-window=1", "--parent-window=1"},
        {kOrigin, "--other"},
        {kOrigin, "zrkey@zrkey.example"},
        {"zrkey.browser.json", "zrkey@zrkey.example"},
        {kManifest},
        {kManifest, ""},
        {kManifest, "--zrkey"},
        {kManifest, "zrkey@zrkey.example", "more"}};
    for (const std::vector<std::string>& arguments : refused) {
        EXPECT_EQ(std::nullopt, extensionOf(arguments)) << testing::PrintToString(arguments);
    }
}

}  // namespace
}  // namespace zr::test
