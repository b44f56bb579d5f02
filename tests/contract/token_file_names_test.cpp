// Names of data files: results for rejected names, and the longest name.
#include "tests/support/fixtures/token_files.h"

namespace zr::test {
namespace {

using TokenFileNamesTest = TokenFilesFixture;

/// The number 7 with leading zeros.
std::string sevenIn(std::size_t bytes) {
    std::string name(bytes, '0');
    name.back() = '7';
    return name;
}

TEST_F(TokenFileNamesTest, FileExistsWithARejectedNameStoresTheNumberZero) {
    for (const std::string name : {"", "0", "abc", "65537", "-1"}) {
        VARIANT exists = poisoned();
        EXPECT_HR(E_FAIL, token->FileExists(Text(name), &exists)) << name;
        EXPECT_EQ(VT_I4, exists.vt) << name;
        EXPECT_EQ(0, exists.lVal) << name;
    }
}

TEST_F(TokenFileNamesTest, FileExistsWithAFailedSearchStoresTheNumberZero) {
    module->fail("C_FindObjectsInit", 1, CKR_DEVICE_REMOVED);
    VARIANT exists = poisoned();
    EXPECT_HR(E_FAIL, token->FileExists(Text("7"), &exists));
    EXPECT_EQ(VT_I4, exists.vt);
    EXPECT_EQ(0, exists.lVal);
}

TEST_F(TokenFileNamesTest, CreateFileWith127BytesWritesTheFullNameAsLabel) {
    const std::string name = "1" + std::string(126, 'x');
    ComRef<IKeyFile> file;
    EXPECT_HR(S_OK, token->CreateFile(Text(name), 0, 0, 0, 0, file.receive()));
    ASSERT_TRUE(file);
    EXPECT_EQ(name, module.read(1, CKA_LABEL));
}

TEST_F(TokenFileNamesTest, FileExistsWith127BytesReadsTheNumber) {
    const std::string name = sevenIn(127);
    module.addData("6", "contents");
    EXPECT_EQ("contents", contents(name));
    VARIANT exists = poisoned();
    EXPECT_HR(S_OK, token->FileExists(Text(name), &exists));
    EXPECT_EQ(1, exists.lVal);
}

TEST_F(TokenFileNamesTest, FileOperationsWith128BytesFailWithoutACall) {
    const Text digits(sevenIn(128));
    const Text text("1" + std::string(127, 'x'));
    module.addData("6", "contents");
    module.takeCalls();
    void* file = nullptr;
    VARIANT exists = poisoned();
    EXPECT_HR(E_FAIL, token->CreateFile(text, 0, 0, 0, 0, &file));
    EXPECT_HR(E_FAIL, token->OpenFile(digits, &file));
    EXPECT_HR(E_FAIL, token->FileExists(digits, &exists));
    EXPECT_EQ(nullptr, file);
    EXPECT_EQ(Lines{}, module.takeCalls());
}

}  // namespace
}  // namespace zr::test
