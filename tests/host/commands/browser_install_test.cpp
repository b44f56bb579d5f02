// zrkey browser install, uninstall and status, to the last character.
#include <utility>

#include "host/system/utf8_path.h"
#include "host/web/manifest_places.h"
#include "tests/host/command_test.h"

namespace fs = std::filesystem;

namespace zr::test {
namespace {

using host::Browser;
using host::SettingsScope;

class BrowserInstallTest : public CommandTest {
protected:
    BrowserInstallTest()
        : program(host::toUtf8(fs::current_path() / host::defaultHostProgram().filename())) {
        writeProgram(program);
    }
    static void writeProgram(const std::string& file) {
        writeFile(host::toPath(file), "#!/bin/sh\n");
        fs::permissions(host::toPath(file), fs::perms::owner_all);
    }
    static std::string fileOf(Browser browser, SettingsScope scope = SettingsScope::kUser) {
        return host::toUtf8(host::ownManifest(browser, scope).value());
    }
    /// One line for each browser.
    static std::string lines(const std::string& scope, const std::string& state) {
        std::string text;
        for (const Browser browser : host::kBrowsers) {
            text.append(nameOf(browser)).append("\t").append(scope).append("\t").append(state);
            text.append("\t").append(
                fileOf(browser, scope == "user" ? SettingsScope::kUser : SettingsScope::kSystem));
            text.append("\n");
        }
        return text;
    }
    std::vector<std::string> install(std::vector<std::string> options = {}) const {
        options.insert(options.begin(), {"browser", "install", "--host", program});
        return options;
    }
    /// The line of a browser and a scope.
    std::string status(const std::string& name, const std::string& scope = "user") const {
        const std::string text = zrkey({"browser", "status", "--host", program}).output;
        const std::size_t begin =
            text.find(std::string(name).append("\t").append(scope).append("\t"));
        return begin == std::string::npos ? "" : text.substr(begin, text.find('\n', begin) - begin);
    }
    int statusCode() const { return zrkey({"browser", "status", "--host", program}).exitCode; }

    std::string program;
};

TEST_F(BrowserInstallTest, AllBrowsersOfTheUserAreTheDefault) {
    expectOutput(install(), lines("user", "installed"));
    expectOutput(install(), lines("user", "unchanged"));
    EXPECT_EQ(0, statusCode());
    expectOutput({"browser", "uninstall"}, lines("user", "removed"));
    EXPECT_EQ(4, statusCode());
}

TEST_F(BrowserInstallTest, BrowsersAndScopeCanBeChosen) {
    expectOutput(install({"--system", "--browser", "firefox,chrome,firefox"}),
                 "firefox\tsystem\tinstalled\t" +
                     fileOf(Browser::kFirefox, SettingsScope::kSystem) +
                     "\nchrome\tsystem\tinstalled\t" +
                     fileOf(Browser::kChrome, SettingsScope::kSystem) + '\n');
    EXPECT_EQ("firefox\tsystem\tinstalled\t" + fileOf(Browser::kFirefox, SettingsScope::kSystem),
              status("firefox", "system"));
    EXPECT_EQ(0u, status("edge", "system").find("edge\tsystem\tmissing"));
    EXPECT_EQ(0u, status("firefox", "user").find("firefox\tuser\tmissing"));
    for (const char* names : {"opera", "Firefox", "firefox;chrome", "firefox,", ","}) {
        const CommandResult result = zrkey(install({"--browser", names}));
        EXPECT_EQ(std::string(names) == "firefox," ? 0 : 2, result.exitCode) << names;
    }
}

TEST_F(BrowserInstallTest, UserAndSystemTogetherAreWrongUsage) {
    for (const std::string name : {"install", "uninstall", "status"}) {
        expectUsageError({"browser", name, "--system", "--user"}, "--user excludes --system",
                         "browser " + name + " [OPTIONS]");
    }
}

TEST_F(BrowserInstallTest, MissingProgramIsNotInstalled) {
    const std::string other = host::toUtf8(fs::current_path() / "none");
    expectFailure({"browser", "install", "--host", "none"}, 4,
                  "install zrkey-browser: \"" + other +
                      "\" does not exist; install it, or name it with --host");
    EXPECT_FALSE(fs::exists(web.places.userConfiguration));
}

TEST_F(BrowserInstallTest, ReportsInJson) {
    expectJson(
        install({"--browser", "edge"}), "browser install",
        R"("host":")" + program +
            R"(","manifests":[{"browser":"edge","scope":"user","done":"installed","file":")" +
            fileOf(Browser::kEdge) + R"("}])");
    expectJson({"browser", "uninstall", "--browser", "edge"}, "browser uninstall",
               R"("manifests":[{"browser":"edge","scope":"user","done":"removed","file":")" +
                   fileOf(Browser::kEdge) + R"("}])");
}

