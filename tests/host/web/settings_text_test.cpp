// browser.json as text: what is refused, and that what is written is read again.
#include "tests/host/web/web_test.h"

namespace zr::test {
namespace {

using host::BrowserSettings;
using host::SettingsScope;

/// A full path of this target, without what JSON escapes.
std::string fullPath() {
    return std::filesystem::current_path().root_path().generic_string() + "usr/module.so";
}

/// What is wrong with a file; "-" when nothing is.
std::string problemOf(const std::string& text, SettingsScope scope = SettingsScope::kUser) {
    std::string problem = "before";
    const bool isRead = host::parseSettings(text, scope, problem).has_value();
    EXPECT_EQ(isRead, problem.empty()) << problem;
    return isRead ? "-" : problem;
}

BrowserSettings parsed(const std::string& text, SettingsScope scope = SettingsScope::kUser) {
    std::string problem;
    std::optional<BrowserSettings> settings = host::parseSettings(text, scope, problem);
    EXPECT_EQ("", problem);
    return settings.value_or(BrowserSettings());
}

TEST(SettingsTextTest, EveryKeyIsRead) {
    const std::string path = fullPath();
    const BrowserSettings settings = parsed(
        R"({"module": ")" + path + R"(", "configuration": ")" + path + R"(", "pinentry": ")" +
            path +
            R"(", "allow": ["https://a.example", "HTTPS://A.example:443/", "http://localhost:8080"],
                "deny": ["https://b.example"], "usersMayAllow": false, "callSeconds": 600,
                "extensions": ["abcdefghijklmnopabcdefghijklmnop", "me@example.com",
                               "{01234567-89ab-CDEF-0123-456789abcdef}", "me@example.com"]})",
        SettingsScope::kSystem);
    EXPECT_EQ(path, settings.module);
    EXPECT_EQ(path, settings.configuration);
    EXPECT_EQ(path, settings.pinentry);
    // Each once.
    EXPECT_EQ((std::vector{origin("https://a.example"), origin("http://localhost:8080")}),
              settings.allow);
    EXPECT_EQ(std::vector{origin("https://b.example")}, settings.deny);
    EXPECT_EQ((std::vector<std::string>{"abcdefghijklmnopabcdefghijklmnop", "me@example.com",
                                        "{01234567-89ab-CDEF-0123-456789abcdef}"}),
              settings.extensions);
    EXPECT_FALSE(settings.usersMayAllow);
    EXPECT_EQ(600u, settings.callSeconds);
    EXPECT_EQ(settings, parsed(host::settingsText(settings), SettingsScope::kSystem));
}

TEST(SettingsTextTest, EmptySettingsAreAnEmptyObject) {
    EXPECT_EQ("{}\n", host::settingsText({}));
    EXPECT_EQ(BrowserSettings(), parsed("{}"));
    EXPECT_EQ(BrowserSettings(), parsed(R"({"allow": [], "deny": [], "extensions": []})"));
    EXPECT_EQ(BrowserSettings(), parsed("\xEF\xBB\xBF{}"))
        << "a byte order mark, as editors of Windows write";
    EXPECT_NE("-", problemOf("\xEF\xBB\xBF\xEF\xBB\xBF{}"));
}

TEST(SettingsTextTest, WhatIsNotJsonIsRefusedWithItsPlace) {
    const std::string kNul = "is not JSON: it contains a NUL or begins with a byte order mark";
    EXPECT_EQ("is not JSON at byte 1", problemOf(""));
    EXPECT_EQ("is not JSON at byte 14", problemOf(R"({"allow": []}})"));
    EXPECT_EQ("is not JSON at byte 2", problemOf("{// a comment\n}"));
    EXPECT_EQ("is not JSON at byte 2", problemOf("{'allow': []}"));
    EXPECT_EQ(kNul, problemOf(std::string("{\"allow\": \0[]}", 14)));
    EXPECT_EQ("is not JSON at byte 3", problemOf("{\"\xFF\": 1}"));
    EXPECT_EQ(kNul, problemOf(std::string("\xFF\xFE{\0}\0", 6)));
    EXPECT_EQ("is not JSON at byte 3", problemOf("{\"\xC0\x80\": 1}"));
    EXPECT_EQ("is not JSON at byte 4", problemOf("{\"\xED\xA0\x80\": 1}"));
    EXPECT_EQ("has a number that is too large", problemOf(R"({"callSeconds": 1e999})"));
}

