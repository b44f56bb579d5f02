// The reports of file and digest, and of inputs and outputs, to the last character.
#include "tests/host/command_test.h"

namespace zr::test {
namespace {

constexpr const char* kFailed = "the library returned E_FAIL (0x80004005); ";

class ObjectReportTest : public CommandTest {
protected:
    ObjectReportTest() { writeFile("data.bin", "data"); }
};

TEST_F(ObjectReportTest, FileIsCreatedFoundReadAndDeleted) {
    expectOutput(withPin({"file", "create", "7"}), "created 7, found as 8\n");
    expectOutput(withPin({"file", "exists", "8"}), "8 exists\n");
    expectOutput(withPin({"file", "read", "8"}), "");
    expectOutput(withPin({"file", "delete", "8"}), "deleted 8\n");
}

TEST_F(ObjectReportTest, FileCommandsReportInJson) {
    expectJson(withPin({"file", "create", "7"}), "file create", R"("name":"7","foundAs":"8")");
    expectJson(withPin({"file", "exists", "8"}), "file exists", R"("name":"8","exists":true)");
    module.addData("8", "abc");
    expectJson(withPin({"file", "read", "9"}), "file read", R"("content":"YWJj")");
    expectJson(withPin({"file", "delete", "9"}), "file delete", R"("name":"9")");
}

TEST_F(ObjectReportTest, FileContentIsWrittenInEachFormat) {
    module.addData("8", "abc");
    expectOutput(withPin({"file", "read", "9"}), "abc");
    expectOutput(withPin({"file", "read", "9", "--format", "raw"}), "abc");
    expectOutput(withPin({"file", "read", "9", "--format", "hex"}), "616263\n");
    expectOutput(withPin({"file", "read", "9", "--format", "base64"}), "YWJj\n");
    expectOutput(withPin({"file", "read", "9", "--format", "pem"}),
                 "-----BEGIN DATA-----\nYWJj\n-----END DATA-----\n");
    expectOutput(withPin({"file", "read", "9", "--output", "content.bin"}), "");
    EXPECT_EQ("abc", readFile("content.bin"));
}

TEST_F(ObjectReportTest, MissingFileReportExplainsHowFilesAreFound) {
    const std::string advice = "a file created as N is found as N + 1";
    const std::string more =
        advice + ", and private files are visible only after a login: give --pin";
    expectFailure(withPin({"file", "exists", "7"}), 4, "find the file 7: " + (kFailed + advice));
    expectFailure({"file", "exists", "7"}, 4, "find the file 7: " + (kFailed + more));
    expectFailure(withPin({"file", "read", "7"}), 4, "open the file 7: " + (kFailed + advice));
    expectFailure({"file", "read", "7"}, 4, "open the file 7: " + (kFailed + more));
    expectFailure(withPin({"file", "delete", "7"}), 4, "find the file 7: " + (kFailed + advice));
    expectFailure({"file", "delete", "7"}, 4, "find the file 7: " + (kFailed + more));
}

TEST_F(ObjectReportTest, RefusedCreateFileSaysWhatIsMissing) {
    module->fail("C_CreateObject", 0, CKR_GENERAL_ERROR);
    expectFailure(withPin({"file", "create", "7"}), 1,
                  std::string("create the file 7: ") + kFailed +
                      "the token may be full, or allow only its user to write");
    expectFailure({"file", "create", "7"}, 7,
                  std::string("create the file 7: ") + kFailed + "log in first: give --pin");
}

TEST_F(ObjectReportTest, RefusedDeleteFileSaysWhatIsMissing) {
    module.addData("7", "abc");
    module->fail("C_DestroyObject", 0, CKR_GENERAL_ERROR);
    expectFailure(withPin({"file", "delete", "8"}), 1,
                  std::string("delete the file 8: ") + kFailed + "the file may be protected");
    expectFailure({"file", "delete", "8"}, 7,
                  std::string("delete the file 8: ") + kFailed + "log in first: give --pin");
}

TEST_F(ObjectReportTest, UnreadableInputAndUnwritableOutputShowTheSystemsError) {
    expectFailure({"digest", "-i", "missing.bin"}, 1,
                  "read \"missing.bin\": No such file or directory; check the path and its "
                  "permissions");
    expectFailure({"digest", "-i", "data.bin", "-o", "missing/digest.txt"}, 1,
                  "write to \"missing/digest.txt\": No such file or directory; nothing was done; "
                  "check the path and its permissions");
}

TEST_F(ObjectReportTest, UnwritableOutputFailsBeforeTheTokenWorks) {
    for (const std::vector<std::string>& command :
         {std::vector<std::string>{"sign", "-i", "data.bin"},
          {"cert", "read"},
          {"digest", "-i", "data.bin"},
          {"file", "read", "8"}}) {
        std::vector<std::string> words = command.front() == "digest" ? command : withPin(command);
        words.insert(words.end(), {"-o", "missing/output.bin"});
        EXPECT_EQ(1, zrkey(words).exitCode) << command.front();
    }
    EXPECT_EQ(0u, module.count("C_Initialize"));
}

TEST_F(ObjectReportTest, FailedCommandLeavesTheOutputFileAsItWas) {
    writeFile("kept.bin", "kept");
    for (const char* name : {"kept.bin", "new.bin"}) {
        EXPECT_EQ(4, zrkey({"cert", "read", "-o", name}).exitCode);
    }
    EXPECT_EQ("kept", readFile("kept.bin"));
    EXPECT_FALSE(std::filesystem::exists("new.bin"));
}

TEST_F(ObjectReportTest, TwoReadsOfStandardInputAreWrongUsage) {
    const std::string line =
        "read standard input twice: its data can be read only once; name a file with -i, or give "
        "another source for the PIN";
    expectFailure({"sign", "--pin", "-"}, 2, line);
    expectFailure({"sign", "--pin", "fd:0"}, 2, line);
    expectFailure({"verify", "--signature", "-"}, 2, line);
    expectFailure({"verify", "--signature", "-", "-i", "data.bin", "--pin", "-"}, 2, line);
}

}  // namespace
}  // namespace zr::test
