// The files browser.json: where they are, and how they are read, replaced and changed.
#include <atomic>
#include <chrono>
#include <thread>

#include "host/system/utf8_path.h"
#include "tests/host/web/web_test.h"

namespace fs = std::filesystem;

namespace zr::test {
namespace {

using host::BrowserSettings;
using host::SettingsScope;
using host::toUtf8;

class BrowserSettingsTest : public WebTest {
protected:
    static std::string readFailure(SettingsScope scope = SettingsScope::kUser) {
        return failureOf([scope] { host::readSettings(scope); });
    }
    std::string reading() const { return "read the settings \"" + toUtf8(userFile()) + "\": "; }
};

TEST_F(BrowserSettingsTest, FilesAreInTheFoldersOfConfigurations) {
    EXPECT_EQ(userFile(), host::settingsFile(SettingsScope::kUser));
    EXPECT_EQ(systemFile(), host::settingsFile(SettingsScope::kSystem));
}

TEST_F(BrowserSettingsTest, WithoutFoldersThereAreNoSettings) {
    web.places.userConfiguration.clear();
    web.use();
    EXPECT_EQ(std::nullopt, host::settingsFile(SettingsScope::kUser));
    EXPECT_EQ(BrowserSettings(), host::readSettings(SettingsScope::kUser));
    EXPECT_EQ(
        "write browser.json: the environment names no folder for it; set HOME or "
        "XDG_CONFIG_HOME, on Windows APPDATA",
        failureOf([] { host::writeSettings(SettingsScope::kUser, {}); }));
}

// A denial of the administrator must not be lost.
TEST_F(BrowserSettingsTest, WithoutTheFolderOfTheSystemNothingIsAllowed) {
    web.places.systemConfiguration.clear();
    web.use();
    const std::string why =
        ": the system does not say where the administrator's settings are; repair the known folder "
        "ProgramData of Windows";
    EXPECT_EQ("read the administrator's settings" + why, readFailure(SettingsScope::kSystem));
    EXPECT_EQ("read the administrator's settings" + why,
              failureOf([] { host::SitePolicy::read(); }));
    EXPECT_EQ("write browser.json" + why,
              failureOf([] { host::writeSettings(SettingsScope::kSystem, {}); }));
}

TEST_F(BrowserSettingsTest, MissingFileIsEmptySettings) {
    EXPECT_EQ(BrowserSettings(), host::readSettings(SettingsScope::kUser));
    EXPECT_EQ(BrowserSettings(), host::readSettings(SettingsScope::kSystem));
    EXPECT_FALSE(fs::exists(userFile().parent_path())) << "reading makes nothing";
}

TEST_F(BrowserSettingsTest, WrittenSettingsAreRead) {
    BrowserSettings settings;
    settings.allow = {origin("https://a.example")};
    settings.callSeconds = 5;
    for (const SettingsScope scope : {SettingsScope::kUser, SettingsScope::kSystem}) {
        host::writeSettings(scope, settings);
        EXPECT_EQ(settings, host::readSettings(scope));
    }
    EXPECT_EQ("{\n  \"allow\": [\n    \"https://a.example\"\n  ],\n  \"callSeconds\": 5\n}\n",
              readFile(userFile()));
    settings.allow.clear();
    host::writeSettings(SettingsScope::kUser, settings);
    EXPECT_EQ(settings, host::readSettings(SettingsScope::kUser)) << "replaced";
    // Nothing else is left.
    EXPECT_EQ(1, std::distance(fs::directory_iterator(userFile().parent_path()), {}));
}

TEST_F(BrowserSettingsTest, FolderInsteadOfTheFileIsRefused) {
    fs::create_directories(userFile());
    EXPECT_EQ(reading() + "it is not a regular file; remove it", readFailure());
    EXPECT_NE("-", failureOf([] { host::writeSettings(SettingsScope::kUser, {}); }));
    EXPECT_TRUE(fs::is_directory(userFile()));
}

TEST_F(BrowserSettingsTest, FileInsteadOfTheFolderIsReported) {
    write(web.places.userConfiguration / "zrkey", "a file");
    const std::string failure = failureOf([] { host::writeSettings(SettingsScope::kUser, {}); });
    EXPECT_EQ(0u, failure.find("make the folder \"")) << failure;
}

TEST_F(BrowserSettingsTest, MalformedFileIsNamedWithWhatIsWrong) {
    write(userFile(), R"({"alow": []})");
    EXPECT_EQ(reading() + "it has the unknown key \"alow\"; correct the file", readFailure());
    // It is not replaced either: a denial in it may count.
    EXPECT_EQ(reading() + "it has the unknown key \"alow\"; correct the file", failureOf([] {
                  host::changeSettings(SettingsScope::kUser, [](BrowserSettings&) {});
              }));
    EXPECT_EQ(R"({"alow": []})", readFile(userFile()));
}

TEST_F(BrowserSettingsTest, HugeFileIsNotRead) {
    write(userFile(), "{}");
    fs::resize_file(userFile(), 100 << 20);
    const std::string failure = readFailure();
    EXPECT_EQ(0u, failure.find(reading())) << failure;
    EXPECT_NE(std::string::npos, failure.find("; check its permissions and its size")) << failure;
}

TEST_F(BrowserSettingsTest, FileAtTheLimitIsRead) {
    std::string text = R"({"callSeconds": 7})";
    text.append((1U << 20) - text.size(), ' ');
    write(userFile(), text);
    EXPECT_EQ(7u, host::readSettings(SettingsScope::kUser).callSeconds);
    write(userFile(), text + ' ');
    EXPECT_NE("-", readFailure());
}

TEST_F(BrowserSettingsTest, FoldersWithBlanksAndOtherLettersWork) {
    const fs::path odd = folder.root() / fs::path(u8"with blank \u00fc\u20ac");
    if (!canMakeFolder(odd)) {
        GTEST_SKIP() << "no files of such names here";
    }
    web.places.userConfiguration = odd;
    web.use();
    BrowserSettings settings;
    settings.module = toUtf8(folder.root().root_path() / fs::path(u8"m\u00fc \u20ac.so"));
    host::writeSettings(SettingsScope::kUser, settings);
    EXPECT_EQ(settings, host::readSettings(SettingsScope::kUser));
}

TEST_F(BrowserSettingsTest, ChangeReportsWhetherThereWasOne) {
    const auto allow = [](BrowserSettings& settings) {
        settings.allow = {origin("https://a.example")};
    };
    EXPECT_TRUE(host::changeSettings(SettingsScope::kUser, allow));
    const auto written = fs::last_write_time(userFile());
    EXPECT_FALSE(host::changeSettings(SettingsScope::kUser, allow));
    EXPECT_EQ(written, fs::last_write_time(userFile()));
}

TEST_F(BrowserSettingsTest, ChangesAtTheSameTimeAreAllKept) {
    constexpr int kThreads = 4;
    constexpr int kChanges = 10;
    std::vector<std::thread> threads;
    for (int thread = 0; thread < kThreads; ++thread) {
        threads.emplace_back([thread] {
            for (int i = 0; i < kChanges; ++i) {
                host::changeSettings(SettingsScope::kUser, [&](BrowserSettings& settings) {
                    settings.allow.push_back(origin("https://a" + std::to_string(thread) + '-' +
                                                    std::to_string(i) + ".example"));
                });
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(kThreads * kChanges,
              static_cast<int>(host::readSettings(SettingsScope::kUser).allow.size()));
}

TEST_F(BrowserSettingsTest, ReaderNeverSeesAHalfWrittenFile) {
    BrowserSettings settings;
    for (int i = 0; i < 1000; ++i) {
        settings.allow.push_back(origin("https://a" + std::to_string(i) + ".example"));
    }
    host::writeSettings(SettingsScope::kUser, settings);
    std::atomic<bool> isDone = false;
    std::thread writer([&] {
        for (int i = 0; i < 20; ++i) {
            host::writeSettings(SettingsScope::kUser, settings);
        }
        isDone = true;
    });
    while (!isDone) {
        EXPECT_EQ(settings, host::readSettings(SettingsScope::kUser));
        // Windows does not replace a file that is open all the time.
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    writer.join();
}

}  // namespace
}  // namespace zr::test