TEST(SettingsTextTest, OtherJsonIsRefused) {
    for (const char* text : {"null", "true", "1", "\"text\"", "[]", R"(["allow"])"}) {
        EXPECT_EQ("is not a JSON object", problemOf(text)) << text;
    }
    EXPECT_EQ("is nested too deeply", problemOf(R"({"allow": [[]]})"));
    EXPECT_EQ("is nested too deeply", problemOf(R"({"allow": [{}]})"));
    EXPECT_EQ("is nested too deeply", problemOf(std::string(500000, '[')));
    std::string deep;
    for (int i = 0; i < 100000; ++i) {
        deep.append(R"({"a":)");
    }
    EXPECT_EQ("is nested too deeply", problemOf(deep));
}

TEST(SettingsTextTest, UnknownAndRepeatedKeysAreRefused) {
    EXPECT_EQ("has the unknown key \"alow\"", problemOf(R"({"alow": []})"));
    EXPECT_EQ("has the unknown key \"Allow\"", problemOf(R"({"Allow": []})"));
    EXPECT_EQ("has the unknown key \"\"", problemOf(R"({"": []})"));
    EXPECT_EQ("has the unknown key \"" + std::string(80, 'x') + "...\"",
              problemOf("{\"" + std::string(100000, 'x') + "\": 1}"));
    EXPECT_EQ("has the key \"deny\" twice",
              problemOf(R"({"deny": ["https://a.example"], "deny": []})"));
    EXPECT_EQ("has the key \"deny\" twice", problemOf(R"({"deny": [], "den\u0079": []})"));
    EXPECT_EQ("has the key \"usersMayAllow\", which is only for the system's file",
              problemOf(R"({"usersMayAllow": true})"));
    EXPECT_EQ("-", problemOf(R"({"usersMayAllow": true})", SettingsScope::kSystem));
}

TEST(SettingsTextTest, WrongTypesAreRefused) {
    for (const char* key : {"module", "configuration", "pinentry"}) {
        for (const char* value : {"null", "1", "[]", "true"}) {
            EXPECT_EQ(
                std::string("has the key \"").append(key).append("\", which must be a text"),
                problemOf(std::string("{\"").append(key).append("\": ").append(value).append("}")));
        }
    }
    for (const char* key : {"allow", "deny", "extensions"}) {
        for (const char* value :
             {"null", "\"https://a.example\"", "{}", "[1]", "[null]", "[true]"}) {
            EXPECT_EQ(
                std::string("has the key \"")
                    .append(key)
                    .append("\", which must be a list of texts"),
                problemOf(std::string("{\"").append(key).append("\": ").append(value).append("}")));
        }
    }
    for (const char* value : {"null", "1", "\"true\"", "[]"}) {
        EXPECT_EQ("has the key \"usersMayAllow\", which must be true or false",
                  problemOf(std::string("{\"usersMayAllow\": ").append(value).append("}"),
                            SettingsScope::kSystem));
    }
    for (const char* value : {"null", "\"30\"", "0", "601", "-1", "1.5", "1e18", "true", "[]",
                              "18446744073709551617"}) {
        EXPECT_EQ("has the key \"callSeconds\", which must be a whole number from 1 to 600",
                  problemOf(std::string("{\"callSeconds\": ").append(value).append("}")))
            << value;
    }
    EXPECT_EQ(30u, parsed(R"({"callSeconds": 30.0})").callSeconds);
}

TEST(SettingsTextTest, WrongValuesAreRefused) {
    for (const char* path : {"", "module.so", "./module.so", "../module.so"}) {
        EXPECT_EQ("has the key \"module\", whose path is not a full one",
                  problemOf(std::string("{\"module\": \"").append(path).append("\"}")));
    }
    EXPECT_EQ("has the key \"module\", whose path contains a control character",
              problemOf("{\"module\": \"" + fullPath() + "\\u0000.so\"}"));
    EXPECT_EQ("has the key \"module\", whose path is too long",
              problemOf("{\"module\": \"" + fullPath() + std::string(5000, 'x') + "\"}"));
    EXPECT_EQ(
        "has the key \"allow\", in which \"https://a.example/path\" has a path; end it before the "
        "\"/\"",
        problemOf(R"({"allow": ["https://b.example", "https://a.example/path"]})"));
    EXPECT_EQ("has the key \"deny\", in which \"\" is empty", problemOf(R"({"deny": [""]})"));
    for (const char* id :
         {"", "abcdefghijklmnopabcdefghijklmno", "abcdefghijklmnopabcdefghijklmnoq", "*", "@",
          "me@", "me@a@b", "{01234567-89ab-cdef-0123-456789abcdeg}", "{}", "m e@example.com"}) {
        EXPECT_EQ(std::string("has the key \"extensions\", in which \"")
                      .append(id)
                      .append("\" is not the identifier of an extension"),
                  problemOf(std::string("{\"extensions\": [\"").append(id).append("\"]}")));
    }
}

}  // namespace
}  // namespace zr::test
