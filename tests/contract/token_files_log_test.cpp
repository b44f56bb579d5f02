// What data files write to the log.
#include "tests/support/fixtures/token_log.h"

namespace zr::test {
namespace {

class TokenFilesLogTest : public TokenLogTest {
protected:
    TokenFilesLogTest() { logIn(); }

    Lines open(const std::string& name) {
        return logged([&] { token->OpenFile(Text(name), file.receive()); });
    }
    Lines exists(const std::string& name) {
        return logged([&] { token->FileExists(Text(name), result.receive()); });
    }
    /// The lines of a file object that is created and whose operation fails.
    static Lines failedFile(const Lines& operation) {
        return addRef("KeyObject", 2) + begunAndEnded("KeyFile_pkcs11") + operation;
    }
    static Lines fileEnd() { return begunAndEnded("~KeyFile_pkcs11") + release("KeyObject", 1); }

    /// The lines of an OpenFile that fails, with the reason.
    static Lines refused(const std::string& why) {
        return begunOnly("OpenFile", failedFile(begunOnly("OpenFile", {"[OpenFile] " + why})) +
                                         Lines{"[OpenFile] OpenFile Fail"} + fileEnd());
    }

    ComRef<IKeyFile> file;
};

TEST_F(TokenFilesLogTest, FileExistsLogsItsSteps) {
    module.addData("6", "x");
    EXPECT_EQ(begunAndEnded("FileExists",
                            {"[FileExists] fileName=[7]", "[FileExists] C_FindObjectsInit begin",
                             "[FileExists] C_FindObjectsInit end"}),
              exists("7"));
}

TEST_F(TokenFilesLogTest, FailedFileExistsLogsTheReason) {
    EXPECT_EQ(begunOnly("FileExists",
                        {"[FileExists] fileName=[8]", "[FileExists] C_FindObjectsInit begin",
                         "[FileExists] C_FindObjectsInit end", "[FileExists] FileExists Fail"}),
              exists("8"));
    module->fail("C_FindObjectsInit", 0, CKR_DEVICE_REMOVED);
    EXPECT_EQ(begunOnly("FileExists",
                        {"[FileExists] fileName=[8]", "[FileExists] C_FindObjectsInit begin",
                         "[FileExists] C_FindObjectsInit Fail"}),
              exists("8"));
    EXPECT_EQ(begunOnly("FileExists", {"[FileExists] fileName=[0]"}), exists("none"));
    EXPECT_EQ(begunOnly("FileExists"), logged([&] { token->FileExists(Text("8"), nullptr); }));
}

TEST_F(TokenFilesLogTest, CreateFileLogsTheLookUpAndTheFile) {
    const Lines lookUp = begunOnly(
        "FileExists", {"[FileExists] fileName=[7]", "[FileExists] C_FindObjectsInit begin",
                       "[FileExists] C_FindObjectsInit end", "[FileExists] FileExists Fail"});
    const auto create = [&](void** out) {
        return logged([&] { token->CreateFile(Text("7"), 0, 0, 0, 0, out); });
    };
    module->fail("C_CreateObject", 1, CKR_DEVICE_REMOVED);
    EXPECT_EQ(begunOnly("CreateFile", addRef("KeyObject", 2) + begunAndEnded("KeyFile_pkcs11") +
                                          lookUp + begunOnly("CreateFile") + fileEnd()),
              create(file.receive()));
    EXPECT_EQ(begunAndEnded("CreateFile", addRef("KeyObject", 2) + begunAndEnded("KeyFile_pkcs11") +
                                              lookUp + begunAndEnded("CreateFile") +
                                              addRef("KeyFile", 1)),
              create(file.receive()));
    EXPECT_EQ(release("KeyFile", 0, fileEnd()), logged([&] { file.reset(); }));
    EXPECT_EQ(begunOnly("CreateFile"), create(nullptr));
}

TEST_F(TokenFilesLogTest, FileOperationsLogTheirNames) {
    module.addData("6", "contents");
    EXPECT_EQ(begunAndEnded("OpenFile", addRef("KeyObject", 2) + begunAndEnded("KeyFile_pkcs11") +
                                            begunAndEnded("OpenFile") + addRef("KeyFile", 1)),
              open("7"));
    EXPECT_EQ(begunAndEnded("GetSize", {"[GetSize] m_dwFileSize=[8]"}),
              logged([&] { file->GetSize(result.receive()); }));
    EXPECT_EQ(begunAndEnded("Seek"), logged([&] { file->Seek(1, 0); }));
    EXPECT_EQ(begunAndEnded("Read"), logged([&] { file->Read(2, result.receive()); }));
    EXPECT_EQ(begunAndEnded("Flush"), logged([&] { file->Flush(); }));
    EXPECT_EQ(begunAndEnded("Write"), logged([&] { file->Write(result); }));
    EXPECT_EQ(begunOnly("GetSize"), logged([&] { file->GetSize(nullptr); }));
    EXPECT_EQ(begunOnly("Read"), logged([&] { file->Read(2, nullptr); }));
    EXPECT_EQ(begunOnly("Read"), logged([&] { file->Read(9, result.receive()); }));
    EXPECT_EQ(begunAndEnded("Close"), logged([&] { file->Close(); }));
    EXPECT_EQ(begunOnly("Flush"), logged([&] { file->Flush(); }));
    EXPECT_EQ(addRef("KeyFile", 2), logged([&] { file->AddRef(); }));
    EXPECT_EQ(release("KeyFile", 1), logged([&] { file->Release(); }));
    EXPECT_EQ(release("KeyFile", 0, fileEnd()), logged([&] { file.reset(); }));
}

TEST_F(TokenFilesLogTest, FailedOpenFileLogsTheFailedStep) {
    EXPECT_EQ(refused("OpenFile Fail ... 2"), open("none"));
    EXPECT_EQ(refused("OpenFile Fail ... 3"), open("65537"));
    EXPECT_EQ(refused("OpenFile Fail ... end"), open("7"));
    module->fail("C_FindObjectsInit", 1, CKR_DEVICE_REMOVED);
    EXPECT_EQ(refused("OpenFile Fail ... 4"), open("7"));
    EXPECT_EQ(begunOnly("OpenFile"), logged([&] { token->OpenFile(Text("7"), nullptr); }));
}

TEST_F(TokenFilesLogTest, OpenFileOfUnknownLengthLogsItsEnd) {
    module.addData("6", "contents");
    module->fail("C_GetAttributeValue", 3, CKR_ATTRIBUTE_SENSITIVE);
    EXPECT_EQ(begunAndEnded("OpenFile", addRef("KeyObject", 2) + begunAndEnded("KeyFile_pkcs11") +
                                            begunAndEnded("OpenFile") + addRef("KeyFile", 1)),
              open("7"));
}

TEST_F(TokenFilesLogTest, OpenFileWithoutContentsLogsTheFailedStep) {
    module.addData("6", "contents");
    // The calls before it read the label: its length and its bytes.
    module->fail("C_GetAttributeValue", 4, CKR_DEVICE_REMOVED);
    EXPECT_EQ(refused("OpenFile Fail ... 6"), open("7"));
    module->settings().lyingType = CKA_VALUE;
    module->settings().lyingLength = CK_UNAVAILABLE_INFORMATION;
    module->settings().lie = RecordingModule::Settings::kOnQuery;
    EXPECT_EQ(refused("OpenFile Fail ... 5"), open("7"));
}

TEST_F(TokenFilesLogTest, DeleteFileLogsItsSteps) {
    module.addData("6", "contents");
    const Lines opening =
        begunAndEnded("OpenFile", addRef("KeyObject", 2) + begunAndEnded("KeyFile_pkcs11") +
                                      begunAndEnded("OpenFile") + addRef("KeyFile", 1));
    EXPECT_EQ(begunOnly("DeleteFile", refused("OpenFile Fail ... end")),
              logged([&] { token->DeleteFile(Text("9")); }));
    EXPECT_EQ(begunAndEnded("DeleteFile", opening + begunAndEnded("Close")),
              logged([&] { token->DeleteFile(Text("7")); }));
}

}  // namespace
}  // namespace zr::test
