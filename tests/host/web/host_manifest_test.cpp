// The text of the manifests that browsers read, and what is wrong with others.
#include "host/web/host_manifest.h"

#include <nlohmann/json.hpp>

#include "host/system/utf8_path.h"
#include "tests/host/web/web_test.h"

namespace fs = std::filesystem;

namespace zr::test {
namespace {

using host::Browser;
using host::HostManifest;
using host::ManifestState;
using Json = nlohmann::json;

class HostManifestTest : public WebTest {
protected:
    HostManifestTest() : program(makeProgram(folder.root())) {
        expected = {program, {"abcdefghijklmnopabcdefghijklmnop", "me@example.com"}};
    }
    Json ours(Browser browser = Browser::kChromium) const {
        return Json::parse(host::manifestText(browser, expected));
    }
    /// "state: problem" of a text.
    std::string judged(const std::string& text, Browser browser = Browser::kChromium) const {
        constexpr std::array<const char*, 5> kNames = {"installed", "missing", "outdated", "broken",
                                                       "foreign"};
        const host::ManifestReport report =
            host::judgeManifest(browser, text, folder.root() / "manifest.json", expected);
        return std::string(kNames.at(static_cast<std::size_t>(report.state)))
            .append(report.problem.empty() ? "" : ": ")
            .append(report.problem);
    }
    std::string judged(const Json& json) const { return judged(json.dump()); }

    fs::path program;
    HostManifest expected;
};

TEST_F(HostManifestTest, ChromiumGetsOriginsAndFirefoxIdentifiers) {
    for (const Browser browser : {Browser::kChromium, Browser::kChrome, Browser::kEdge}) {
        EXPECT_EQ(Json::parse(R"(["chrome-extension://abcdefghijklmnopabcdefghijklmnop/"])"),
                  ours(browser).at("allowed_origins"));
        EXPECT_FALSE(ours(browser).contains("allowed_extensions"));
    }
    EXPECT_EQ(Json::parse(R"(["me@example.com"])"),
              ours(Browser::kFirefox).at("allowed_extensions"));
    EXPECT_FALSE(ours(Browser::kFirefox).contains("allowed_origins"));
}

TEST_F(HostManifestTest, NamesTheHostAndItsProgram) {
    for (const Browser browser : host::kBrowsers) {
        const Json json = ours(browser);
        EXPECT_EQ("zrkey.browser", json.at("name"));
        EXPECT_EQ("stdio", json.at("type"));
        EXPECT_EQ(program, host::toPath(json.at("path").get<std::string>()));
        EXPECT_EQ(5u, json.size());
        EXPECT_EQ("installed", judged(json.dump(), browser));
    }
}

TEST_F(HostManifestTest, PathsKeepBlanksQuotesAndOtherLetters) {
    const fs::path odd = folder.root() / fs::path(u8"with blank, it's \u00fc\u20ac");
    if (!canMakeFolder(odd)) {
        GTEST_SKIP() << "no files of such names here";
    }
    program = makeProgram(odd);
    expected.program = program;
    EXPECT_EQ(program, host::toPath(ours().at("path").get<std::string>()));
    EXPECT_EQ("installed", judged(ours()));
}

TEST_F(HostManifestTest, AnotherProgramsManifestIsForeign) {
    Json json = ours();
    json["name"] = "other.host";
    EXPECT_EQ("foreign: has the name \"other.host\"", judged(json));
    json = ours();
    json["path"] = host::toUtf8(folder.root() / "other-program");
    EXPECT_EQ("foreign: starts \"" + host::toUtf8(folder.root() / "other-program") + '"',
              judged(json));
    for (const char* text : {"", "{", "not JSON", "[]", "null", "{}", "{\"name\": 1}",
                             R"({"name": "zrkey.browser", "name": "zrkey.browser"})", "\xFF"}) {
        EXPECT_EQ(0u, judged(std::string(text)).find("foreign: ")) << text;
    }
}

TEST_F(HostManifestTest, ManifestOfAMissingProgramIsBroken) {
    fs::remove(program);
    EXPECT_EQ("broken: names \"" + host::toUtf8(program) + "\", which does not exist",
              judged(ours()));
    fs::create_directory(program);
    EXPECT_EQ("broken: names \"" + host::toUtf8(program) + "\", which is not a regular file",
              judged(ours()));
}

TEST_F(HostManifestTest, ManifestOfAnotherTypeIsBroken) {
    Json json = ours();
    json["type"] = "pipe";
    EXPECT_EQ("broken: does not have the type \"stdio\"", judged(json));
    json.erase("type");
    EXPECT_EQ("broken: does not have the type \"stdio\"", judged(json));
}

TEST_F(HostManifestTest, ManifestOfAnotherInstallationIsOutdated) {
    const fs::path other = makeProgram(folder.root() / "other");
    Json json = ours();
    json["path"] = host::toUtf8(other);
    EXPECT_EQ(
        "outdated: starts \"" + host::toUtf8(other) + "\", not \"" + host::toUtf8(program) + '"',
        judged(json));
}

TEST_F(HostManifestTest, ManifestOfOtherExtensionsIsOutdated) {
    for (const char* list :
         {"[]", "null", "[1]", R"(["chrome-extension://abcdefghijklmnopabcdefghijklmnop"])",
          R"(["chrome-extension://abcdefghijklmnopabcdefghijklmnop/", "chrome-extension://*/"])"}) {
        Json json = ours();
        json["allowed_origins"] = Json::parse(list);
        EXPECT_EQ("outdated: names other extensions", judged(json)) << list;
    }
    // Their order does not matter.
    expected.extensions.emplace_back("ponmlkjihgfedcbaponmlkjihgfedcba");
    Json json = ours();
    std::swap(json["allowed_origins"][0], json["allowed_origins"][1]);
    EXPECT_EQ("installed", judged(json));
}

}  // namespace
}  // namespace zr::test
