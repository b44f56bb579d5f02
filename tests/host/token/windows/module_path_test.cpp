// Paths outside ASCII. On Windows only: the library passes them on in UTF-8, which the system reads
// in the code page of the process.
#include <windows.h>

#include "host/system/system.h"
#include "tests/host/command_test.h"

namespace zr::test {
namespace {

constexpr const char* kName = "schl\xC3\xBCssel.dll";
constexpr const wchar_t* kWideName = L"schl\u00FCssel.dll";
constexpr const char* kProblem =
    "contains characters outside ASCII, which this version of Windows reads differently";

using ModulePathTest = CommandTest;

TEST_F(ModulePathTest, PathOutsideAsciiNeedsTheCodePageUtf8) {
    const std::string problem = GetACP() == CP_UTF8 ? "" : kProblem;
    for (const host::PathUse use : {host::PathUse::kFolder, host::PathUse::kModule}) {
        EXPECT_EQ(problem, host::pathProblem(kName, use));
        EXPECT_EQ("", host::pathProblem("C:\\Program Files (x86)/$LIB/module.dll", use));
    }
}

TEST_F(ModulePathTest, ModuleOutsideAsciiIsRefusedWithoutTheCodePageUtf8) {
    if (GetACP() == CP_UTF8) {
        GTEST_SKIP() << "the code page of this system is UTF-8";
    }
    const CommandResult result = zrkey({"list", "--module", kName});
    EXPECT_EQ(3, result.exitCode);
    std::string line = kName;
    line.append("\" ").append(kProblem);
    line.append("; rename it, or load it through a link with another path\n");
    EXPECT_NE(std::string::npos, result.errors.find(line)) << result.errors;
}

/// The program itself.
class ProgramPathTest : public ChildCommandTest {
protected:
    void TearDown() override {
        SetEnvironmentVariableW(L"ZRKEY_MODULE", nullptr);
        ChildCommandTest::TearDown();
    }
};

TEST_F(ProgramPathTest, ManifestAsksForTheCodePageUtf8) {
    const std::wstring program = std::filesystem::path(ZRKEY_COMMAND).wstring();
    const HMODULE command = LoadLibraryExW(program.c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE);
    ASSERT_TRUE(command);
    const HRSRC resource = FindResourceW(command, MAKEINTRESOURCEW(1), MAKEINTRESOURCEW(24));
    ASSERT_TRUE(resource);
    const std::string manifest(
        static_cast<const char*>(LockResource(LoadResource(command, resource))),
        SizeofResource(command, resource));
    EXPECT_NE(std::string::npos, manifest.find(">UTF-8</activeCodePage>"));
    FreeLibrary(command);
}

TEST_F(ProgramPathTest, ProgramDoesNotRefuseAModuleOutsideAscii) {
    writeFile("config.xml", "<driver/>");
    // Not an argument: the tests run in a locale that has no such character.
    SetEnvironmentVariableW(L"ZRKEY_MODULE", kWideName);
    const CommandResult result = zrkey({"list"});
    EXPECT_EQ(3, result.exitCode);
    EXPECT_NE(std::string::npos, result.errors.find("No such file or directory; check --module"))
        << result.errors;
}

}  // namespace
}  // namespace zr::test
