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
    const std::string login = "login [OPTIONS]";
    const std::string info = "info [OPTIONS]";
    const std::string digest = "digest [OPTIONS]";
    const std::string sources = "the source must be prompt, env:NAME, file:PATH, fd:N or -";
    expectUsageError({"login", "--pin", "97531"}, "--pin: " + sources, login);
    expectUsageError({"pin", "change", "--new-pin", "97531"}, "--new-pin: " + sources,
                     "pin change [OPTIONS]");
    expectUsageError({"digest", "--format", "der"},
                     "--format: the format must be raw, hex, base64 or pem", digest);
    expectUsageError({"info", "--index", "x"},
                     "--index: an index must be a number from 0 to 2147483647", info);
    expectUsageError({"info", "--index"}, "--index needs a value", info);
    expectUsageError({"info", "--label", "A", "--label", "B"}, "--label is given more than once",
                     info);
    expectUsageError({"file", "read", "0"},
                     "NUMBER: the name of a file must be a number from 1 to 65536",
                     "file read [OPTIONS] NUMBER");
    expectUsageError({"file", "create", "65536"},
                     "NUMBER: the name of a file must be a number from 1 to 65535",
                     "file create [OPTIONS] NUMBER");
    expectUsageError({"info", "--index", "0", "--label", "Label"}, "--index excludes --label",
                     info);
    expectUsageError({"info", "--index", "0", "--serial", "Serial"}, "--index excludes --serial",
                     info);
    expectUsageError({"info", "--label", "Label", "--serial", "S"}, "--label excludes --serial",
                     info);
    expectUsageError({"cert", "read", "--cert", "a", "--cert-index", "0"},
                     "--cert excludes --cert-index", "cert read [OPTIONS]");
    expectUsageError({"digest", "--json", "-o", "a"}, "--json excludes --output", digest);
    expectUsageError({"digest", "--json", "--format", "raw"}, "--json excludes --format", digest);
    expectUsageError({"verify"}, "--signature is required", "verify [OPTIONS]");
    expectUsageError({"file", "read"}, "NUMBER is required", "file read [OPTIONS] NUMBER");
    expectUsageError({"file"}, "file needs a command: list, exists, read, create, write, delete",
                     "file [OPTIONS] COMMAND");
    expectUsageError({"run"}, "FILE is required", "run [OPTIONS] FILE [ARG...]");
    expectUsageError({"run", "--dance"}, "unknown option --dance", "run [OPTIONS] FILE [ARG...]");
    expectUsageError({"run", "--time-limit", "nan", "a.js"}, "--time-limit: a number is required",
                     "run [OPTIONS] FILE [ARG...]");
}

TEST_F(FailureReportTest, MistypedNamesGetSuggestions) {
    const std::string all = "[OPTIONS] COMMAND";
    expectUsageError({"dance"}, "unknown command \"dance\"", all);
    expectUsageError({"lsit"}, "unknown command \"lsit\" (did you mean list?)", all);
    expectUsageError({"veri"}, "unknown command \"veri\" (did you mean verify?)", all);
    expectUsageError({"filr"}, "unknown command \"filr\" (did you mean file?)", all);
    expectUsageError({"create", "7"}, "unknown command \"create\" (did you mean file create?)",
                     all);
    expectUsageError({"read", "7"},
                     "unknown command \"read\" (did you mean file read or cert read?)", all);
    expectUsageError({"pin", "chnage"}, "unknown command \"chnage\" (did you mean change?)",
                     "pin [OPTIONS] COMMAND");
    expectUsageError({"login", "--pni=97531", "--dance", "5"},
                     "unknown options --pni (did you mean --pin?) --dance", "login [OPTIONS]");
    expectUsageError({"digest", "--jsno"}, "unknown option --jsno (did you mean --json?)",
                     "digest [OPTIONS]");
}

TEST_F(FailureReportTest, WordsThatMayBePinsAreNamedByTheirNumber) {
    expectUsageError({"login", "97531"}, "argument 2 is not expected", "login [OPTIONS]");
    expectUsageError({"login", "secret", "97531"}, "argument 2 and argument 3 are not expected",
                     "login [OPTIONS]");
    expectUsageError({"login", "--label", "97531", "97531"}, "an argument is not expected",
                     "login [OPTIONS]");
    expectUsageError({"login", "-p97531"}, "unknown option -p", "login [OPTIONS]");
    expectUsageError({"97531"}, "argument 1 is not a command", "[OPTIONS] COMMAND");
    expectUsageError({"pin", "secret"}, "argument 2 is not a command", "pin [OPTIONS] COMMAND");
}

}  // namespace
}  // namespace zr::test
