// What data files write to the log.
#include "tests/contract/token_log.h"

namespace zr::test {
namespace {

class TokenFilesLogTest : public TokenLogTest {
protected:
    TokenFilesLogTest() { logIn(); }

    Lines open(const std::string& name) {
        return told([&] { token->OpenFile(Text(name), reinterpret_cast<void**>(&file)); });
    }
    Lines exists(const std::string& name) {
        return told([&] { token->FileExists(Text(name), &result); });
    }
    /// Of a file object that is made and goes again, after its own operation has failed.
    static Lines failedFile(const Lines& operation) {
        return addRef("KeyObject", 2) + whole("KeyFile_pkcs11") + operation;
    }
    static Lines fileEnd() { return whole("~KeyFile_pkcs11") + release("KeyObject", 1); }

    /// A refused opening, with the line that tells why.
    static Lines refused(const std::string& why) {
        return broken("OpenFile", failedFile(broken("OpenFile", {"[OpenFile] " + why})) +
                                      Lines{"[OpenFile] OpenFile Fail"} + fileEnd());
    }

    IKeyFile* file = nullptr;
};

TEST_F(TokenFilesLogTest, ALookUpTellsItsSteps) {
    module.addData("6", "x");
    EXPECT_EQ(
        whole("FileExists", {"[FileExists] fileName=[7]", "[FileExists] C_FindObjectsInit begin",
                             "[FileExists] C_FindObjectsInit end"}),
        exists("7"));
}

TEST_F(TokenFilesLogTest, ALookUpTellsWhyItFails) {
    EXPECT_EQ(broken("FileExists",
                     {"[FileExists] fileName=[8]", "[FileExists] C_FindObjectsInit begin",
                      "[FileExists] C_FindObjectsInit end", "[FileExists] FileExists Fail"}),
              exists("8"));
    module->fail("C_FindObjectsInit", 0, CKR_DEVICE_REMOVED);
    EXPECT_EQ(
        broken("FileExists", {"[FileExists] fileName=[8]", "[FileExists] C_FindObjectsInit begin",
                              "[FileExists] C_FindObjectsInit Fail"}),
        exists("8"));
    EXPECT_EQ(broken("FileExists", {"[FileExists] fileName=[0]"}), exists("none"));
    EXPECT_EQ(broken("FileExists"), told([&] { token->FileExists(Text("8"), nullptr); }));
}

TEST_F(TokenFilesLogTest, ACreationTellsItsLookUpAndItsFile) {
    const Lines lookUp = broken(
        "FileExists", {"[FileExists] fileName=[7]", "[FileExists] C_FindObjectsInit begin",
                       "[FileExists] C_FindObjectsInit end", "[FileExists] FileExists Fail"});
    const auto create = [&](void** out) {
        return told([&] { token->CreateFile(Text("7"), 0, 0, 0, 0, out); });
    };
    module->fail("C_CreateObject", 1, CKR_DEVICE_REMOVED);
    EXPECT_EQ(broken("CreateFile", addRef("KeyObject", 2) + whole("KeyFile_pkcs11") + lookUp +
                                       broken("CreateFile") + fileEnd()),
              create(reinterpret_cast<void**>(&file)));
    EXPECT_EQ(whole("CreateFile", addRef("KeyObject", 2) + whole("KeyFile_pkcs11") + lookUp +
                                      whole("CreateFile") + addRef("KeyFile", 1)),
              create(reinterpret_cast<void**>(&file)));
    EXPECT_EQ(release("KeyFile", 0, fileEnd()), told([&] { file->Release(); }));
    EXPECT_EQ(broken("CreateFile"), create(nullptr));
}

TEST_F(TokenFilesLogTest, AFileTellsItsOperations) {
    module.addData("6", "contents");
    EXPECT_EQ(whole("OpenFile", addRef("KeyObject", 2) + whole("KeyFile_pkcs11") +
                                    whole("OpenFile") + addRef("KeyFile", 1)),
              open("7"));
    EXPECT_EQ(whole("GetSize", {"[GetSize] m_dwFileSize=[8]"}),
              told([&] { file->GetSize(&result); }));
    EXPECT_EQ(whole("Seek"), told([&] { file->Seek(1, 0); }));
    EXPECT_EQ(whole("Read"), told([&] { file->Read(2, &result); }));
    VariantClear(&result);
    EXPECT_EQ(whole("Flush"), told([&] { file->Flush(); }));
    EXPECT_EQ(whole("Write"), told([&] { file->Write(result); }));
    EXPECT_EQ(broken("GetSize"), told([&] { file->GetSize(nullptr); }));
    EXPECT_EQ(broken("Read"), told([&] { file->Read(2, nullptr); }));
    EXPECT_EQ(broken("Read"), told([&] { file->Read(9, &result); }));
    EXPECT_EQ(whole("Close"), told([&] { file->Close(); }));
    EXPECT_EQ(broken("Flush"), told([&] { file->Flush(); }));
    EXPECT_EQ(addRef("KeyFile", 2), told([&] { file->AddRef(); }));
    EXPECT_EQ(release("KeyFile", 1), told([&] { file->Release(); }));
    EXPECT_EQ(release("KeyFile", 0, fileEnd()), told([&] { file->Release(); }));
}

TEST_F(TokenFilesLogTest, ARefusedOpeningTellsItsStep) {
    EXPECT_EQ(refused("OpenFile Fail ... 2"), open("none"));
    EXPECT_EQ(refused("OpenFile Fail ... 3"), open("65537"));
    EXPECT_EQ(refused("OpenFile Fail ... end"), open("7"));
    module->fail("C_FindObjectsInit", 1, CKR_DEVICE_REMOVED);
    EXPECT_EQ(refused("OpenFile Fail ... 4"), open("7"));
    EXPECT_EQ(broken("OpenFile"), told([&] { token->OpenFile(Text("7"), nullptr); }));
}

TEST_F(TokenFilesLogTest, AFileOfUnknownLengthIsOpenedAndTellsItsEnd) {
    module.addData("6", "contents");
    module->fail("C_GetAttributeValue", 3, CKR_ATTRIBUTE_SENSITIVE);
    EXPECT_EQ(whole("OpenFile", addRef("KeyObject", 2) + whole("KeyFile_pkcs11") +
                                    whole("OpenFile") + addRef("KeyFile", 1)),
              open("7"));
    file->Release();
}

TEST_F(TokenFilesLogTest, AFileWithoutItsContentsTellsItsStep) {
    module.addData("6", "contents");
    // The reads before are the label's: its length and its bytes.
    module->fail("C_GetAttributeValue", 4, CKR_DEVICE_REMOVED);
    EXPECT_EQ(refused("OpenFile Fail ... 6"), open("7"));
    module->settings().lyingType = CKA_VALUE;
    module->settings().lyingLength = CK_UNAVAILABLE_INFORMATION;
    module->settings().lie = RecordingModule::Settings::onQuery;
    EXPECT_EQ(refused("OpenFile Fail ... 5"), open("7"));
}

TEST_F(TokenFilesLogTest, ADeletionTellsItsSteps) {
    module.addData("6", "contents");
    const Lines opening = whole("OpenFile", addRef("KeyObject", 2) + whole("KeyFile_pkcs11") +
                                                whole("OpenFile") + addRef("KeyFile", 1));
    EXPECT_EQ(broken("DeleteFile", refused("OpenFile Fail ... end")),
              told([&] { token->DeleteFile(Text("9")); }));
    EXPECT_EQ(whole("DeleteFile", opening + whole("Close")),
              told([&] { token->DeleteFile(Text("7")); }));
}

}  // namespace
}  // namespace zr::test
