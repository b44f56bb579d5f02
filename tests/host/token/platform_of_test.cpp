// The platform in the header of a file.
#include "host/token/platform_of.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

#include "host/system/shared_library.h"

namespace zr::test {
namespace {

using host::platformOf;

/// @param order  1: the least significant byte comes first; 2: the most significant one.
std::string elf(char fileClass, char order, char first, char second) {
    std::string header(
        "\x7F"
        "ELF",
        4);
    header += {fileClass, order};
    header.resize(18, '\0');
    header += {first, second};
    return header;
}

std::string pe(char first, char second) {
    std::string header("MZ", 2);
    header.resize(0x3C, '\0');
    header += {'\x40', '\0', '\0', '\0'};
    header += std::string("PE\0\0", 4);
    header += {first, second};
    return header;
}

TEST(PlatformOfTest, ElfFilesAreNamed) {
    EXPECT_EQ("Linux x86-64", platformOf(elf(2, 1, 62, 0)));
    EXPECT_EQ("Linux x86-64 with 32-bit pointers", platformOf(elf(1, 1, 62, 0)));
    EXPECT_EQ("Linux x86", platformOf(elf(1, 1, 3, 0)));
    EXPECT_EQ("Linux ARM64", platformOf(elf(2, 1, '\xB7', 0)));
    EXPECT_EQ("Linux PPC64", platformOf(elf(2, 2, 0, 21)));
    EXPECT_EQ("Linux processor 4660", platformOf(elf(2, 1, 0x34, 0x12)));
}

TEST(PlatformOfTest, WindowsFilesAreNamed) {
    EXPECT_EQ("Windows x86-64", platformOf(pe('\x64', '\x86')));
    EXPECT_EQ("Windows x86", platformOf(pe('\x4C', '\x01')));
    EXPECT_EQ("Windows ARM64", platformOf(pe('\x64', '\xAA')));
}

TEST(PlatformOfTest, OtherBytesHaveNoPlatform) {
    EXPECT_EQ("", platformOf(""));
    EXPECT_EQ("", platformOf("<driver/>"));
    EXPECT_EQ("", platformOf("MZ"));
    EXPECT_EQ("", platformOf("MZ" + std::string(0x3E, '\xFF')));
    EXPECT_EQ("macOS", platformOf("\xCF\xFA\xED\xFE"));
}

TEST(PlatformOfTest, ModuleOfTheBuildIsForOurPlatform) {
    std::ifstream file(ZRKEY_DEPENDENT_MODULE, std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(file), {}};
    EXPECT_EQ(host::ownPlatform(),
              platformOf(std::string_view(bytes).substr(0, host::kHeaderSize)));
}

}  // namespace
}  // namespace zr::test
