// zrkey-browser made known to browsers, repaired and removed, and the system as it was afterwards.
#include "host/web/host_registration.h"

#include <set>

#include "host/system/utf8_path.h"
#include "host/web/extension_ids.h"
#include "tests/host/web/web_test.h"

namespace fs = std::filesystem;

namespace zr::test {
namespace {

using host::Browser;
using host::HostManifest;
using host::ManifestState;
using host::SettingsScope;

constexpr SettingsScope kScopes[] = {SettingsScope::kUser, SettingsScope::kSystem};

class HostRegistrationTest : public WebTest {
protected:
    HostRegistrationTest() : manifest{makeProgram(folder.root() / "bin"), host::ownExtensions()} {}

    ManifestState state(Browser browser, SettingsScope scope = SettingsScope::kUser) const {
        return host::examineRegistration(browser, scope, manifest).report.state;
    }
    void install(Browser browser, SettingsScope scope = SettingsScope::kUser,
                 bool isForced = false) const {
        host::installHost(browser, scope, manifest, isForced);
    }
    void uninstall(Browser browser, SettingsScope scope = SettingsScope::kUser,
                   bool isForced = false) const {
        host::uninstallHost(browser, scope, manifest, isForced);
    }
    static fs::path fileOf(Browser browser, SettingsScope scope = SettingsScope::kUser) {
        return host::ownManifest(browser, scope).value();
    }
    /// Everything below the root.
    std::set<fs::path> everything() const {
        std::set<fs::path> found;
        for (const fs::directory_entry& entry : fs::recursive_directory_iterator(folder.root())) {
            found.insert(entry.path());
        }
        return found;
    }
    /// A manifest of another program in the place of ours, which the browser reads.
    void writeForeign(Browser browser) const {
        install(browser);
        writeFile(fileOf(browser), kForeign);
    }

    static constexpr const char* kForeign = R"({"name": "other.host", "path": "/other"})";