TEST_F(BrowserInstallTest, StatusSaysWhatIsWrong) {
    zrkey(install());
    fs::rename(host::toPath(program), "moved");
    EXPECT_EQ("firefox\tuser\tbroken\t" + fileOf(Browser::kFirefox) + "\tit names \"" + program +
                  "\", which does not exist",
              status("firefox"));
    EXPECT_EQ(1, statusCode());
    fs::create_directory("other");
    const std::string other =
        host::toUtf8(fs::current_path() / "other" / host::toPath(program).filename());
    writeProgram(other);
    writeProgram(program);
    const std::string before = std::exchange(program, other);
    EXPECT_EQ("chrome\tuser\toutdated\t" + fileOf(Browser::kChrome) + "\tit starts \"" + before +
                  "\", not \"" + program + '"',
              status("chrome"));
    EXPECT_EQ(1, statusCode());
    expectOutput(install(), lines("user", "repaired"));
    EXPECT_EQ(0, statusCode());
}

TEST_F(BrowserInstallTest, ManifestOfOtherExtensionsIsRepaired) {
    zrkey(install());
    fs::create_directories(web.places.userConfiguration / "zrkey");
    writeFile(web.places.userConfiguration / "zrkey/browser.json",
              R"({"extensions": ["me@example.com"]})");
    EXPECT_EQ(
        "firefox\tuser\toutdated\t" + fileOf(Browser::kFirefox) + "\tit names other extensions",
        status("firefox"));
    expectOutput(install({"--browser", "firefox"}),
                 "firefox\tuser\trepaired\t" + fileOf(Browser::kFirefox) + '\n');
    EXPECT_EQ(0, statusCode());
}

TEST_F(BrowserInstallTest, ForeignManifestNeedsForce) {
    zrkey(install());
    writeFile(fileOf(Browser::kEdge), R"({"name": "other.host"})");
    EXPECT_EQ("edge\tuser\tforeign\t" + fileOf(Browser::kEdge) + "\tit has the name \"other.host\"",
              status("edge"));
    EXPECT_EQ(1, statusCode());
    const std::string cause =
        " zrkey-browser for edge: the manifest \"" + fileOf(Browser::kEdge) +
        "\" belongs to another program: it has the name \"other.host\"; look at it, and "
        "give --force if nobody needs it";
    expectFailure(install({"--browser", "edge"}), 1, "install" + cause);
    expectFailure({"browser", "uninstall", "--browser", "edge"}, 1, "uninstall" + cause);
    expectOutput(install({"--browser", "edge", "--force"}),
                 "edge\tuser\treplaced\t" + fileOf(Browser::kEdge) + '\n');
}

TEST_F(BrowserInstallTest, StatusShowsSettingsAndModule) {
    const std::string user = host::toUtf8(web.places.userConfiguration / "zrkey/browser.json");
    EXPECT_EQ("settings\tuser\tmissing\t" + user, status("settings"));
    EXPECT_EQ("module\t-\tmissing\t-\tset it by zrkey browser module PATH", status("module", "-"));
    writeFile("module.so", "module");
    zrkey({"browser", "module", "module.so"});
    EXPECT_EQ("settings\tuser\tinstalled\t" + user, status("settings"));
    const std::string file = host::toUtf8(fs::current_path() / "module.so");
    EXPECT_EQ("module\t-\tinstalled\t" + file, status("module", "-"));
    fs::remove("module.so");
    EXPECT_EQ("module\t-\tbroken\t" + file + "\tNo such file or directory", status("module", "-"));
    writeFile(host::toPath(user), "{");
    EXPECT_EQ("settings\tuser\tbroken\t" + user + "\tit is not JSON at byte 2", status("settings"));
    EXPECT_EQ("module\t-\tbroken\t-\tthe settings cannot be read", status("module", "-"));
    EXPECT_EQ(1, statusCode());
}

TEST_F(BrowserInstallTest, BrokenSettingsStopTheInstallation) {
    fs::create_directories(web.places.userConfiguration / "zrkey");
    writeFile(web.places.userConfiguration / "zrkey/browser.json", "{");
    EXPECT_EQ(3, zrkey(install()).exitCode);
    EXPECT_FALSE(fs::exists(fileOf(Browser::kChromium)));
}

}  // namespace
}  // namespace zr::test
