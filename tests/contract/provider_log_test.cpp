// The log file of a provider: its path, its first lines, its contents.
#include <algorithm>
#include <filesystem>
#include <fstream>

#include "tests/support/console_capture.h"
#include "tests/support/fixtures/library.h"
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

TEST_F(ProviderLogTest, ProviderWithoutALogHomeWritesNothing) {
    makeProvider();
    EXPECT_TRUE(fs::is_empty(folder.home()));
    EXPECT_TRUE(fs::is_empty(folder.work()));
}

TEST_F(ProviderLogTest, ProviderWritesItsLogUnderTheLastTwoComponentsOfTheDirectory) {
    folder.enableLog();
    makeProvider();
    const auto files = findLogFiles(folder.home());
    ASSERT_EQ(1u, files.size());
    EXPECT_EQ(folder.home() / "log" / "level" / "work", files[0].parent_path());
    EXPECT_TRUE(hasShape(files[0].filename().string(), "TokenProvider_999999.log"));
}

TEST_F(ProviderLogTest, HomeWithATrailingSeparatorGivesTheSamePath) {
    fs::path home = folder.home();
    home += fs::path::preferred_separator;
    setEnvironment("ZRKEY_HOME_X64", home.string());
    makeProvider();
    ASSERT_EQ(1u, findLogFiles(folder.home() / "log" / "level" / "work").size());
}

TEST_F(ProviderLogTest, ProviderLogsCreationAndRelease) {
    folder.enableLog();
    makeProvider();
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

TEST_F(ProviderLogTest, FailedOperationsLogNoEndLine) {
    folder.enableLog();
    const ComRef<ITokenProvider> provider = makeProvider();
    provider->Load(Text("missing"));
    INT count = 0;
    provider->GetKeyCount(&count);
    void* key = nullptr;
    provider->OpenKey(0, &key);
    Text name;
    provider->GetName(name.receive());
    provider->GetKeySN(0, nullptr);
    auto lines = readLogLines(folder.home());
    lines.erase(lines.begin(), lines.begin() + 5);
    const std::vector<std::string> expected = {
        "[Load] Begin",  "[GetKeyCount] Begin", "[OpenKey] Begin", "[GetName] Begin",
        "[GetName] End", "[GetKeySN] Begin",    "[GetKeySN] End",
    };
    EXPECT_EQ(expected, lines);
}

TEST_F(ProviderLogTest, LinesBeginWithTheTimeAndTheSourceLine) {
    folder.enableLog();
    makeProvider();
    const std::string text = readText(findLogFiles(folder.home()).at(0));
    const std::string stamp = text.substr(0, text.find('E'));
    EXPECT_TRUE(hasShape(stamp, "[99:99:99.999] [")) << stamp;
    // readLogLines removes the time only when a line number follows the name.
    EXPECT_EQ("[EnableLog] ============ this is new log file ============",
              readLogLines(folder.home()).at(0));
}

TEST_F(ProviderLogTest, UnusableHomeLeavesLoggingOff) {
    const fs::path file = folder.root() / "file";
    std::ofstream(file.string()) << "no folder";
    for (const std::string& home :
         {file.string(), std::string(300, 'h'), folder.home().string() + "/none/none",
          std::string(259, 'h'), std::string(40000, 'h')}) {
        setEnvironment("ZRKEY_HOME_X64", home.substr(0, 30000));
        makeProvider();
    }
    EXPECT_TRUE(fs::is_empty(folder.home()));
    EXPECT_TRUE(fs::is_empty(folder.work()));
}

TEST_F(ProviderLogTest, PathThatIsTooLongLeavesLoggingOff) {
    fs::create_directory(std::string(100, 'd'));
    fs::current_path(std::string(100, 'd'));
    std::string home = folder.home().string();
    while (home.size() < 200) {
        home += '/' + std::string(std::min<std::size_t>(50, 200 - home.size()), 'h');
    }
    fs::create_directories(home);
    setEnvironment("ZRKEY_HOME_X64", home);
    makeProvider();
    EXPECT_TRUE(findLogFiles(folder.home()).empty());
}

TEST_F(ProviderLogTest, RemovedLogFileIsCreatedAgain) {
    folder.enableLog();
    ComRef<ITokenProvider> provider = makeProvider();
    fs::remove(findLogFiles(folder.home()).at(0));
    provider->AddRef();
    EXPECT_EQ(std::vector<std::string>{"[AddRef] [TokenProvider::AddRef] count=2"},
              readLogLines(folder.home()));
    EXPECT_EQ(1u, provider->Release());
}

TEST_F(ProviderLogTest, ExistingLogFoldersAreUsed) {
    const fs::path directory = folder.home() / "log" / "level" / "work";
    fs::create_directories(directory);
    std::ofstream((directory / "kept").string()) << "text";
    folder.enableLog();
    makeProvider();
    EXPECT_EQ(1u, findLogFiles(directory).size());
    EXPECT_EQ("text", readText(directory / "kept"));
}

TEST_F(ProviderLogTest, ProvidersCreatedInOneSecondAppendToOneFile) {
    folder.enableLog();
    makeProvider();
    const std::size_t lines = readLogLines(folder.home()).size();
    // The second is part of the file name: try again when it changed between the two providers.
    for (int attempt = 0; attempt < 10; ++attempt) {
        fs::remove_all(folder.home() / "log");
        makeProvider();
        makeProvider();
        if (findLogFiles(folder.home()).size() == 1) {
            EXPECT_EQ(2 * lines, readLogLines(folder.home()).size());
            return;
        }
    }
    FAIL() << "no two providers were made within one second";
}

TEST_F(ProviderLogTest, LogPathLongerThan259BytesLeavesLoggingOff) {
    // After the home: "log", the two folders of the directory, and "TokenProvider_hhmmss.log".
    const std::size_t longestHome = 259 - 40;
    ASSERT_LT(folder.home().string().size(), longestHome - 1);
    for (std::size_t length = longestHome - 1; length < 262; ++length) {
        std::string home = folder.home().string();
        while (home.size() < length) {
            home += length - home.size() == 1 ? "/" : "/.";
        }
        const bool isSeparated = home.back() == '/';
        setEnvironment("ZRKEY_HOME_X64", home);
        makeProvider();
        // On Windows only a backslash is a separator at the end.
        const std::size_t total =
            length + 40 - (isSeparated && fs::path::preferred_separator == '/' ? 1 : 0);
        EXPECT_EQ(total <= 259 ? 1u : 0u, findLogFiles(folder.home()).size()) << length;
        fs::remove_all(folder.home() / "log");
    }
}

}  // namespace
}  // namespace zr::test
