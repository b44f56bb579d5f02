// Failures common to all commands, to the last character: the choice of a token, the PIN, the words
// of the command line.
#include "tests/host/command_test.h"

namespace zr::test {
namespace {

class FailureReportTest : public CommandTest {
protected:
    void setSlots(CK_ULONG count) {
        module->settings().slotCount = count;
        module->settings().slotCountWhenListed = count;
    }
    /// @param source  the source of the PIN of a login.
    static void expectNoPin(const std::string& source, const std::string& line) {
        expectFailure({"login", "--pin", source}, 2, "read the PIN from " + line);
    }
};

TEST_F(FailureReportTest, ChoiceWithoutATokenFails) {
    setSlots(0);
    expectFailure(
        {"info"}, 4,
        "choose a token: the module finds no reader; connect a reader or a token, and check "
        "that its service runs");
}

TEST_F(FailureReportTest, ChoiceOfAnotherTokenNamesTheTokens) {
    const std::string there = "the tokens are: 0 \"Label\" serial \"Serial\"; choose one of them";
    expectFailure({"info", "--label", "a\nb"}, 4, "choose the token with label \"a?b\": " + there);
    expectFailure({"info", "--serial", "0"}, 4,
                  "choose the token with serial number \"0\": " + there);
    expectFailure({"info", "--index", "1"}, 4, "choose the token with index 1: " + there);
}

TEST_F(FailureReportTest, ChoiceAmongSeveralTokensNamesThem) {
    setSlots(2);
    const std::string there =
        "several tokens match: 0 \"Label\" serial \"Serial\", 1 \"Label\" serial \"Serial\"; "
        "choose "
        "one with --index, --label or --serial";
    expectFailure({"info"}, 4, "choose a token: " + there);
    expectFailure({"info", "--label", "Label"}, 4,
                  "choose the token with label \"Label\": " + there);
}

TEST_F(FailureReportTest, MissingModuleOptionIsWrongUsage) {
    setEnvironment("ZRKEY_MODULE", "");
    expectFailure({"list"}, 2,
                  "load a module: no module is named; give --module PATH or set ZRKEY_MODULE");
}

TEST_F(FailureReportTest, MissingWorkFolderIsNamed) {
    expectFailure(
        {"list", "--workdir", "missing"}, 3,
        "change to the folder \"missing\": No such file or directory; check --workdir, the "
        "folder that contains config.xml");
}

TEST_F(FailureReportTest, UnreadablePinSourceIsNamed) {
    setEnvironment("TEST_PIN", "");
    expectNoPin("file:missing.txt",
                "\"missing.txt\": No such file or directory; check that it exists and can be read");
    expectNoPin("fd:77",
                "descriptor 77: Bad file descriptor; check that it exists and can be read");
    expectNoPin(
        "env:ZRKEY_NO_SUCH_VARIABLE",
        "the variable ZRKEY_NO_SUCH_VARIABLE: it is not set; set it, or give another source");
}

TEST_F(FailureReportTest, UnusablePinIsRefused) {
    writeFile("pin.txt", "\n1234\n");
    expectNoPin("file:pin.txt", "\"pin.txt\": the PIN is empty; give the PIN; no retry was used");
    writeFile("pin.txt", std::string(128, '1'));
    expectNoPin(
        "file:pin.txt",
        "\"pin.txt\": the line is longer than 127 bytes; check that it contains only the PIN");
    writeFile("pin.txt",
              "12\xff"
              "34\n");
    expectNoPin(
        "file:pin.txt",
        "\"pin.txt\": the PIN is not valid UTF-8 text; give the PIN in UTF-8; no retry was used");
}

TEST_F(FailureReportTest, WrongWordsAreNamed) {
    expectUsageError({"login", "--pin", "97531"},
                     "--pin: the source must be prompt, env:NAME, file:PATH, fd:N or -");
    expectUsageError({"pin", "change", "--new-pin", "97531"},
                     "--new-pin: the source must be prompt, env:NAME, file:PATH, fd:N or -");
    expectUsageError({"digest", "--format", "der"},
                     "--format: the format must be raw, hex, base64 or pem");
    expectUsageError({"info", "--index", "x"},
                     "--index: an index must be a number from 0 to 2147483647");
    expectUsageError({"file", "read", "0"},
                     "NUMBER: the name of a file must be a number from 1 to 65536");
    expectUsageError({"file", "create", "65536"},
                     "NUMBER: the name of a file must be a number from 1 to 65535");
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
    expectUsageError({"dance"}, "unknown command");
    expectUsageError({"login", "97531"}, "unexpected argument");
    expectUsageError({"login", "--pni=97531", "--dance", "5"}, "unknown options: --pni --dance");
    expectUsageError({"run"}, "FILE is required");
    expectUsageError({"run", "--dance"}, "unknown options: --dance");
    expectUsageError({"run", "--time-limit", "nan", "a.js"}, "--time-limit: a number is required");
}

}  // namespace
}  // namespace zr::test
