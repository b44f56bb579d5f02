// docs/habits.md: data files. around-habits put file 7 on the token: "a letter".
#include "tests/support/fixtures/soft_token.h"

namespace zr::test {
namespace {

class FileHabit : public LoggedInSoftTokenTest {
protected:
    HRESULT create(const char* name) const {
        ComRef<IKeyFile> file;
        return token->CreateFile(Text(name), 0, 0, 0, 0, file.receive());
    }
    HRESULT exists(const char* name) const {
        Variant result;
        return token->FileExists(Text(name), result.receive());
    }
    ComRef<IKeyFile> open(const char* name) const {
        ComRef<IKeyFile> file;
        token->OpenFile(Text(name), file.receive());
        return file;
    }
    /// @return what the count was.
    long long closeSearch() const {
        Variant count;
        EXPECT_HR(S_OK, token->GetContainerCount(count.receive()));
        return count.toNumber().value_or(-1);
    }
    static std::string read(const ComRef<IKeyFile>& file, ULONG length) {
        ByteArray data;
        return file->Read(length, data.receive()) == S_OK ? data.bytes().value_or("(none)")
                                                          : "(failed)";
    }
    /// Deletes files that a test made, and ends what the deletions keep.
    void removeFiles(const std::vector<const char*>& names) {
        closeSearch();
        for (const char* name : names) {
            EXPECT_HR(S_OK, token->DeleteFile(Text(name))) << name;
        }
        EXPECT_HR(S_OK, provider->Unload());
    }
};

using AFileCreatedAsNIsFoundAsN1 = FileHabit;
using CreateFileMakesASecondFileOfTheSameNumber = FileHabit;
using FileExistsLeavesItsSearchOpen = FileHabit;
using AMissingFileIsEFAIL = FileHabit;
using FilesCannotBeWritten = FileHabit;
using ReadGivesAllOrNothing = FileHabit;
using SeekIsAlwaysSOK = FileHabit;
using DeleteFileKeepsTheTokenOpen = FileHabit;

TEST_F(AFileCreatedAsNIsFoundAsN1, NumbersWithoutASuccessorAndWithAZeroAreNotFound) {
    EXPECT_HR(S_OK, create("40"));
    EXPECT_HR(S_OK, create("65536"));
    EXPECT_HR(S_OK, create("050"));
    for (const char* name : {"40", "65536", "65537", "50", "51", "050", "051"}) {
        EXPECT_HR(E_FAIL, exists(name)) << name;
    }
    EXPECT_HR(S_OK, exists("41"));
    removeFiles({"41"});
}

TEST_F(CreateFileMakesASecondFileOfTheSameNumber, DeleteFileTakesOneOfThem) {
    EXPECT_HR(S_OK, create("20"));
    EXPECT_HR(S_OK, create("20"));
    EXPECT_HR(S_OK, token->DeleteFile(Text("21")));
    EXPECT_HR(S_OK, exists("21"));
    removeFiles({"21"});
}

TEST_F(FileExistsLeavesItsSearchOpen, LookUpsFailUntilItIsClosed) {
    EXPECT_HR(S_OK, exists("7"));
    EXPECT_HR(E_FAIL, exists("7"));
    EXPECT_FALSE(open("7"));
    EXPECT_HR(E_FAIL, token->DeleteFile(Text("7")));
    EXPECT_EQ(0, closeSearch());
    EXPECT_EQ(1, closeSearch());
    EXPECT_TRUE(open("7"));
}

TEST_F(FileExistsLeavesItsSearchOpen, SignDataAndVerifyDataFailOnce) {
    const ComRef<IKeyCertificate> certificate = openCertificate();
    const ByteArray data("data");
    ByteArray signature;
    EXPECT_HR(S_OK, exists("7"));
    EXPECT_HR(E_FAIL, token->SignData(nullptr, data, certificate.get(), signature.receive()));
    EXPECT_HR(S_OK, token->SignData(nullptr, data, certificate.get(), signature.receive()));
    EXPECT_HR(S_OK, exists("7"));
    EXPECT_HR(E_FAIL, token->VerifyData(data, certificate.get(), nullptr, signature));
    EXPECT_HR(S_OK, token->VerifyData(data, certificate.get(), nullptr, signature));
}

TEST_F(FileExistsLeavesItsSearchOpen, CreateFileOfTheNextNumberDoesTheSame) {
    EXPECT_HR(S_OK, create("30"));
    EXPECT_HR(E_FAIL, exists("29"));
    EXPECT_TRUE(open("31"));
    EXPECT_HR(S_OK, create("31"));
    EXPECT_FALSE(open("31"));
    removeFiles({"31", "32"});
}

TEST_F(AMissingFileIsEFAIL, AMissingFileAndABadNameLookAlike) {
    for (const char* name : {"8", "0", "65537", "letter", ""}) {
        Variant result;
        EXPECT_HR(E_FAIL, token->FileExists(Text(name), result.receive())) << name;
        EXPECT_EQ(0, result.toNumber()) << name;
    }
    const PulledToken pulled;
    EXPECT_HR(E_FAIL, exists("7"));
}

TEST_F(AMissingFileIsEFAIL, APrivateFileIsMissingWithoutALogin) {
    EXPECT_HR(E_FAIL, token->VerifyPIN(Text("9999"), 0));
    EXPECT_HR(E_FAIL, exists("11"));
    EXPECT_HR(S_OK, token->VerifyPIN(Text("1234"), 0));
    EXPECT_HR(S_OK, exists("11"));
}

TEST_F(FilesCannotBeWritten, WriteAndFlushFailOnSoftHsm) {
    const ComRef<IKeyFile> file = open("7");
    ASSERT_TRUE(file);
    EXPECT_HR(E_INVALIDARG, file->Write(ByteArray("other")));
    EXPECT_HR(E_FAIL, file->Flush());
    EXPECT_EQ("a letter", read(open("7"), 8));
}

TEST_F(ReadGivesAllOrNothing, ABytePastTheEndFails) {
    const ComRef<IKeyFile> file = open("7");
    ASSERT_TRUE(file);
    EXPECT_EQ("(failed)", read(file, 9));
    EXPECT_EQ("a let", read(file, 5));
    EXPECT_EQ("(failed)", read(file, 4));
    EXPECT_EQ("ter", read(file, 3));
}

TEST_F(ReadGivesAllOrNothing, AClosedFileHasASizeAndNoContents) {
    const ComRef<IKeyFile> file = open("7");
    ASSERT_TRUE(file);
    EXPECT_HR(S_OK, file->Close());
    Variant size;
    EXPECT_HR(S_OK, file->GetSize(size.receive()));
    EXPECT_EQ(8, size.toNumber());
    EXPECT_EQ("(failed)", read(file, 1));
}

TEST_F(SeekIsAlwaysSOK, PositionsOutsideTheContentsChangeNothing) {
    const ComRef<IKeyFile> file = open("7");
    ASSERT_TRUE(file);
    EXPECT_HR(S_OK, file->Seek(2, 0));
    EXPECT_HR(S_OK, file->Seek(8, 0));
    EXPECT_HR(S_OK, file->Seek(-3, 1));
    EXPECT_HR(S_OK, file->Seek(1, 9));
    EXPECT_EQ("let", read(file, 3));
    EXPECT_HR(S_OK, file->Seek(0, 2));
    EXPECT_EQ("a let", read(file, 5));
}

TEST_F(DeleteFileKeepsTheTokenOpen, ReleaseDoesNotLogOutAndUnloadDoes) {
    EXPECT_HR(S_OK, create("60"));
    EXPECT_HR(S_OK, token->DeleteFile(Text("61")));
    EXPECT_LT(0u, token.release()->Release());
    const ComRef<IKeyObject> second = openToken(provider);
    // SoftHSM2 refuses the officer as long as the user is logged in.
    EXPECT_HR(E_FAIL, second->VerifyPIN(Text("87654321"), 1));
    EXPECT_HR(S_OK, provider->Unload());
    const ComRef<ITokenProvider> other = makeProvider();
    ASSERT_HR(S_OK, load(other));
    EXPECT_HR(S_OK, openToken(other)->VerifyPIN(Text("87654321"), 1));
}

}  // namespace
}  // namespace zr::test
