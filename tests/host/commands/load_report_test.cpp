// The report of a module that does not load, to the last character: its cause, found in the module
// first and then in the configuration.
#include "host/system/shared_library.h"
#include "tests/host/command_test.h"

namespace fs = std::filesystem;

namespace zr::test {
namespace {

class LoadReportTest : public CommandTest {
protected:
    /// The working folder as messages show it.
    static std::string here() { return fs::current_path().generic_string(); }
    static void expectCause(const std::string& path, const std::string& cause) {
        expectFailure({"list", "--module", path}, 3, "load the module \"" + path + "\": " + cause);
    }
    void expectCause(const std::string& cause) const { expectCause(module.path(), cause); }
    /// The first bytes of an ELF file.
    static std::string elfHeader(char fileClass, char machine) {
        std::string header(
            "\x7F"
            "ELF\0\1\1\0\0\0\0\0\0\0\0\0\3\0\0\0",
            20);
        header[4] = fileClass;
        header[18] = machine;
        return header;
    }
    /// Expects the system's own text as the cause.
    static void expectSystemText(const std::string& path) {
        const std::string text = host::SharedLibrary(fs::absolute(path).generic_string()).problem();
        EXPECT_NE("", text);
        expectCause(path,
                    text +
                        "; check that the module is whole and that the libraries it needs are "
                        "installed");
    }
};

constexpr const char* kNameAModule = "; name a PKCS #11 module with --module";
constexpr const char* kCheckSettings =
    "; check the module's own settings, and whether its service runs";

TEST_F(LoadReportTest, MissingFileIsNamed) {
    expectCause("missing.so", "No such file or directory; check --module");
}

TEST_F(LoadReportTest, FolderIsNamed) {
    fs::create_directory("folder");
    expectCause("folder", "it is a folder; name the file of the module with --module");
}

TEST_F(LoadReportTest, FileForAnotherPlatformIsNamed) {
    writeFile("other.so", elfHeader(1, 3));
    const std::string own(host::ownPlatform());
    expectCause("other.so", "it is built for Linux x86, and this program for " + own +
                                "; name the module for " + own + " with --module");
}

TEST_F(LoadReportTest, FileThatIsNoLibraryShowsTheSystemsText) {
    expectSystemText("config.xml");
}

TEST_F(LoadReportTest, MissingDependencyShowsTheSystemsText) {
    fs::copy_file(ZRKEY_DEPENDENT_MODULE, "dependent.so");
    expectSystemText("dependent.so");
}

TEST_F(LoadReportTest, LibraryWithoutAFunctionListIsNamed) {
    expectCause(module.noListPath(),
                std::string("it has no function C_GetFunctionList").append(kNameAModule));
}

TEST_F(LoadReportTest, FailingFunctionListIsNamed) {
    module->settings().functionListResult = CKR_HOST_MEMORY;
    expectCause(std::string("its C_GetFunctionList returned CKR_HOST_MEMORY (0x00000002)")
                    .append(kNameAModule));
    module->settings().functionListResult = CKR_OK;
    module->settings().functionListIsNull = true;
    expectCause(std::string("its C_GetFunctionList returned no functions").append(kNameAModule));
    EXPECT_EQ(0u, module.count("C_Initialize"));
}

TEST_F(LoadReportTest, FailingStartIsNamedWithItsResult) {
    module->fail("C_Initialize", 0, CKR_GENERAL_ERROR);
    // The configuration is checked after the module.
    writeFile("config.xml", "<other/>");
    expectCause(std::string("its C_Initialize returned CKR_GENERAL_ERROR (0x00000005)")
                    .append(kCheckSettings));
    // Once by the library, once for the result.
    EXPECT_EQ(2u, module.count("C_Initialize"));
    EXPECT_EQ(0u, module.count("C_Finalize"));
}

TEST_F(LoadReportTest, ResultWithoutANameIsShownByItsNumber) {
    module->fail("C_Initialize", 0, 0x80000001);
    expectCause(std::string("its C_Initialize returned an error of its maker's (0x80000001)")
                    .append(kCheckSettings));
    module->reset();
    module->fail("C_Initialize", 0, 0x7777);
    expectCause(std::string("its C_Initialize returned an unexpected error (0x00007777)")
                    .append(kCheckSettings));
}

TEST_F(LoadReportTest, MissingStartIsNamed) {
    module->removeEntry(0);
    expectCause(std::string("its C_Initialize returned CKR_FUNCTION_NOT_SUPPORTED (0x00000054)")
                    .append(kCheckSettings));
}

TEST_F(LoadReportTest, StartThatSucceedsTheSecondTimeIsFinalised) {
    module->fail("C_Initialize", 1, CKR_GENERAL_ERROR);
    expectCause("the module started only at the second try; try again");
    EXPECT_EQ(2u, module.count("C_Initialize"));
    EXPECT_EQ(1u, module.count("C_Finalize"));
}

TEST_F(LoadReportTest, InvalidConfigurationIsNamed) {
    writeFile("config.xml", "<other/>");
    const std::string cause = "the module was loaded, but config.xml in \"" + here() +
                              "\" is not valid; it needs a <driver> element, and lists shorter "
                              "than 500 bytes";
    expectCause(cause);
    EXPECT_EQ(1u, module.count("C_Initialize"));
    // Also when the module is started but cannot list its readers.
    module->fail("C_GetSlotList", 0, CKR_GENERAL_ERROR);
    module->fail("C_Initialize", 2, CKR_CRYPTOKI_ALREADY_INITIALIZED);
    expectCause(cause);
}

TEST_F(LoadReportTest, OverlongPathToTheModuleIsNamed) {
    // The library's limit is 259 bytes; Windows does not allow a current folder of that length.
    const std::string before = here();
    ASSERT_LT(before.size(), 200u);
    const std::string deep(230 - before.size(), 'd');
    fs::create_directory(deep);
    fs::copy_file("config.xml", deep + "/config.xml");
    expectFailure({"list", "--workdir", deep}, 3,
                  "load the module \"" + module.path() +
                      "\": the working folder and the module path together are longer than 259 "
                      "bytes; choose a shorter --workdir");
    EXPECT_EQ(before, here());
    EXPECT_EQ(0u, module.count("C_Initialize"));
}

TEST_F(LoadReportTest, JsonKeepsTheResultOfTheLibrary) {
    module->fail("C_Initialize", 0, CKR_GENERAL_ERROR);
    const std::string output = zrkey({"list", "--json"}).output;
    EXPECT_NE(std::string::npos, output.find(R"("result":{"name":"E_FAIL","hex":"0x80004005"})"))
        << output;
    EXPECT_NE(std::string::npos, output.find(R"("cause":"its C_Initialize returned CKR_)"))
        << output;
}

}  // namespace
}  // namespace zr::test
