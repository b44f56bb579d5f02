// Which data object a look-up finds.
#include "tests/support/fixtures/token_files.h"

namespace zr::test {
namespace {

class TokenFilesSearchTest : public TokenFilesFixture {
protected:
    void expectExists() {
        VARIANT exists = {};
        EXPECT_HR(S_OK, token->FileExists(Text("7"), &exists));
        EXPECT_EQ(1, exists.lVal);
    }
};

TEST_F(TokenFilesSearchTest, OpenFileOfTwoEqualLabelsOpensTheFirst) {
    module.addData("6", "first");
    module.addData("6", "second");
    EXPECT_EQ("first", contents("7"));
    module.takeCalls();
    VARIANT exists = {};
    EXPECT_HR(S_OK, token->FileExists(Text("7"), &exists));
    EXPECT_EQ(1u, module.count("C_FindObjects"));
}

TEST_F(TokenFilesSearchTest, LookUpsCompareTheFullLabel) {
    for (const char* label : {"60", "06", "6 ", " 6", ""}) {
        module.addData(label, "another");
    }
    VARIANT exists = {};
    EXPECT_HR(E_FAIL, token->FileExists(Text("7"), &exists));
    EXPECT_EQ(0, exists.lVal);
    module.addData("6", "this");
    EXPECT_EQ("this", contents("7"));
    expectExists();
}

TEST_F(TokenFilesSearchTest, LookUpsCompareTheLabelUpToItsFirstZero) {
    module.addData(std::string("6\0x", 3), "ends");
    EXPECT_EQ("ends", contents("7"));
    expectExists();
}

TEST_F(TokenFilesSearchTest, LookUpsFindAnObjectWithTheHandleZero) {
    module.addDataAt(0, "6", "zero");
    module.addData("6", "one");
    EXPECT_EQ("zero", contents("7"));
    expectExists();
}

TEST_F(TokenFilesSearchTest, DeleteFileOfAnObjectWithTheHandleZeroFails) {
    module.addDataAt(0, "6", "zero");
    EXPECT_HR(E_FAIL, token->DeleteFile(Text("7")));
    EXPECT_EQ(0u, module.count("C_DestroyObject"));
    EXPECT_EQ(1u, module->objectCount());
}

}  // namespace
}  // namespace zr::test
