// Data files: names, look-ups, reading and seeking.
#include "tests/support/fixtures/token_files.h"
#include "tests/support/log_file.h"

namespace zr::test {
namespace {

using TokenFilesTest = TokenFilesFixture;

TEST_F(TokenFilesTest, FileExistsSearchesForTheNameMinusOneAndLeavesTheSearchOpenOnAMatch) {
    module.addData("7", "x");
    module.addData("6", "y");
    module.takeCalls();
    VARIANT exists = {};
    EXPECT_HR(S_OK, token->FileExists(Text("7"), &exists));
    EXPECT_EQ(VT_I4, exists.vt);
    EXPECT_EQ(1, exists.lVal);
    EXPECT_EQ((Lines{"C_FindObjectsInit(1, {0x0=0 0x1=1})", "C_FindObjects(1, 1)",
                     "C_GetAttributeValue(1, 1, {0x3})", "C_GetAttributeValue(1, 1, {0x3[1]})",
                     "C_FindObjects(1, 1)", "C_GetAttributeValue(1, 2, {0x3})",
                     "C_GetAttributeValue(1, 2, {0x3[1]})"}),
              module.takeCalls());
    EXPECT_TRUE(module->isSearchOpen());
    // The module refuses a second search; the open search stays open.
    EXPECT_HR(E_FAIL, token->FileExists(Text("7"), &exists));
    EXPECT_EQ(0, exists.lVal);
    EXPECT_EQ(Lines{"C_FindObjectsInit(1, {0x0=0 0x1=1})"}, module.takeCalls());
}

TEST_F(TokenFilesTest, FileExistsOfAMissingFileFailsAndClosesTheSearch) {
    VARIANT exists = poisoned();
    EXPECT_HR(E_FAIL, token->FileExists(Text("7"), &exists));
    EXPECT_EQ(VT_I4, exists.vt);
    EXPECT_EQ(0, exists.lVal);
    EXPECT_EQ((Lines{"C_FindObjectsInit(1, {0x0=0 0x1=1})", "C_FindObjects(1, 1)",
                     "C_FindObjectsFinal(1)"}),
              module.takeCalls());
    EXPECT_HR(E_INVALIDARG, token->FileExists(Text("7"), nullptr));
}

TEST_F(TokenFilesTest, FileOperationsWithANameOutOfRangeFailWithoutACall) {
    for (const std::string& name :
         {std::string("0"), std::string("abc"), std::string("65537"), std::string("-1"),
          std::string(""), std::string("4294967297"), std::string("99999999999999999999"),
          std::string(128, '1'), std::string(100000, '1'), "1" + std::string(127, 'x')}) {
        VARIANT exists = poisoned();
        EXPECT_HR(E_FAIL, token->FileExists(Text(name), &exists)) << name.substr(0, 20);
        EXPECT_EQ(0, exists.lVal);
        void* file = this;
        EXPECT_HR(E_FAIL, token->OpenFile(Text(name), &file));
        EXPECT_HR(E_FAIL, token->CreateFile(Text(name), 0, 0, 0, 0, &file));
        EXPECT_HR(E_FAIL, token->DeleteFile(Text(name)));
        EXPECT_EQ(this, file);
    }
    EXPECT_TRUE(module.takeCalls().empty());
    EXPECT_EQ(0u, module->objectCount());
}

TEST_F(TokenFilesTest, FileExistsWithSignsBlanksOrTrailingTextReadsTheNumber) {
    module.addData("65535", "x");
    module.addData("4", "x");
    VARIANT exists;
    EXPECT_HR(S_OK, token->FileExists(Text("65536"), &exists));
    module->settings().isSearchExclusive = false;
    EXPECT_HR(S_OK, token->FileExists(Text(" +5x"), &exists));
}

TEST_F(TokenFilesTest, CreateFileWritesTheNameUnchangedAsLabel) {
    ComRef<IKeyFile> file;
    EXPECT_HR(S_OK, token->CreateFile(Text("07"), 1, 2, 3, 4, file.receive()));
    EXPECT_EQ((Lines{"C_FindObjectsInit(1, {0x0=0 0x1=1})", "C_FindObjects(1, 1)",
                     "C_FindObjectsFinal(1)", "C_CreateObject(1, {0x0=0 0x1=1 0x3[2] 0x11[0]})"}),
              module.takeCalls());
    EXPECT_EQ("07", module.read(1, CKA_LABEL));
    VARIANT size;
    EXPECT_HR(S_OK, file->GetSize(&size));
    EXPECT_EQ(0, size.lVal);
    EXPECT_EQ("", read(file, 0));
    EXPECT_HR(E_FAIL, file->Read(1, &size));
    EXPECT_HR(S_OK, file->Flush());
    // Without "[0]", the pointer is null.
    EXPECT_EQ(Lines{"C_SetAttributeValue(1, 1, {0x11})"}, module.takeCalls());
    EXPECT_EQ(0u, file.release()->Release());
    EXPECT_HR(E_INVALIDARG, token->CreateFile(Text("1"), 0, 0, 0, 0, nullptr));
}

TEST_F(TokenFilesTest, CreateFileOfAnExistingNameCreatesASecondObject) {
    module.addData("3", "x");
    ComRef<IKeyFile> file;
    EXPECT_HR(S_OK, token->CreateFile(Text("4"), 0, 0, 0, 0, file.receive()));
    EXPECT_EQ(2u, module->objectCount());
}

TEST_F(TokenFilesTest, OpenFileReadsTheContentsOnce) {
    module.addData("6", "0123456789");
    ComRef<IKeyFile> file = open("7");
    EXPECT_EQ((Lines{"C_FindObjectsInit(1, {0x0=0 0x1=1})", "C_FindObjects(1, 1)",
                     "C_GetAttributeValue(1, 1, {0x0 0x3})",
                     "C_GetAttributeValue(1, 1, {0x0 0x3[1]})", "C_FindObjectsFinal(1)",
                     "C_GetAttributeValue(1, 1, {0x11})", "C_GetAttributeValue(1, 1, {0x11[10]})"}),
              module.takeCalls());
    EXPECT_EQ("0123", read(file, 4));
    EXPECT_EQ("456789", read(file, 6));
    EXPECT_EQ("", read(file, 0));
    VARIANT data = poisoned();
    EXPECT_HR(E_FAIL, file->Read(1, &data));
    EXPECT_EQ(VT_UI1, data.vt);
    EXPECT_HR(E_FAIL, file->Read(0xFFFFFFFF, &data));
    EXPECT_HR(E_INVALIDARG, file->Read(0, nullptr));
    EXPECT_HR(E_INVALIDARG, file->GetSize(nullptr));
    EXPECT_HR(E_INVALIDARG, file->Write(data));
    EXPECT_TRUE(module.takeCalls().empty());
}

TEST_F(TokenFilesTest, ReadReturnsSignedElementsUnderAnUnsignedType) {
    module.addData("6", "ab");
    ComRef<IKeyFile> file = open("7");
    Variant data;
    EXPECT_HR(S_OK, file->Read(2, data.receive()));
    EXPECT_EQ(VT_ARRAY | VT_UI1, data.type());
    VARTYPE element = VT_EMPTY;
    SafeArrayGetVartype(data.get().parray, &element);
    EXPECT_EQ(VT_I1, element);
}

TEST_F(TokenFilesTest, SeekOutsideTheFileKeepsThePosition) {
    module.addData("6", "0123456789");
    ComRef<IKeyFile> file = open("7");
    const auto next = [&](LONG offset, INT origin) {
        EXPECT_HR(S_OK, file->Seek(offset, origin));
        const std::optional<std::string> byte = read(file, 1);
        file->Seek(-1, 1);
        return byte;
    };
    EXPECT_EQ("4", next(4, 0));
    EXPECT_EQ("4", next(-1, 0));
    EXPECT_EQ("4", next(10, 0));
    EXPECT_EQ("6", next(2, 1));
    EXPECT_EQ("3", next(-3, 1));
    EXPECT_EQ("3", next(-4, 1));
    EXPECT_EQ("9", next(-1, 2));
    EXPECT_EQ("0", next(-10, 2));
    EXPECT_EQ("5", next(5, 0));
    EXPECT_EQ("5", next(-11, 2));
    EXPECT_EQ("5", next(1, 2));
    EXPECT_EQ("5", next(0, 3));
    EXPECT_EQ("0", next(0, 2));
    EXPECT_EQ("9", next(9, 0));
    EXPECT_EQ("0", next(0, 0));
}

TEST_F(TokenFilesTest, FlushWritesTheValueAndFailsAfterClose) {
    module.addData("6", "abc");
    ComRef<IKeyFile> file = open("7");
    module->setAttribute(1, CKA_VALUE, "other", 5);
    module.takeCalls();
    EXPECT_HR(S_OK, file->Flush());
    EXPECT_EQ(Lines{"C_SetAttributeValue(1, 1, {0x11[3]})"}, module.takeCalls());
    EXPECT_EQ("abc", module.read(1, CKA_VALUE));
    module->fail("C_SetAttributeValue", 1, CKR_ATTRIBUTE_READ_ONLY);
    EXPECT_HR(E_FAIL, file->Flush());
    module.takeCalls();
    EXPECT_HR(S_OK, file->Close());
    EXPECT_HR(S_OK, file->Close());
    EXPECT_HR(E_FAIL, file->Flush());
    VARIANT data;
    EXPECT_HR(E_FAIL, file->Read(1, &data));
    EXPECT_EQ("", read(file, 0));
    EXPECT_TRUE(module.takeCalls().empty());
}

TEST_F(TokenFilesTest, OpenFileOfAnUnreadableValueOpensAnEmptyFile) {
    module.addData("6", "abc");
    module->fail("C_GetAttributeValue", 3, CKR_ATTRIBUTE_SENSITIVE);
    ComRef<IKeyFile> file = open("7");
    VARIANT size;
    EXPECT_HR(S_OK, file->GetSize(&size));
    EXPECT_EQ(0, size.lVal);
}

TEST_F(TokenFilesTest, ReadPast32BitsFails) {
    module.addData("6", "abc");
    ComRef<IKeyFile> file = open("7");
    file->Seek(1, 0);
    VARIANT data = poisoned();
    EXPECT_HR(E_FAIL, file->Read(0xFFFFFFFF, &data));
    EXPECT_EQ(VT_UI1, data.vt);
    EXPECT_EQ("bc", read(file, 2));
}

TEST_F(TokenFilesTest, FlushOfAnEmptyFileWritesAnEmptyValue) {
    const CK_OBJECT_HANDLE object = module.addData("6", "");
    ComRef<IKeyFile> file = open("7");
    EXPECT_EQ("C_GetAttributeValue(1, 1, {0x11[0]})", module.takeCalls().back());
    EXPECT_EQ(0, sizeOf(file));
    EXPECT_EQ("", read(file, 0));
    EXPECT_HR(S_OK, file->Seek(0, 0));
    VARIANT data = {};
    EXPECT_HR(E_FAIL, file->Read(1, &data));
    module->setAttribute(object, CKA_VALUE, "x", 1);
    EXPECT_HR(S_OK, file->Flush());
    // Without "[0]", the pointer is null.
    EXPECT_EQ(Lines{"C_SetAttributeValue(1, 1, {0x11})"}, module.takeCalls());
    EXPECT_EQ("", module.read(object, CKA_VALUE));
}

TEST_F(TokenFilesTest, OpenFileWithAWrongLengthFromTheModuleStaysInBounds) {
    module.addData("6", "abc");
    auto& settings = module->settings();
    settings.lyingType = CKA_VALUE;
    settings.lie = RecordingModule::Settings::kOnQuery;
    for (const CK_ULONG length : {CK_ULONG{0x80000000}, CK_UNAVAILABLE_INFORMATION}) {
        settings.lyingLength = length;
        void* file = nullptr;
        EXPECT_HR(E_FAIL, token->OpenFile(Text("7"), &file));
    }
    for (const CK_ULONG length : {CK_ULONG{0}, CK_ULONG{1}, CK_ULONG{1000}}) {
        settings.lyingLength = length;
        settings.lie = RecordingModule::Settings::kOnQuery;
        open("7");
        settings.lie = RecordingModule::Settings::kOnRead;
        ComRef<IKeyFile> file = open("7");
        EXPECT_EQ(std::string("abc").substr(0, length), read(file, length < 3 ? length : 3));
    }
}

TEST_F(TokenFilesTest, FileOperationsAfterAFailedCallFailAndCloseTheSearch) {
    module.addData("6", "abc");
    for (const char* function : {"C_FindObjects", "C_GetAttributeValue"}) {
        module->fail(function, 1, CKR_DEVICE_REMOVED);
        void* file = nullptr;
        EXPECT_HR(E_FAIL, token->OpenFile(Text("7"), &file)) << function;
        EXPECT_FALSE(module->isSearchOpen());
    }
    module->fail("C_CreateObject", 1, CKR_DEVICE_REMOVED);
    void* file = nullptr;
    EXPECT_HR(E_FAIL, token->CreateFile(Text("9"), 0, 0, 0, 0, &file));
    EXPECT_EQ(nullptr, file);
}

TEST_F(TokenFilesTest, DeleteFileDestroysTheObjectAndKeepsATokenReference) {
    module.addData("6", "abc");
    EXPECT_HR(S_OK, token->DeleteFile(Text("7")));
    EXPECT_EQ("C_DestroyObject(1, 1)", module.takeCalls().back());
    EXPECT_EQ(0u, module->objectCount());
    // The file that DeleteFile opened still holds the token.
    EXPECT_EQ(3u, token->AddRef());
    EXPECT_EQ(2u, token->Release());
    EXPECT_HR(E_FAIL, token->DeleteFile(Text("7")));
}

TEST_F(ModuleTest, FileLookUpsLogEachStep) {
    folder.enableLog();
    ComRef<ITokenProvider> provider = makeProvider();
    provider->Load(Text(module.path()));
    ComRef<IKeyObject> token;
    provider->OpenKey(0, token.receive());
    const std::size_t before = readLogLines(folder.home()).size();
    VARIANT exists;
    token->FileExists(Text("7"), &exists);
    module->fail("C_FindObjectsInit", 1, CKR_GENERAL_ERROR);
    token->FileExists(Text("0"), &exists);
    token->FileExists(Text("8"), &exists);
    void* file = nullptr;
    token->OpenFile(Text("x"), &file);
    Lines lines = readLogLines(folder.home());
    lines.erase(lines.begin(), lines.begin() + static_cast<std::ptrdiff_t>(before));
    EXPECT_EQ((Lines{
                  "[FileExists] Begin",
                  "[FileExists] fileName=[7]",
                  "[FileExists] C_FindObjectsInit begin",
                  "[FileExists] C_FindObjectsInit end",
                  "[FileExists] FileExists Fail",
                  "[FileExists] Begin",
                  "[FileExists] fileName=[0]",
                  "[FileExists] Begin",
                  "[FileExists] fileName=[8]",
                  "[FileExists] C_FindObjectsInit begin",
                  "[FileExists] C_FindObjectsInit Fail",
                  "[OpenFile] Begin",
                  "[AddRef] [KeyObject::AddRef] call...2",
                  "[KeyFile_pkcs11] Begin",
                  "[KeyFile_pkcs11] End",
                  "[OpenFile] Begin",
                  "[OpenFile] OpenFile Fail ... 2",
                  "[OpenFile] OpenFile Fail",
                  "[~KeyFile_pkcs11] Begin",
                  "[~KeyFile_pkcs11] End",
                  "[Release] [KeyObject::Release] call...",
                  "[Release] [KeyObject::Release] count=1",
              }),
              lines);
}

TEST_F(TokenFilesTest, FileOperationsWithoutAResultAreRefusedWithoutACall) {
    EXPECT_HR(E_INVALIDARG, token->FileExists(Text("7"), nullptr));
    EXPECT_HR(E_INVALIDARG, token->OpenFile(Text("7"), nullptr));
    EXPECT_HR(E_INVALIDARG, token->CreateFile(Text("7"), 0, 0, 0, 0, nullptr));
    EXPECT_EQ(Lines{}, module.takeCalls());
}

TEST_F(TokenFilesTest, FlushOfADestroyedObjectFails) {
    const CK_OBJECT_HANDLE object = module.addData("6", "contents");
    ComRef<IKeyFile> file = open("7");
    module->removeObject(object);
    EXPECT_EQ("contents", read(file, 8));
    EXPECT_HR(E_FAIL, file->Flush());
    file.reset();
    EXPECT_HR(E_FAIL, token->DeleteFile(Text("7")));
}

TEST_F(TokenFilesTest, ReadOf64MiBReturnsAllBytes) {
    const std::string contents(64 << 20, 'x');
    module.addData("6", contents);
    ComRef<IKeyFile> file = open("7");
    EXPECT_TRUE(contents == read(file, 64 << 20));
}

}  // namespace
}  // namespace zr::test
