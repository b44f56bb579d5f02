// Paths, module loading and hexadecimal text.
#include "runtime/path_utils.h"

#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <limits>
#include <string>

#include "tests/support/temp_dir.h"

namespace zr::test {
namespace {

std::string resolve(const char* path) {
    char out[300] = "untouched";
    EXPECT_EQ(0, ZGetAbsolutionPath(path, out, sizeof out));
    return out;
}

std::string normalised(std::string path) {
    ZConvertLinuxPath(path.data());
    return path;
}

TEST(PathUtilsTest, ConvertLinuxPathReplacesBackslashes) {
    EXPECT_EQ("a/b/c", normalised("a\\b\\c"));
    EXPECT_EQ("", normalised(""));
    ZConvertLinuxPath(nullptr);
}

TEST(PathUtilsTest, GetAbsolutionPathResolvesDots) {
    EXPECT_EQ("E:/a/c/d.dll", resolve("E:/a/b/../c/./d.dll"));
    EXPECT_EQ("x", resolve("E:\\a\\..\\..\\x"));
    EXPECT_EQ("E:/a/b/..", resolve("E:/a/b/.."));
    EXPECT_EQ("b", resolve("a/../b"));
    EXPECT_EQ("/x/y", resolve("/x/./y"));
    EXPECT_EQ("x", resolve("/../x"));
    EXPECT_EQ("a//b", resolve("a//b"));
    EXPECT_EQ("a/b", resolve("a/x//../../b"));
    EXPECT_EQ("...", resolve("a/../...").substr(0, 3));
}

TEST(PathUtilsTest, GetAbsolutionPathWithALeadingDotStartsAtTheCurrentDirectory) {
    const TempDir folder;
    const std::string work = normalised(std::filesystem::current_path().string());
    EXPECT_EQ(work + "/lib/p11.so", resolve("./lib/p11.so"));
    EXPECT_EQ(work + "/.x", resolve(".x"));
    EXPECT_EQ(work.substr(0, work.rfind('/')) + "/y", resolve("../y"));
}

TEST(PathUtilsTest, GetAbsolutionPathInTheRootAddsNoSecondSeparator) {
    const TempDir folder;
    std::filesystem::current_path(folder.root().root_path());
    EXPECT_EQ(normalised(folder.root().root_path().string()) + "x", resolve("./x"));
}

TEST(PathUtilsTest, GetAbsolutionPathWithoutRoomWritesNothing) {
    char out[8] = "xyz";
    EXPECT_EQ(0, ZGetAbsolutionPath("/a/b", out, 4));
    EXPECT_STREQ("xyz", out);
    EXPECT_EQ(0, ZGetAbsolutionPath("/a/b", out, 5));
    EXPECT_STREQ("/a/b", out);
    EXPECT_EQ(0, ZGetAbsolutionPath("/a/b", nullptr, 100));
    EXPECT_EQ(0, ZGetAbsolutionPath("/a/b", out, -1));
    EXPECT_EQ(0, ZGetAbsolutionPath(nullptr, out, 8));
    EXPECT_EQ(0, ZGetAbsolutionPath("", out, 8));
    EXPECT_STREQ("/a/b", out);
}

TEST(PathUtilsTest, GetAbsolutionPathInPlaceGivesTheSameResult) {
    char path[32] = "/a/b/../c";
    EXPECT_EQ(0, ZGetAbsolutionPath(path, path, sizeof path));
    EXPECT_STREQ("/a/c", path);
    const std::string longPath = "/" + std::string(100000, 'a') + "/../b";
    EXPECT_EQ("/b", resolve(longPath.c_str()));
}

TEST(PathUtilsTest, CurrentPathIsReadAndSet) {
    const TempDir folder;
    char path[300] = {};
    const int length = ZGetCurrentPath(path, sizeof path);
    EXPECT_EQ(normalised(folder.work().string()), path);
    EXPECT_EQ(std::strlen(path), static_cast<std::size_t>(length));
    EXPECT_EQ(1, ZSetCurrentPath(".."));
    EXPECT_EQ(0, ZSetCurrentPath("missing"));
    EXPECT_EQ(0, ZSetCurrentPath(nullptr));
    ZGetCurrentPath(path, sizeof path);
    EXPECT_EQ(normalised(folder.work().parent_path().string()), path);
    std::memset(path, 'x', sizeof path);
    EXPECT_GT(ZGetCurrentPath(path, 2), 2);
}

TEST(PathUtilsTest, GetModulePathReturnsTheFolderOfTheExecutable) {
    char file[300] = {};
    char folder[300] = {};
    EXPECT_GT(ZGetModuleFilePath(file, sizeof file), 0);
    const std::string name = file;
    EXPECT_EQ(name.npos, name.find('\\'));
    const std::string expected = name.substr(0, name.rfind('/') + 1);
    EXPECT_EQ(static_cast<int>(expected.size()), ZGetModulePath(folder, sizeof folder));
    EXPECT_EQ(expected, folder);
    char small[4];
    EXPECT_EQ(static_cast<int>(expected.size()), ZGetModulePath(small, 4));
    EXPECT_EQ(expected.substr(0, 3), small);
    EXPECT_EQ(static_cast<int>(expected.size()), ZGetModulePath(small, 1));
    EXPECT_STREQ("", small);
    EXPECT_EQ(static_cast<int>(expected.size()), ZGetModulePath(nullptr, 0));
}

TEST(PathUtilsTest, GetModuleFilePathReturnsTheLengthThatTheSystemReports) {
    char expected[300] = {};
    const DWORD length = GetModuleFileNameA(nullptr, expected, sizeof expected);
    char file[300] = {};
    EXPECT_EQ(static_cast<int>(length), ZGetModuleFilePath(file, sizeof file));
    EXPECT_EQ(length, std::strlen(file));
    EXPECT_EQ(normalised(expected), file);

    char small[6] = {'x', 'x', 'x', 'x', 'x', 'x'};
    const DWORD cut = GetModuleFileNameA(nullptr, expected, 5);
    EXPECT_EQ(static_cast<int>(cut), ZGetModuleFilePath(small, 5));
    EXPECT_EQ(std::string(file, 4), small);
    EXPECT_EQ('x', small[5]);
}

TEST(PathUtilsTest, LoadLibraryByNameFindsItsFunctions) {
    EXPECT_EQ(nullptr, ZLoadLibrary(nullptr));
    EXPECT_EQ(nullptr, ZLoadLibrary(""));
    EXPECT_EQ(nullptr, ZLoadLibraryEx(nullptr));
    EXPECT_EQ(nullptr, ZLoadLibraryEx(""));
    EXPECT_EQ(nullptr, ZLoadLibrary("missing library"));
    EXPECT_EQ(nullptr, ZLoadLibraryEx("missing library"));
    EXPECT_EQ(0, ZFreeLibrary(nullptr));
    for (const auto load : {ZLoadLibrary, ZLoadLibraryEx}) {
        const HMODULE module = load("OleAut32.dll");
        ASSERT_TRUE(module);
        EXPECT_NE(nullptr, ZGetProcAddress(module, "SysAllocString"));
        EXPECT_EQ(nullptr, ZGetProcAddress(module, "NoSuchFunction"));
        EXPECT_EQ(nullptr, ZGetProcAddress(module, ""));
        EXPECT_EQ(nullptr, ZGetProcAddress(module, nullptr));
        EXPECT_NE(0, ZFreeLibrary(module));
    }
    EXPECT_EQ(nullptr, ZGetProcAddress(nullptr, "SysAllocString"));
}

TEST(PathUtilsTest, HexToDecReadsOtherCharactersAsZero) {
    EXPECT_EQ(0, ZHexToDec('0'));
    EXPECT_EQ(9, ZHexToDec('9'));
    EXPECT_EQ(10, ZHexToDec('a'));
    EXPECT_EQ(15, ZHexToDec('F'));
    for (const char c : {'g', 'G', ' ', '/', ':', '@', '`', '\xff'}) {
        EXPECT_EQ(0, ZHexToDec(c));
    }
    EXPECT_EQ(16u, ZHexStringToInt("1g", 2));
    EXPECT_EQ(15u, ZHexStringToInt("ff", 1));
    EXPECT_EQ(0x23456789u, ZHexStringToInt("123456789", 9));
    EXPECT_EQ(0u, ZHexStringToInt(nullptr, 2));
    EXPECT_EQ(0u, ZHexStringToInt("ff", 0));
    EXPECT_EQ(0u, ZHexStringToInt("ff", -1));
    EXPECT_EQ(0u, ZHexStringToInt("ff", std::numeric_limits<int>::min()));
}

TEST(PathUtilsTest, CreateGuidReadsTheFormWithoutBracesOnly) {
    const GUID expected = {
        0x6B29FC40, 0xCA47, 0x1067, {0xB3, 0x1D, 0x00, 0xDD, 0x01, 0x06, 0x62, 0xDA}};
    EXPECT_TRUE(expected == ZCreateGUIDFromString("6B29FC40-CA47-1067-B31D-00DD010662DA"));
    const GUID counted = {
        0x01234567, 0x89AB, 0xCDEF, {0x10, 0x32, 0x54, 0x76, 0x98, 0xBA, 0xDC, 0xFE}};
    EXPECT_TRUE(counted == ZCreateGUIDFromString("01234567-89AB-CDEF-1032-547698BADCFE"));
    EXPECT_TRUE(expected == ZCreateGUIDFromString("6b29fc40-ca47-1067-b31d-00dd010662da"));
    const GUID zero = {};
    for (const char* text :
         {"{6B29FC40-CA47-1067-B31D-00DD010662DA}", "6B29FC40-CA47-1067-B31D-00DD010662D",
          "6B29FC40CA47--1067-B31D-00DD010662DA", "6B29FC40xCA47-1067-B31D-00DD010662DA",
          "6B29FC40-CA47x1067-B31D-00DD010662DA", "6B29FC40-CA47-1067xB31D-00DD010662DA",
          "6B29FC40-CA47-1067-B31Dx00DD010662DA", ""}) {
        EXPECT_TRUE(zero == ZCreateGUIDFromString(text)) << text;
    }
    EXPECT_TRUE(zero == ZCreateGUIDFromString(nullptr));
    EXPECT_EQ(0x0B29FC40u, ZCreateGUIDFromString("xB29FC40-CA47-1067-B31D-00DD010662DA").Data1);
}

TEST(PathUtilsTest, GetModuleFilePathWithoutABufferReturnsZero) {
    char file[1] = {'x'};
    EXPECT_EQ(0, ZGetModuleFilePath(nullptr, 300));
    EXPECT_EQ(0, ZGetModuleFilePath(file, 0));
    EXPECT_EQ('x', file[0]);
}

}  // namespace
}  // namespace zr::test
