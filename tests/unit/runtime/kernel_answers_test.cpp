// The runtime with kernel services that this test replaces: failures and paths that a system does
// not return on demand. For this test the runtime's sources are compiled again, with other names for
// these services; see CMakeLists.txt.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <deque>
#include <string>

#include "runtime/path_utils.h"
#include "runtime/string_convert.h"
#include "tests/support/console_capture.h"

namespace {

std::deque<int> s_conversions;  ///< what the next conversions return; 0 when there are no more
std::string s_executable;       ///< the path of the executable
DWORD s_executableRoom = 0;     ///< the size of the buffer that was given for it

}  // namespace

int MultiByteToWideChar(UINT, DWORD, LPCSTR, int, WCHAR*, int) {
    if (s_conversions.empty()) {
        return 0;
    }
    const int units = s_conversions.front();
    s_conversions.pop_front();
    return units;
}

/// As the system: a path that does not fit is cut and terminated.
DWORD GetModuleFileNameA(HMODULE, LPSTR buffer, DWORD size) {
    s_executableRoom = size;
    const auto length = static_cast<DWORD>(s_executable.size());
    const DWORD copied = std::min(length, size - 1);
    std::memcpy(buffer, s_executable.data(), copied);
    buffer[copied] = 0;
    return length < size ? length : size;
}

namespace zr::test {
namespace {

using Allocate = BSTR (*)(const char* utf8);

/// Makes a string and expects none, and a text on each of the two streams.
void expectNoString(Allocate allocate, const std::string& out, const std::string& error) {
    ConsoleCapture console;
    EXPECT_EQ(nullptr, allocate("abc"));
    const ConsoleCapture::Text text = console.stop();
    EXPECT_EQ(out, text.out);
    EXPECT_EQ(error, text.error);
}

TEST(KernelAnswersTest, FailedConversionIsReportedOnStandardError) {
    const std::string line = "Error: ZConvUTF8ToUnicode() return 0\n";
    expectNoString(ZSysAllocUTF8String, "", line);
    expectNoString([](const char* utf8) { return ZSysAllocUTF8StringLen(utf8, 2); }, "", line);
}

TEST(KernelAnswersTest, UnderscoreFunctionReportsAFailedConversionUnderItsOwnName) {
    const std::string line = "Error: _ZConvUTF8ToUnicode() return 0\n";
    expectNoString(_ZSysAllocUTF8String, "_ZSysAllocUTF8String call...[abc]\n", line);
    expectNoString([](const char* utf8) { return _ZSysAllocUTF8StringLen(utf8, 2); },
                   "_ZSysAllocUTF8String call...[ab]\n", line);
}

TEST(KernelAnswersTest, StringIsMadeByOneConversion) {
    for (const std::size_t length : {3, 1000}) {
        s_conversions = {static_cast<int>(length) + 1, 0};
        const std::string utf8(length, 'a');
        const BSTR made = ZSysAllocUTF8String(utf8.c_str());
        EXPECT_NE(nullptr, made);
        EXPECT_EQ(1u, s_conversions.size());
        SysFreeString(made);
    }
    s_conversions.clear();
}

/// The path of an executable with so many bytes, and its directory.
std::string executableOf(std::size_t bytes, std::string* directory) {
    const std::string separator(1, zr::kPathSeparator);
    const std::string root = zr::kPathSeparator == '/' ? "/" : "C:\\";
    const std::string name = "program";
    const std::string folder(bytes - root.size() - separator.size() - name.size(), 'd');
    *directory = root + folder + separator;
    std::replace(directory->begin(), directory->end(), '\\', '/');
    return root + folder + separator + name;
}

TEST(KernelAnswersTest, ModulePathOf299BytesFits) {
    std::string directory;
    s_executable = executableOf(299, &directory);
    char path[400] = "";
    EXPECT_EQ(static_cast<int>(directory.size()), ZGetModulePath(path, sizeof path));
    EXPECT_EQ(directory, path);
    EXPECT_EQ(300u, s_executableRoom);
}

TEST(KernelAnswersTest, ModulePathOf300BytesIsRefused) {
    std::string directory;
    s_executable = executableOf(300, &directory);
    char path[400] = "untouched";
    EXPECT_EQ(0, ZGetModulePath(path, sizeof path));
    EXPECT_STREQ("untouched", path);
}

}  // namespace
}  // namespace zr::test
