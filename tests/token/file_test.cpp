// Data files on a real token.
#include "tests/support/fixtures/soft_token.h"

namespace zr::test {
namespace {

class SoftFileTest : public LoggedInSoftTokenTest {
protected:
    HRESULT create(const std::string& name) const {
        ComRef<IKeyFile> file;
        const HRESULT hr = token->CreateFile(Text(name), 0, 0, 0, 0, file.receive());
        if (file) {
            EXPECT_EQ(0u, file.release()->Release());
        }
        return hr;
    }

    ComRef<IKeyFile> open(const std::string& name) const {
        ComRef<IKeyFile> file;
        EXPECT_HR(S_OK, token->OpenFile(Text(name), file.receive()));
        return file;
    }

    bool exists(const std::string& name) const {
        VARIANT result = {};
        const HRESULT hr = token->FileExists(Text(name), &result);
        EXPECT_EQ(VT_I4, result.vt);
        EXPECT_EQ(hr == S_OK ? 1 : 0, result.lVal);
        if (hr == S_OK) {
            closeSearch();
        }
        return hr == S_OK;
    }

    /// FileExists leaves its search open on a match, and SoftHSM2 allows one search.
    void closeSearch() const {
        VARIANT count;
        EXPECT_HR(S_OK, token->GetContainerCount(&count));
    }

    static std::optional<std::string> read(const ComRef<IKeyFile>& file, ULONG length) {
        ByteArray data;
        EXPECT_HR(S_OK, file->Read(length, data.receive()));
        return data.bytes();
    }
};

TEST_F(SoftFileTest, ReadReturnsTheContentsWrittenByAnotherProgram) {
    const std::string content = readTokenFile("content.bin");
    ASSERT_EQ(256u, content.size());
    ComRef<IKeyFile> file = open("101");
    ASSERT_TRUE(file);
    VARIANT size;
    EXPECT_HR(S_OK, file->GetSize(&size));
    EXPECT_EQ(VT_I4, size.vt);
    EXPECT_EQ(256, size.lVal);
    EXPECT_EQ(content.substr(0, 100), read(file, 100));
    EXPECT_EQ(content.substr(100), read(file, 156));
    VARIANT data = poisoned();
    EXPECT_HR(E_FAIL, file->Read(1, &data));
    EXPECT_EQ(VT_UI1, data.vt);
    EXPECT_HR(S_OK, file->Seek(-1, 2));
    EXPECT_EQ(content.substr(255), read(file, 1));
    EXPECT_EQ(0u, file.release()->Release());
}

TEST_F(SoftFileTest, CreateFileMakesAFileFoundUnderTheNextNumber) {
    EXPECT_HR(S_OK, create("3"));
    EXPECT_FALSE(exists("3"));
    EXPECT_TRUE(exists("4"));
    ComRef<IKeyFile> file = open("4");
    ASSERT_TRUE(file);
    VARIANT size;
    EXPECT_HR(S_OK, file->GetSize(&size));
    EXPECT_EQ(0, size.lVal);
    // SoftHSM2 refuses every later change of a value.
    EXPECT_HR(E_FAIL, file->Flush());
    EXPECT_HR(S_OK, file->Close());
    EXPECT_EQ(0u, file.release()->Release());
    EXPECT_HR(S_OK, token->DeleteFile(Text("4")));
    EXPECT_FALSE(exists("4"));
    EXPECT_HR(E_FAIL, token->DeleteFile(Text("4")));
    // The deleted file keeps the token alive, and with it the login: Unload ends the login.
    EXPECT_HR(S_OK, provider->Unload());
}

TEST_F(SoftFileTest, CreateFileWritesTheNameUnchangedAndFileExistsReadsANumber) {
    // Checked afterwards by around-test: the object's label is "07".
    EXPECT_HR(S_OK, create("07"));
    EXPECT_FALSE(exists("8"));
}

TEST_F(SoftFileTest, CreateFileOfAnExistingNameCreatesASecondObject) {
    EXPECT_HR(S_OK, create("20"));
    EXPECT_HR(S_OK, create("20"));
    EXPECT_HR(S_OK, token->DeleteFile(Text("21")));
    EXPECT_TRUE(exists("21"));
    EXPECT_HR(S_OK, token->DeleteFile(Text("21")));
    EXPECT_FALSE(exists("21"));
    EXPECT_HR(S_OK, provider->Unload());
}

TEST_F(SoftFileTest, FileExistsOnAMatchLeavesTheSearchOpen) {
    VARIANT result = {};
    EXPECT_HR(S_OK, token->FileExists(Text("101"), &result));
    EXPECT_HR(E_FAIL, token->FileExists(Text("101"), &result));
    closeSearch();
    EXPECT_TRUE(exists("101"));
}

}  // namespace
}  // namespace zr::test
