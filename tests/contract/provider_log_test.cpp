// The log file of a provider: where it lies, what it begins with, what it tells.
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <regex>

#include "tests/contract/library.h"
#include "tests/support/console_capture.h"
#include "tests/support/hresult.h"
#include "tests/support/log_file.h"
#include "tests/support/temp_dir.h"

namespace zr::test {
namespace {

namespace fs = std::filesystem;

const std::string kTips =
    "[EnableLog] Tips: VARIANT_TRUE can not is 0xffff\xA3\xAC"
    "must is ((HRESULT)-1) can be used by 64-bits platform, do you fix it???";

class ProviderLogTest : public testing::Test {
protected:
    TempDir folder;
};

TEST_F(ProviderLogTest, NothingIsWrittenWithoutALogHome) {
    makeProvider()->Release();
    EXPECT_TRUE(fs::is_empty(folder.home()));
    EXPECT_TRUE(fs::is_empty(folder.work()));
}

TEST_F(ProviderLogTest, TheFileLiesUnderTheLastTwoComponentsOfTheDirectory) {
    folder.enableLog();
    makeProvider()->Release();
    const auto files = findLogFiles(folder.home());
    ASSERT_EQ(1u, files.size());
    EXPECT_EQ(folder.home() / "log" / "level" / "work", files[0].parent_path());
    EXPECT_TRUE(
        std::regex_match(files[0].filename().string(), std::regex("TokenProvider_[0-9]{6}\\.log")));
}

TEST_F(ProviderLogTest, ATrailingSeparatorOfTheHomeMakesNoDifference) {
    fs::path home = folder.home();
    home += fs::path::preferred_separator;
    setEnvironment("ZRKEY_HOME_X64", home.string());
    makeProvider()->Release();
    ASSERT_EQ(1u, findLogFiles(folder.home() / "log" / "level" / "work").size());
}

TEST_F(ProviderLogTest, ALifeIsToldLineByLine) {
    folder.enableLog();
    makeProvider()->Release();
    const std::vector<std::string> expected = {
        "[EnableLog] ============ this is new log file ============",
        kTips,
        "[TokenProvider_pkcs11] Begin",
        "[TokenProvider_pkcs11] End",
        "[AddRef] [TokenProvider::AddRef] count=1",
        "[Release] [TokenProvider::Release] call...",
        "[Unload] Begin",
        "[Unload] End",
        "[~TokenProvider_pkcs11] Begin",
        "[~TokenProvider_pkcs11] End",
        "[~TokenProvider] Begin",
        "[~TokenProvider] End",
        "[Release] [TokenProvider::Release] count=0",
    };
    EXPECT_EQ(expected, readLogLines(folder.home()));
}

TEST_F(ProviderLogTest, FailuresHaveNoEndLine) {
    ITokenProvider* provider = nullptr;
    folder.enableLog();
    provider = makeProvider();
    provider->Load(Text("missing"));
    INT count = 0;
    provider->GetKeyCount(&count);
    void* key = nullptr;
    provider->OpenKey(0, &key);
    BSTR name = nullptr;
    provider->GetName(&name);
    SysFreeString(name);
    provider->GetKeySN(0, nullptr);
    auto lines = readLogLines(folder.home());
    lines.erase(lines.begin(), lines.begin() + 5);
    const std::vector<std::string> expected = {
        "[Load] Begin",  "[GetKeyCount] Begin", "[OpenKey] Begin", "[GetName] Begin",
        "[GetName] End", "[GetKeySN] Begin",    "[GetKeySN] End",
    };
    EXPECT_EQ(expected, lines);
    provider->Release();
}

TEST_F(ProviderLogTest, LinesBeginWithTheTimeAndNameTheirSourceLine) {
    folder.enableLog();
    makeProvider()->Release();
    const std::string text = readText(findLogFiles(folder.home()).at(0));
    const std::string first = text.substr(0, text.find('\n'));
    EXPECT_TRUE(
        std::regex_match(first, std::regex(R"(\[\d\d:\d\d:\d\d\.\d\d\d\] \[EnableLog:\d+\] )"
                                           "============ this is new log file ============")))
        << first;
}

TEST_F(ProviderLogTest, HomesThatCannotBeUsedLeaveLoggingOff) {
    const fs::path file = folder.root() / "file";
    std::ofstream(file.string()) << "no folder";
    for (const std::string& home :
         {file.string(), std::string(300, 'h'), folder.home().string() + "/none/none",
          std::string(259, 'h'), std::string(40000, 'h')}) {
        setEnvironment("ZRKEY_HOME_X64", home.substr(0, 30000));
        makeProvider()->Release();
    }
    EXPECT_TRUE(fs::is_empty(folder.home()));
    EXPECT_TRUE(fs::is_empty(folder.work()));
}

TEST_F(ProviderLogTest, ADirectoryThatDoesNotFitIsNotLeftOut) {
    fs::create_directory(std::string(100, 'd'));
    fs::current_path(std::string(100, 'd'));
    std::string home = folder.home().string();
    while (home.size() < 200) {
        home += '/' + std::string(std::min<std::size_t>(50, 200 - home.size()), 'h');
    }
    fs::create_directories(home);
    setEnvironment("ZRKEY_HOME_X64", home);
    makeProvider()->Release();
    EXPECT_TRUE(findLogFiles(folder.home()).empty());
}

TEST_F(ProviderLogTest, TheFileMayBeRemovedBetweenLines) {
    folder.enableLog();
    ITokenProvider* provider = makeProvider();
    fs::remove(findLogFiles(folder.home()).at(0));
    provider->AddRef();
    EXPECT_EQ(std::vector<std::string>{"[AddRef] [TokenProvider::AddRef] count=2"},
              readLogLines(folder.home()));
    provider->Release();
    provider->Release();
}

TEST_F(ProviderLogTest, APathOf259BytesIsTheLongest) {
    // Behind the home: "log", the two folders of the directory, and "TokenProvider_hhmmss.log".
    const std::size_t longestHome = 259 - 40;
    ASSERT_LT(folder.home().string().size(), longestHome - 1);
    for (std::size_t length = longestHome - 1; length < 262; ++length) {
        std::string home = folder.home().string();
        while (home.size() < length) {
            home += length - home.size() == 1 ? "/" : "/.";
        }
        const bool isSeparated = home.back() == '/';
        setEnvironment("ZRKEY_HOME_X64", home);
        makeProvider()->Release();
        // On Windows only a backslash counts as a separator at the end.
        const std::size_t whole =
            length + 40 - (isSeparated && fs::path::preferred_separator == '/' ? 1 : 0);
        EXPECT_EQ(whole <= 259 ? 1u : 0u, findLogFiles(folder.home()).size()) << length;
        fs::remove_all(folder.home() / "log");
    }
}

}  // namespace
}  // namespace zr::test
