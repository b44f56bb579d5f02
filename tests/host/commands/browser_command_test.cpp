// zrkey browser allow, deny, forget, list and module, to the last character.
#include "host/system/utf8_path.h"
#include "tests/host/command_test.h"

namespace fs = std::filesystem;

namespace zr::test {
namespace {

class BrowserCommandTest : public CommandTest {
protected:
    fs::path userSettings() const { return web.places.userConfiguration / "zrkey/browser.json"; }
    fs::path systemSettings() const {
        return web.places.systemConfiguration / "zrkey/browser.json";
    }
    void writeSystem(const std::string& text) const {
        fs::create_directories(systemSettings().parent_path());
        writeFile(systemSettings(), text);
    }
    static std::string here(const std::string& name) {
        return (fs::current_path() / name).generic_string();
    }
};

TEST_F(BrowserCommandTest, AllowAndDenyMoveASiteBetweenTheLists) {
    expectOutput({"browser", "allow", "https://Example.com:443/"}, "allowed https://example.com\n");
    expectOutput({"browser", "list"}, "allow\tuser\thttps://example.com\n");
    expectOutput({"browser", "deny", "https://example.com"}, "denied https://example.com\n");
    expectOutput({"browser", "list"}, "deny\tuser\thttps://example.com\n");
    expectOutput({"browser", "allow", "https://example.com"}, "allowed https://example.com\n");
    expectOutput({"browser", "list"}, "allow\tuser\thttps://example.com\n");
    expectOutput({"browser", "forget", "https://example.com"}, "forgot https://example.com\n");
    expectOutput({"browser", "list"}, "");
    EXPECT_EQ("{}\n", readFile(userSettings()));
}

TEST_F(BrowserCommandTest, SystemChangesTheFileOfTheSystem) {
    expectOutput({"browser", "deny", "--system", "https://a.example"},
                 "denied https://a.example\n");
    EXPECT_FALSE(fs::exists(userSettings()));
    expectOutput({"browser", "allow", "--user", "https://b.example"},
                 "allowed https://b.example\n");
    expectOutput({"browser", "list"},
                 "allow\tuser\thttps://b.example\ndeny\tsystem\thttps://a.example\n");
    expectOutput({"browser", "list", "--system"}, "deny\tsystem\thttps://a.example\n");
    expectOutput({"browser", "list", "--user"}, "allow\tuser\thttps://b.example\n");
    expectJson({"browser", "list"}, "browser list",
               R"("sites":[{"rule":"allow","scope":"user","origin":"https://b.example"},)"
               R"({"rule":"deny","scope":"system","origin":"https://a.example"}])");
}

TEST_F(BrowserCommandTest, UserAndSystemTogetherAreWrongUsage) {
    for (const std::string name : {"allow", "deny", "forget"}) {
        expectUsageError({"browser", name, "--user", "--system", "https://a.example"},
                         "--user excludes --system", "browser " + name + " [OPTIONS] ORIGIN");
    }
}

TEST_F(BrowserCommandTest, ReportsInJsonWhetherSomethingChanged) {
    expectJson({"browser", "allow", "https://a.example"}, "browser allow",
               R"("origin":"https://a.example","scope":"user","changed":true)");
    expectJson({"browser", "allow", "https://a.example"}, "browser allow",
               R"("origin":"https://a.example","scope":"user","changed":false)");
    expectJson({"browser", "forget", "https://a.example"}, "browser forget",
               R"("origin":"https://a.example","scope":"user","changed":true)");
}

TEST_F(BrowserCommandTest, ForgetOfAnUnknownSiteFails) {
    expectFailure(
        {"browser", "forget", "https://a.example"}, 4,
        "forget the site \"https://a.example\": no list of the user has it; zrkey browser list "
        "shows the lists");
}

TEST_F(BrowserCommandTest, WhatIsNotAnOriginIsRefused) {
    const std::string advice = "; give an origin such as https://example.com";
    expectFailure(
        {"browser", "allow", "example.com"}, 2,
        "allow the site \"example.com\": it has no scheme; write https:// before it" + advice);
    expectFailure(
        {"browser", "deny", "http://example.com"}, 2,
        "deny the site \"http://example.com\": it is http; only https is safe, and http with "
        "localhost or 127.0.0.1" +
            advice);
    expectFailure(
        {"browser", "forget", "https://a.example/login"}, 2,
        "forget the site \"https://a.example/login\": it has a path; end it before the \"/\"" +
            advice);
    expectFailure({"browser", "list", "https://m\xC3\xBCnchen.example"}, 2,
                  "judge the site \"https://m\xC3\xBCnchen.example\": it has letters outside "
                  "ASCII; write its "
                  "host in Punycode, which begins with xn--, as the browser sends it" +
                      advice);
    EXPECT_FALSE(fs::exists(userSettings()));
}

TEST_F(BrowserCommandTest, ListOfASiteSaysWhoDecides) {
    const std::vector<std::string> words = {"browser", "list", "https://a.example"};
    const auto expectVerdict = [&](int exitCode, const std::string& line) {
        const CommandResult result = zrkey(words);
        EXPECT_EQ(exitCode, result.exitCode);
        EXPECT_EQ(line + "\thttps://a.example\n", result.output);
        EXPECT_EQ("", result.errors);
    };
    expectVerdict(4, "not listed\t-");
    zrkey({"browser", "allow", "https://a.example"});
    expectVerdict(0, "allowed\tuser");
    expectJson(words, "browser list",
               R"("origin":"https://a.example","allowed":true,"verdict":"allowed","scope":"user")");
    writeSystem(R"({"usersMayAllow": false})");
    expectVerdict(4, "not allowed\tuser");
    writeSystem(R"({"usersMayAllow": false, "allow": ["https://a.example"]})");
    expectVerdict(0, "allowed\tsystem");
    zrkey({"browser", "deny", "https://a.example"});
    expectVerdict(4, "denied\tuser");
    writeSystem(R"({"deny": ["https://a.example"]})");
    expectVerdict(4, "denied\tsystem");
}

TEST_F(BrowserCommandTest, AllowSaysWhenItHasNoEffect) {
    const auto expectNote = [](const std::vector<std::string>& words, const std::string& note) {
        const CommandResult result = zrkey(words);
        EXPECT_EQ(0, result.exitCode);
        EXPECT_EQ("allowed https://a.example\n", result.output);
        EXPECT_EQ(note, result.errors);
    };
    writeSystem(R"({"usersMayAllow": false})");
    expectNote({"browser", "allow", "https://a.example"},
               "zrkey: only the administrator can allow sites here\n");
    writeSystem(R"({"deny": ["https://a.example"]})");
    expectNote({"browser", "allow", "https://a.example"},
               "zrkey: the administrator denies this site, which wins\n");
    zrkey({"browser", "deny", "https://a.example"});
    expectNote({"browser", "allow", "--system", "https://a.example"},
               "zrkey: your own list denies this site, which wins\n");
    expectNote({"browser", "allow", "--system", "-q", "https://a.example"}, "");
}

TEST_F(BrowserCommandTest, BrokenSettingsAreNamedAndKept) {
    writeSystem(R"({"deny": "https://a.example"})");
    const std::string line =
        "read the settings \"" + host::toUtf8(systemSettings()) +
        "\": it has the key \"deny\", which must be a list of texts; correct the file";
    expectFailure({"browser", "list"}, 3, line);
    expectFailure({"browser", "allow", "--system", "https://a.example"}, 3, line);
    EXPECT_EQ(R"({"deny": "https://a.example"})", readFile(systemSettings()));
}

TEST_F(BrowserCommandTest, WithoutAFolderNothingIsWritten) {
    web.places.userConfiguration.clear();
    web.use();
    expectFailure({"browser", "allow", "https://a.example"}, 1,
                  "write browser.json: the environment names no folder for it; set HOME or "
                  "XDG_CONFIG_HOME, on Windows APPDATA");
    expectOutput({"browser", "list"}, "");
}

TEST_F(BrowserCommandTest, ModuleIsSetShownAndRemoved) {
    writeFile("my module.so", "module");
    writeFile("config.xml", "<driver/>");
    expectFailure(
        {"browser", "module"}, 4,
        "show the module of zrkey-browser: browser.json names none; set it by zrkey browser "
        "module PATH");
    expectOutput({"browser", "module", "my module.so"}, "module:\t" + here("my module.so") + '\n');
    expectOutput({"browser", "module"}, "module:\t" + here("my module.so") + '\n');
    expectJson({"browser", "module", "--config", "config.xml"}, "browser module",
               R"("scope":"user","changed":true,"configuration":")" + here("config.xml") + '"');
    expectOutput({"browser", "module"}, "module:\t" + here("my module.so") + "\nconfiguration:\t" +
                                            here("config.xml") + '\n');
    writeFile("system.so", "module");
    expectOutput({"browser", "module", "--system", "system.so"},
                 "module:\t" + here("system.so") + '\n');
    expectJson({"browser", "module"}, "browser module",
               R"("module":")" + here("my module.so") + R"(","configuration":")" +
                   here("config.xml") + '"');
    expectOutput({"browser", "module", "--remove"}, "removed the module\n");
    expectOutput({"browser", "module"}, "module:\t" + here("system.so") + '\n');
}

TEST_F(BrowserCommandTest, ModuleThatCannotBeUsedIsRefused) {
    fs::create_directory("folder");
    const std::string advice = "; give the path of a PKCS #11 module, or a name that p11-kit knows";
    expectFailure({"browser", "module", "./none.so"}, 3,
                  "use the module \"./none.so\": No such file or directory" + advice);
    expectFailure({"browser", "module", "folder"}, 3,
                  "use the module \"folder\": it is a folder" + advice);
    expectFailure({"browser", "module", "--config", "folder"}, 3,
                  "use the configuration \"" + here("folder") +
                      "\": it is not a regular file; give the path of a file for the library");
    expectUsageError({"browser", "module", "--remove", "folder"}, "PATH excludes --remove",
                     "browser module [OPTIONS] [PATH]");
    EXPECT_FALSE(fs::exists(userSettings()));
}

}  // namespace
}  // namespace zr::test
