// Current directory, executable, environment variables, directories and local time.
#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <string>
#include <vector>

#include "platform/kernel.h"

namespace {

/// Creates an empty directory that is the current one while the object lives.
class FreshDirectory {
public:
    FreshDirectory()
        : m_before(std::filesystem::current_path()), m_path(m_before / "platform_test_directory") {
        std::filesystem::remove_all(m_path);
        std::filesystem::create_directory(m_path);
        std::filesystem::current_path(m_path);
    }
    ~FreshDirectory() {
        std::filesystem::current_path(m_before);
        std::filesystem::remove_all(m_path);
    }
    FreshDirectory(const FreshDirectory&) = delete;
    FreshDirectory& operator=(const FreshDirectory&) = delete;

    const std::filesystem::path& before() const { return m_before; }
    std::string path() const { return m_path.string(); }

private:
    std::filesystem::path m_before;
    std::filesystem::path m_path;
};

/// Calls a function that copies a text only if it fits, with sizes around the length of the text.
template <class Call>
void expectWholeOrNothing(const std::string& text, Call call) {
    const auto length = static_cast<DWORD>(text.size());
    std::vector<char> buffer(length + 8, '\x5a');
    const std::vector<char> untouched = buffer;
    for (const DWORD size : {DWORD{0}, DWORD{1}, length}) {
        EXPECT_EQ(length + 1, call(buffer.data(), size)) << size;
        EXPECT_EQ(untouched, buffer) << size;
    }
    EXPECT_EQ(length + 1, call(nullptr, 0));
    EXPECT_EQ(length, call(buffer.data(), length + 1));
    EXPECT_STREQ(text.c_str(), buffer.data());
    EXPECT_EQ('\x5a', buffer[length + 1]);
}

TEST(EnvironmentTest, GetCurrentDirectoryWithoutRoomWritesNothing) {
    FreshDirectory directory;
    expectWholeOrNothing(directory.path(), [](char* buffer, DWORD size) {
        return GetCurrentDirectoryA(size, buffer);
    });
}

TEST(EnvironmentTest, SetCurrentDirectoryChangesIt) {
    FreshDirectory directory;
    EXPECT_EQ(1, SetCurrentDirectoryA(".."));
    EXPECT_EQ(directory.before(), std::filesystem::current_path());
    EXPECT_EQ(1, SetCurrentDirectoryA(directory.path().c_str()));
    EXPECT_EQ(directory.path(), std::filesystem::current_path().string());
}

TEST(EnvironmentTest, SetCurrentDirectoryToAMissingOneFails) {
    FreshDirectory directory;
    EXPECT_EQ(0, SetCurrentDirectoryA("missing"));
    EXPECT_EQ(0, SetCurrentDirectoryA(""));
    EXPECT_EQ(0, SetCurrentDirectoryA(nullptr));
    EXPECT_EQ(directory.path(), std::filesystem::current_path().string());
}

TEST(EnvironmentTest, GetModuleFileNameReturnsTheExecutable) {
    char buffer[1024];
    std::memset(buffer, '\x5a', sizeof buffer);
    const DWORD length = GetModuleFileNameA(nullptr, buffer, sizeof buffer);
    ASSERT_GT(length, 0u);
    ASSERT_LT(length, sizeof buffer);
    EXPECT_EQ('\0', buffer[length]);
    const std::string path(buffer);
    EXPECT_EQ(length, path.size());
    EXPECT_EQ("platform_test", std::filesystem::path(path).stem().string());
    EXPECT_NE(std::string::npos, path.find(zr::kPathSeparator));
}

// Windows terminates a cut path, Wine does not: this tests only what both do.
TEST(EnvironmentTest, GetModuleFileNameWithoutRoomCutsThePath) {
    char whole[1024];
    const DWORD length = GetModuleFileNameA(nullptr, whole, sizeof whole);
    for (const DWORD size : {DWORD{5}, length}) {
        char buffer[1024];
        std::memset(buffer, '\x5a', sizeof buffer);
        EXPECT_EQ(size, GetModuleFileNameA(nullptr, buffer, size));
        EXPECT_EQ(0, std::memcmp(whole, buffer, size - 1));
        EXPECT_EQ('\x5a', buffer[size]);
    }
    char untouched = '\x5a';
    EXPECT_EQ(0u, GetModuleFileNameA(nullptr, &untouched, 0));
    EXPECT_EQ('\x5a', untouched);
}

TEST(EnvironmentTest, GetEnvironmentVariableWithoutRoomWritesNothing) {
    const char* value = std::getenv("PATH");
    ASSERT_NE(nullptr, value);
    expectWholeOrNothing(value, [](char* buffer, DWORD size) {
        return GetEnvironmentVariableA("PATH", buffer, size);
    });
}

TEST(EnvironmentTest, GetEnvironmentVariableOfAnUnknownNameReturnsZero) {
    char buffer[8];
    std::memset(buffer, '\x5a', sizeof buffer);
    EXPECT_EQ(0u, GetEnvironmentVariableA("ZRKEY_NO_SUCH_VARIABLE", buffer, sizeof buffer));
    EXPECT_EQ(0u, GetEnvironmentVariableA("", buffer, sizeof buffer));
    EXPECT_EQ(0u, GetEnvironmentVariableA(nullptr, buffer, sizeof buffer));
    EXPECT_EQ(0u, GetEnvironmentVariableA("PATH=", buffer, sizeof buffer));
    EXPECT_EQ('\x5a', buffer[0]);
}

TEST(EnvironmentTest, CreateDirectoryOfAnExistingOneFails) {
    FreshDirectory directory;
    EXPECT_EQ(1, CreateDirectoryA("new", nullptr));
    EXPECT_TRUE(std::filesystem::is_directory("new"));
    EXPECT_EQ(0, CreateDirectoryA("new", nullptr));
    EXPECT_EQ(1, CreateDirectoryA("new/inner/", nullptr));
    EXPECT_EQ(0, CreateDirectoryA("missing/inner", nullptr));
    EXPECT_EQ(0, CreateDirectoryA("", nullptr));
    EXPECT_EQ(0, CreateDirectoryA(nullptr, nullptr));
}

TEST(EnvironmentTest, GetLocalTimeReturnsTheTimeOfTheProcess) {
    // std::time reads a coarser clock, which may still show the second before.
    const auto now = [] {
        return std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
    };
    const std::time_t before = now();
    SYSTEMTIME time;
    std::memset(&time, 0x5a, sizeof time);
    GetLocalTime(&time);
    const std::time_t after = now();
    std::tm parts{};
    parts.tm_year = time.wYear - 1900;
    parts.tm_mon = time.wMonth - 1;
    parts.tm_mday = time.wDay;
    parts.tm_hour = time.wHour;
    parts.tm_min = time.wMinute;
    parts.tm_sec = time.wSecond;
    parts.tm_isdst = -1;
    const std::time_t given = std::mktime(&parts);
    EXPECT_LE(before, given);
    EXPECT_LE(given, after);
    EXPECT_EQ(parts.tm_wday, time.wDayOfWeek);
    EXPECT_LT(time.wMilliseconds, 1000);
}

}  // namespace