    HostManifest manifest;
};

TEST_F(HostRegistrationTest, InstalledHostIsFoundByItsBrowserAndScopeAlone) {
    for (const SettingsScope scope : kScopes) {
        for (const Browser browser : host::kBrowsers) {
            EXPECT_EQ(ManifestState::kMissing,
                      host::installHost(browser, scope, manifest, false).report.state);
            for (const SettingsScope otherScope : kScopes) {
                for (const Browser other : host::kBrowsers) {
                    const bool isIt = other == browser && otherScope == scope;
                    EXPECT_EQ(isIt ? ManifestState::kInstalled : ManifestState::kMissing,
                              state(other, otherScope));
                }
            }
            EXPECT_EQ(ManifestState::kInstalled,
                      host::uninstallHost(browser, scope, manifest, false).report.state);
            EXPECT_EQ(ManifestState::kMissing, state(browser, scope));
        }
    }
}

TEST_F(HostRegistrationTest, UninstalledSystemIsAsItWas) {
    fs::create_directories(web.places.userConfiguration);
    fs::create_directories(web.places.systemConfiguration);
    fs::create_directories(web.places.home);
    // Folders that a system has.
    for (const char* path : {"etc/opt", "usr/lib"}) {
        fs::create_directories(folder.root() / path);
    }
    const std::set<fs::path> before = everything();
    for (const SettingsScope scope : kScopes) {
        for (const Browser browser : host::kBrowsers) {
            install(browser, scope);
        }
    }
    EXPECT_LT(before.size(), everything().size());
    for (const SettingsScope scope : kScopes) {
        for (const Browser browser : host::kBrowsers) {
            uninstall(browser, scope);
        }
    }
    EXPECT_EQ(before, everything());
}

TEST_F(HostRegistrationTest, FilesOfOthersStay) {
    for (const Browser browser : host::kBrowsers) {
        write(fileOf(browser).parent_path() / "other.json", "other");
        install(browser);
        uninstall(browser);
        EXPECT_TRUE(fs::exists(fileOf(browser).parent_path() / "other.json"));
    }
}

TEST_F(HostRegistrationTest, InstallingTwiceChangesNothing) {
    install(Browser::kFirefox);
    const std::string text = readFile(fileOf(Browser::kFirefox));
    EXPECT_EQ(
        ManifestState::kInstalled,
        host::installHost(Browser::kFirefox, SettingsScope::kUser, manifest, false).report.state);
    EXPECT_EQ(text, readFile(fileOf(Browser::kFirefox)));
}

TEST_F(HostRegistrationTest, UninstallingWhatIsNotThereSucceeds) {
    for (const Browser browser : host::kBrowsers) {
        uninstall(browser);
    }
    EXPECT_FALSE(fs::exists(web.places.userConfiguration));
}

TEST_F(HostRegistrationTest, StaleManifestIsRepaired) {
    HostManifest old = {makeProgram(folder.root() / "old"), {}};
    for (const Browser browser : host::kBrowsers) {
        host::installHost(browser, SettingsScope::kUser, old, false);
        EXPECT_EQ(ManifestState::kOutdated, state(browser));
    }
    fs::remove(old.program);
    for (const Browser browser : host::kBrowsers) {
        EXPECT_EQ(ManifestState::kBroken, state(browser));
        install(browser);
        EXPECT_EQ(ManifestState::kInstalled, state(browser));
    }
}

TEST_F(HostRegistrationTest, ForeignManifestIsNeitherReplacedNorRemoved) {
    for (const Browser browser : host::kBrowsers) {
        writeForeign(browser);
        EXPECT_EQ(ManifestState::kForeign, state(browser));
        const std::string problem =
            "the manifest \"" + host::toUtf8(fileOf(browser)) +
            "\" belongs to another program: it has the name "
            "\"other.host\"; look at it, and give --force if nobody needs it";
        EXPECT_EQ(std::string("install zrkey-browser for ").append(nameOf(browser)).append(": ") +
                      problem,
                  failureOf([&] { install(browser); }));
        EXPECT_EQ(std::string("uninstall zrkey-browser for ").append(nameOf(browser)).append(": ") +
                      problem,
                  failureOf([&] { uninstall(browser); }));
        EXPECT_EQ(kForeign, readFile(fileOf(browser)));
        EXPECT_EQ(ManifestState::kForeign, state(browser));
    }
}

TEST_F(HostRegistrationTest, ForceReplacesAndRemovesAForeignManifest) {
    for (const Browser browser : host::kBrowsers) {
        writeForeign(browser);
        install(browser, SettingsScope::kUser, true);
        EXPECT_EQ(ManifestState::kInstalled, state(browser));
        writeFile(fileOf(browser), "not JSON");
        uninstall(browser, SettingsScope::kUser, true);
        EXPECT_FALSE(fs::exists(fileOf(browser)));
        EXPECT_EQ(ManifestState::kMissing, state(browser));
    }
}

TEST_F(HostRegistrationTest, FolderOfThatNameIsNeverRemoved) {
    const fs::path file = fileOf(Browser::kChromium);
    write(file / "content", "");
    for (const bool isForced : {false, true}) {
        EXPECT_NE("-",
                  failureOf([&] { install(Browser::kChromium, SettingsScope::kUser, isForced); }));
        EXPECT_NE(
            "-", failureOf([&] { uninstall(Browser::kChromium, SettingsScope::kUser, isForced); }));
    }
    EXPECT_TRUE(fs::exists(file / "content"));
}

TEST_F(HostRegistrationTest, HugeManifestIsForeign) {
    install(Browser::kChrome);
    fs::resize_file(fileOf(Browser::kChrome), 100 << 20);
    EXPECT_EQ(ManifestState::kForeign, state(Browser::kChrome));
}

TEST_F(HostRegistrationTest, FileInsteadOfTheFolderIsReported) {
    write(fileOf(Browser::kFirefox).parent_path(), "a file");
    const std::string failure = failureOf([&] { install(Browser::kFirefox); });
    EXPECT_EQ(0u, failure.find("install zrkey-browser for firefox: write \"")) << failure;
}

TEST_F(HostRegistrationTest, WithoutAFolderNothingIsInstalled) {
    web.places.userConfiguration.clear();
    web.places.home.clear();
    web.use();
    for (const Browser browser : host::kBrowsers) {
        const std::string problem =
            ": the environment names no folder for the manifest; set HOME, on "
            "Windows APPDATA";
        EXPECT_EQ(std::string("install zrkey-browser for ").append(nameOf(browser)).append(problem),
                  failureOf([&] { install(browser); }));
        EXPECT_EQ(
            std::string("uninstall zrkey-browser for ").append(nameOf(browser)).append(problem),
            failureOf([&] { uninstall(browser); }));
        EXPECT_EQ(ManifestState::kMissing, state(browser));
    }
}

TEST_F(HostRegistrationTest, ManifestNamesTheExtensionsOfTheSettings) {
    write(userFile(), R"({"extensions": ["user@example.com"]})");
    write(systemFile(), R"({"extensions": ["system@example.com"]})");
    const auto extensionsFor = [&](SettingsScope scope) {
        const std::vector<std::string> ids =
            host::expectedManifest(scope, manifest.program).extensions;
        return std::set<std::string>(ids.begin(), ids.end());
    };
    const std::vector<std::string> own = host::ownExtensions();
    std::set<std::string> expected(own.begin(), own.end());
    expected.insert("system@example.com");
    EXPECT_EQ(expected, extensionsFor(SettingsScope::kSystem));
    expected.insert("user@example.com");
    EXPECT_EQ(expected, extensionsFor(SettingsScope::kUser));
    write(systemFile(), R"({"usersMayAllow": false})");
    EXPECT_EQ(std::set<std::string>(own.begin(), own.end()), extensionsFor(SettingsScope::kUser));
}

}  // namespace
}  // namespace zr::test
