// What stands in the way of every command, to the last character: the module, the configuration, the
// choice of a token, the PIN, the words of the command line.
#include "tests/host/command_test.h"

namespace zr::test {
namespace {

class FailureReportTest : public CommandTest {
protected:
    void setSlots(CK_ULONG count) {
        module->settings().slotCount = count;
        module->settings().slotCountWhenListed = count;
    }
    /// The working directory as messages show it.
    static std::string here() { return std::filesystem::current_path().generic_string(); }
    /// The line of a load that failed.
    static std::string notLoaded(const std::string& path, const std::string& answer,
                                 const std::string& advice) {
        return "load the module \"" + path + "\": the library answered " + answer + "; " + advice;
    }
    /// @param source  of the PIN of a login.
    static void expectNoPin(const std::string& source, const std::string& line) {
        expectFailure({"login", "--pin", source}, 2, "get a PIN: " + line);
    }
};

TEST_F(FailureReportTest, NoTokenIsThere) {
    setSlots(0);
    expectFailure({"info"}, 4,
                  "choose a token: none of 0 slots holds a token that opens; connect a token, or "
                  "initialise the one that is there");
}

TEST_F(FailureReportTest, AnotherTokenIsThere) {
    const std::string there = "there are only: 0 \"Label\" serial \"Serial\"; choose one of these";
    expectFailure({"info", "--label", "a\nb"}, 4, "choose the token with label \"a?b\": " + there);
    expectFailure({"info", "--serial", "0"}, 4,
                  "choose the token with serial number \"0\": " + there);
    expectFailure({"info", "--index", "1"}, 4, "choose the token with index 1: " + there);
}

TEST_F(FailureReportTest, SeveralTokensAreThere) {
    setSlots(2);
    const std::string there =
        "several are there: 0 \"Label\" serial \"Serial\", 1 \"Label\" serial \"Serial\"; choose "
        "one by --index, --label or --serial";
    expectFailure({"info"}, 4, "choose a token: " + there);
    expectFailure({"info", "--label", "Label"}, 4,
                  "choose the token with label \"Label\": " + there);
}

TEST_F(FailureReportTest, NoModuleIsNamed) {
    setEnvironment("ZRKEY_MODULE", "");
    expectFailure({"list"}, 2,
                  "load a module: none is named; give --module PATH or set ZRKEY_MODULE");
}

TEST_F(FailureReportTest, TheModuleIsNotThere) {
    expectFailure(
        {"list", "--module", "missing.so"}, 3,
        notLoaded("missing.so", "E_FAIL (0x80004005)", "there is no such file: look at --module"));
}

TEST_F(FailureReportTest, TheModuleIsNone) {
    expectFailure({"list", "--module", "config.xml"}, 3,
                  notLoaded("config.xml", "E_FAIL (0x80004005)",
                            "it is no PKCS #11 module of this machine's kind, or it did not start: "
                            "look at its own settings"));
    expectFailure({"list", "--module", module.noListPath()}, 3,
                  notLoaded(module.noListPath(), "E_OUTOFMEMORY (0x8007000E)",
                            "it has no usable C_GetFunctionList: name a PKCS #11 module by "
                            "--module"));
}

TEST_F(FailureReportTest, TheConfigurationIsNotThere) {
    std::filesystem::remove("config.xml");
    expectFailure({"list"}, 3,
                  notLoaded(module.path(), "E_FAIL (0x80004005)",
                            "there is no config.xml in the working directory \"" + here() +
                                "\": put one there, with a <driver> element, or name its folder "
                                "by --workdir"));
}

TEST_F(FailureReportTest, TheConfigurationIsNone) {
    writeFile("config.xml", "<other/>");
    expectFailure({"list"}, 3,
                  notLoaded(module.path(), "E_FAIL (0x80004005)",
                            "the module is fine, config.xml in \"" + here() +
                                "\" is not: it needs a <driver> element, and lists below 500 "
                                "bytes"));
}

TEST_F(FailureReportTest, TheWayToTheModuleIsTooLong) {
    // The library has room for 259 bytes; Windows has none for a current folder of that length.
    const std::string before = here();
    ASSERT_LT(before.size(), 200u);
    const std::string deep(230 - before.size(), 'd');
    std::filesystem::create_directory(deep);
    std::filesystem::copy_file("config.xml", deep + "/config.xml");
    expectFailure({"list", "--workdir", deep}, 3,
                  notLoaded(module.path(), "E_FAIL (0x80004005)",
                            "working directory and module path are longer than 259 bytes "
                            "together: choose a shorter --workdir"));
    EXPECT_EQ(before, here());
}

TEST_F(FailureReportTest, TheWorkFolderIsNotThere) {
    expectFailure({"list", "--workdir", "missing"}, 3,
                  "change to the folder \"missing\": the system refused it; give --workdir with "
                  "the folder of config.xml");
}

TEST_F(FailureReportTest, APinIsNotReadable) {
    setEnvironment("TEST_PIN", "");
    expectNoPin("file:missing.txt",
                "the file \"missing.txt\" cannot be read; look whether it is there");
    expectNoPin("fd:77", "descriptor 77 cannot be read; look whether it is there");
    expectNoPin("env:ZRKEY_NO_SUCH_VARIABLE",
                "the variable ZRKEY_NO_SUCH_VARIABLE cannot be read; look whether it is there");
}

TEST_F(FailureReportTest, APinIsNone) {
    writeFile("pin.txt", "\n1234\n");
    expectNoPin("file:pin.txt",
                "the file \"pin.txt\" gives an empty one; no try was used up; give the PIN");
    writeFile("pin.txt", std::string(128, '1'));
    expectNoPin("file:pin.txt",
                "the file \"pin.txt\" gives more than 127 bytes; give the PIN alone on its line");
    writeFile("pin.txt",
              "12\xff"
              "34\n");
    expectNoPin("file:pin.txt", "the file \"pin.txt\" gives no UTF-8 text; give the PIN in UTF-8");
}

TEST_F(FailureReportTest, WordsThatAreWrongAreNamed) {
    expectUsageError({"login", "--pin", "97531"},
                     "--pin: a PIN is taken from prompt, env:NAME, file:PATH, fd:N or -");
    expectUsageError({"pin", "change", "--new-pin", "97531"},
                     "--new-pin: a PIN is taken from prompt, env:NAME, file:PATH, fd:N or -");
    expectUsageError({"digest", "--format", "der"},
                     "--format: the formats are raw, hex, base64 and pem");
    expectUsageError({"info", "--index", "x"},
                     "--index: an index is a number from 0 to 2147483647");
    expectUsageError({"file", "read", "0"},
                     "NUMBER: the name of a file is a number from 1 to 65536");
    expectUsageError({"file", "create", "65536"},
                     "NUMBER: the name of a file is a number from 1 to 65535");
    expectUsageError({"info", "--index", "0", "--label", "Label"}, "--index excludes --label");
    expectUsageError({"info", "--index", "0", "--serial", "Serial"}, "--index excludes --serial");
    expectUsageError({"info", "--label", "Label", "--serial", "S"}, "--label excludes --serial");
    expectUsageError({"cert", "read", "--cert", "a", "--cert-index", "0"},
                     "--cert excludes --cert-index");
    expectUsageError({"digest", "--json", "-o", "a"}, "--json excludes --output");
    expectUsageError({"digest", "--json", "--format", "raw"}, "--json excludes --format");
    expectUsageError({"verify"}, "--signature is required");
    expectUsageError({"file", "read"}, "NUMBER is required");
    expectUsageError({"file"}, "A subcommand is required");
    expectUsageError({}, "A subcommand is required");
    expectUsageError({"dance"}, "there is no such command");
    expectUsageError({"login", "97531"}, "an argument is not expected");
    expectUsageError({"login", "--pni=97531", "--dance", "5"}, "not expected: --pni --dance");
    expectUsageError({"run"}, "FILE is required");
    expectUsageError({"run", "--dance"}, "not expected: --dance");
    expectUsageError({"run", "--time-limit", "nan", "a.js"}, "--time-limit: a number is needed");
}

}  // namespace
}  // namespace zr::test
