// file write and file list: what they report, which calls they make, and what a failure leaves.
#include "tests/host/certificate_command_test.h"

namespace zr::test {
namespace {

using Deeds = std::vector<std::string>;

constexpr CK_ATTRIBUTE_TYPE kPrivate = 0x2;
constexpr CK_ATTRIBUTE_TYPE kApplication = 0x10;

class FileWriteTest : public CertificateCommandTest {
protected:
    static std::vector<std::string> write(const std::string& number) {
        return withPin({"file", "write", number, "-i", "data.bin"});
    }
    /// The contents of the files with a label.
    std::vector<std::string> contentsOf(const std::string& label) const {
        std::vector<std::string> contents;
        for (CK_OBJECT_HANDLE object = 1; object < 20; ++object) {
            if (module.read(object, CKA_LABEL) == label) {
                contents.push_back(module.read(object, CKA_VALUE));
            }
        }
        return contents;
    }
};

TEST_F(FileWriteTest, FileIsChangedInPlace) {
    const CK_OBJECT_HANDLE object = module.addData("7", "old");
    expectOutput(write("8"), "wrote 3 bytes to 8\n");
    EXPECT_EQ("abc", module.read(object, CKA_VALUE));
    EXPECT_EQ((Deeds{"C_Login(1, 1, 1234)", "C_SetAttributeValue(2, 1, {0x11[3]})"}), takeDeeds());
    expectOutput(withPin({"file", "read", "8"}), "abc");
    expectJson(write("8"), "file write", R"("name":"8","size":3,"created":false,"replaced":false)");
}

TEST_F(FileWriteTest, MissingFileIsCreated) {
    expectOutput(write("8"), "wrote 3 bytes to 8, a new file\n");
    EXPECT_EQ(std::vector<std::string>{"abc"}, contentsOf("7"));
    EXPECT_EQ("C_CreateObject(2, {0x0=0 0x1=1 0x3[1] 0x11[3]})", takeDeeds().at(1));
    expectOutput(withPin({"file", "read", "8"}), "abc");
}

TEST_F(FileWriteTest, ModuleThatChangesNoValuesGetsANewObjectBeforeTheOldOneGoes) {
    const CK_OBJECT_HANDLE old = module.addData("7", "old");
    module->setAttribute(old, kPrivate, "\1", 1);
    module->setAttribute(old, kApplication, "maker", 5);
    module->fail("C_SetAttributeValue", 0, CKR_ATTRIBUTE_READ_ONLY);
    expectJson(write("8"), "file write", R"("name":"8","size":3,"created":false,"replaced":true)");
    EXPECT_EQ((Deeds{"C_Login(1, 1, 1234)", "C_SetAttributeValue(2, 1, {0x11[3]})",
                     "C_CreateObject(2, {0x0=0 0x1=1 0x2[] 0x3[1] 0x10[] 0x11[3]})",
                     "C_DestroyObject(2, 1)"}),
              takeDeeds());
    EXPECT_EQ(std::vector<std::string>{"abc"}, contentsOf("7"));
    EXPECT_EQ("maker", module.read(old + 1, kApplication));
}

TEST_F(FileWriteTest, FailureAtEachStepLosesNothing) {
    const std::string asked = "write the file 8: the module's ";
    const auto expectOld = [&](const std::string& function, CK_RV result, const std::string& text) {
        module->fail("C_SetAttributeValue", 0, CKR_ATTRIBUTE_READ_ONLY);
        module->fail(function.c_str(), 0, result);
        expectFailure(write("8"), 1, asked + function + " returned " + text);
        EXPECT_EQ(std::vector<std::string>{"old"}, contentsOf("7"));
    };
    module.addData("7", "old");
    expectOld("C_CreateObject", 0x31,
              "CKR_DEVICE_MEMORY (0x00000031); the token is full; delete files that are no longer "
              "needed");
    module->reset();
    setText(module->settings().tokenInfo.label, "Label");
    setText(module->settings().tokenInfo.serialNumber, "Serial");
    module.addData("7", "old");
    module->fail("C_SetAttributeValue", 0, CKR_ATTRIBUTE_READ_ONLY);
    // The old object stays; the new one can be destroyed.
    module->fail("C_DestroyObject", 1, CKR_GENERAL_ERROR);
    expectFailure(write("8"), 1,
                  asked +
                      "C_DestroyObject returned CKR_GENERAL_ERROR (0x00000005); the file is as "
                      "it was; check that the token is still connected, and try again");
    EXPECT_EQ(std::vector<std::string>{"old"}, contentsOf("7"));
    module->fail("C_DestroyObject", 0, CKR_GENERAL_ERROR);
    expectFailure(write("8"), 1,
                  asked +
                      "C_DestroyObject returned CKR_GENERAL_ERROR (0x00000005); the old content "
                      "stays beside the new one, under the same number; check that the token "
                      "is still connected, and try again");
    EXPECT_EQ((std::vector<std::string>{"old", "abc"}), contentsOf("7"));
}

TEST_F(FileWriteTest, EveryCallThatFailsKeepsTheOldContentOrTheNew) {
    for (const bool isReplaced : {false, true}) {
        for (unsigned int nth = 1; nth < 60; ++nth) {
            module->reset();
            module.addData("7", "old");
            setText(module->settings().tokenInfo.label, "Label");
            module->fail(nullptr, nth, CKR_DEVICE_REMOVED);
            if (isReplaced) {
                module->fail("C_SetAttributeValue", 1, CKR_ATTRIBUTE_READ_ONLY);
            }
            const CommandResult result = zrkey(write("8"));
            const std::vector<std::string> contents = contentsOf("7");
            EXPECT_FALSE(contents.empty()) << nth;
            for (const std::string& content : contents) {
                EXPECT_TRUE(content == "old" || content == "abc") << nth << content;
            }
            EXPECT_EQ(result.exitCode == 0, result.errors.empty()) << nth;
            if (result.exitCode == 0) {
                EXPECT_EQ(std::vector<std::string>{"abc"}, contents) << nth;
            }
        }
    }
}

TEST_F(FileWriteTest, FailureThatANewObjectWouldMeetTooIsReported) {
    module.addData("7", "old");
    module->fail("C_SetAttributeValue", 0, CKR_DEVICE_REMOVED);
    expectFailure(write("8"), 1,
                  "write the file 8: the module's C_SetAttributeValue returned CKR_DEVICE_REMOVED "
                  "(0x00000032); the token was removed; connect it and try again");
    EXPECT_EQ(0u, module.count("C_CreateObject"));
}

TEST_F(FileWriteTest, ValueThatTheModuleCutsIsAFailure) {
    module->settings().lyingType = CKA_VALUE;
    module->settings().lyingLength = 2;
    module->settings().lie = RecordingModule::Settings::kAlways;
    expectFailure(write("8"), 1,
                  "write the file 8: the module stored other bytes than it was given; the token "
                  "may not keep files of this size");
    EXPECT_TRUE(contentsOf("7").empty());
    module.addData("7", "old");
    expectFailure(write("8"), 1,
                  "write the file 8: the module stored other bytes than it was given; the file is "
                  "as it was; the token may not keep files of this size");
    module->clearCalls();
    // The old content is written back by the second call.
    module->fail("C_SetAttributeValue", 2, CKR_GENERAL_ERROR);
    expectFailure(write("8"), 1,
                  "write the file 8: the module stored other bytes than it was given; the old "
                  "content is lost; the token may not keep files of this size");
}

TEST_F(FileWriteTest, NewContentStaysWhenTheOldIsGoneAfterAFailure) {
    module.addData("7", "old");
    module->fail("C_SetAttributeValue", 0, CKR_ATTRIBUTE_READ_ONLY);
    const auto removeOld = [](void* recording) {
        static_cast<RecordingModule*>(recording)->removeObject(1);
    };
    module->callBack("C_DestroyObject", removeOld, module.operator->());
    module->fail("C_DestroyObject", 0, CKR_FUNCTION_FAILED);
    expectFailure(write("8"), 1,
                  "write the file 8: the module's C_DestroyObject returned CKR_FUNCTION_FAILED "
                  "(0x00000006); the file has the new content; check that the token is still "
                  "connected, and try again");
    EXPECT_EQ(std::vector<std::string>{"abc"}, contentsOf("7"));
}

TEST_F(FileWriteTest, NumberOfSeveralFilesIsRefused) {
    module.addData("7", "one");
    module.addData("7", "two");
    expectFailure(write("8"), 4,
                  "write the file 8: 2 files have this number; delete all but one with zrkey file "
                  "delete");
    EXPECT_EQ((std::vector<std::string>{"one", "two"}), contentsOf("7"));
}

TEST_F(FileWriteTest, WriteNeedsALogin) {
    module.addData("7", "old");
    expectFailure({"file", "write", "8", "-i", "data.bin"}, 7,
                  "write the file 8: files are written after a login only; log in first: give "
                  "--pin");
}

TEST_F(FileWriteTest, ContentOverAMegabyteIsRefusedBeforeTheTokenWorks) {
    writeFile("data.bin", std::string((1 << 20) + 1, 'x'));
    EXPECT_EQ(1, zrkey(write("8")).exitCode);
    EXPECT_EQ(0u, module.count("C_Initialize"));
    writeFile("data.bin", std::string(1 << 20, 'x'));
    expectOutput(write("8"), "wrote 1048576 bytes to 8, a new file\n");
}

TEST_F(FileWriteTest, FilesAreListed) {
    const CK_OBJECT_HANDLE object = module.addData("7", "seven");
    module->setAttribute(object, kPrivate, "\1", 1);
    module.addData("0", "");
    module.addData("65535", "x");
    // These are not found under any number.
    for (const char* label : {"65536", "07", "seven", "", "7x", "-1", "999999"}) {
        module.addData(label, "other");
    }
    expectOutput({"file", "list"}, "8\t5\tprivate\n1\t0\tpublic\n65536\t1\tpublic\n");
    module->removeObject(object);
    expectJson({"file", "list"}, "file list",
               R"("files":[{"name":"1","size":0,"private":false},)"
               R"({"name":"65536","size":1,"private":false}])");
}

TEST_F(FileWriteTest, FailedCallOfTheListIsNamed) {
    module.addData("7", "seven");
    module->fail("C_GetAttributeValue", 1, CKR_DEVICE_REMOVED);
    expectFailure({"file", "list"}, 1,
                  "list the files: the module's C_GetAttributeValue returned CKR_DEVICE_REMOVED "
                  "(0x00000032); the token was removed; connect it and try again");
}

}  // namespace
}  // namespace zr::test
