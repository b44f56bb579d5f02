// A token belongs to the module that it was opened with, until that module is unloaded.
#include "tests/support/fixtures/token.h"

namespace zr::test {
namespace {

class TokenModuleTest : public LoggedInTokenTest {
protected:
    HRESULT load() { return provider->Load(Text(module.path())); }

    void releaseToken() { EXPECT_EQ(0u, token.release()->Release()); }

    /// The token works, and its release logs out and closes its session.
    void expectAlive() {
        module.takeCalls();
        EXPECT_HR(S_OK, token->VerifyPIN(Text("1234"), 0));
        EXPECT_LT(0u, module.count("C_Login"));
        module.takeCalls();
        releaseToken();
        EXPECT_EQ((Lines{"C_Logout(1)", "C_CloseSession(1)"}), module.takeCalls());
    }

    /// The token fails, and its operations make no call.
    void expectDead() {
        module.takeCalls();
        BSTR text = nullptr;
        EXPECT_HR(E_FAIL, token->GetLabel(&text));
        EXPECT_HR(E_FAIL, token->VerifyPIN(Text("1234"), 0));
        releaseToken();
        EXPECT_EQ(Lines{}, module.takeCalls());
    }

    INT keyCount = 0;
};

TEST_F(TokenModuleTest, LoadOfTheSameModuleLeavesTheTokenAlive) {
    EXPECT_HR(S_OK, load());
    expectAlive();
}

TEST_F(TokenModuleTest, LoadOfALibraryWithoutTheExportLeavesTheTokenAlive) {
    EXPECT_HR(E_OUTOFMEMORY, provider->Load(Text(module.noListPath())));
    EXPECT_HR(E_FAIL, provider->GetKeyCount(&keyCount));
    expectAlive();
}

TEST_F(TokenModuleTest, LoadOfTheModuleAfterALibraryWithoutTheExportLeavesTheTokenAlive) {
    EXPECT_HR(E_OUTOFMEMORY, provider->Load(Text(module.noListPath())));
    EXPECT_HR(S_OK, load());
    EXPECT_HR(S_OK, provider->GetKeyCount(&keyCount));
    expectAlive();
}

TEST_F(TokenModuleTest, LoadOfAModuleThatDoesNotInitialiseLeavesTheTokenAlive) {
    module->fail("C_Initialize", 1, CKR_GENERAL_ERROR);
    EXPECT_HR(E_FAIL, load());
    EXPECT_HR(E_FAIL, provider->GetKeyCount(&keyCount));
    expectAlive();
}

TEST_F(TokenModuleTest, LoadOfAMissingFileLeavesProviderAndTokenAlive) {
    EXPECT_HR(E_FAIL, provider->Load(Text("missing.dll")));
    EXPECT_HR(S_OK, provider->GetKeyCount(&keyCount));
    expectAlive();
}

TEST_F(TokenModuleTest, UnloadEndsTheToken) {
    EXPECT_HR(S_OK, provider->Unload());
    EXPECT_EQ(Lines{"C_Finalize(null)"}, module.takeCalls());
    expectDead();
}

TEST_F(TokenModuleTest, LoadAfterUnloadLeavesTheTokenDead) {
    EXPECT_HR(S_OK, provider->Unload());
    EXPECT_HR(S_OK, load());
    expectDead();
}

TEST_F(TokenModuleTest, UnloadAfterASecondLoadEndsTheTokenOfTheFirst) {
    EXPECT_HR(S_OK, load());
    EXPECT_HR(S_OK, provider->Unload());
    expectDead();
}

TEST_F(TokenModuleTest, UnloadAfterAFailedLoadLeavesTheTokenAlive) {
    EXPECT_HR(E_OUTOFMEMORY, provider->Load(Text(module.noListPath())));
    module.takeCalls();
    EXPECT_HR(S_OK, provider->Unload());
    EXPECT_EQ(Lines{}, module.takeCalls());
    expectAlive();
}

TEST_F(TokenModuleTest, UnloadByAnotherProviderWithTheSameModuleEndsTheToken) {
    ComRef<ITokenProvider> other = makeProvider();
    EXPECT_HR(S_OK, other->Load(Text(module.path())));
    EXPECT_HR(S_OK, other->Unload());
    expectDead();
    EXPECT_EQ(0u, other.release()->Release());
}

TEST_F(TokenModuleTest, ReleaseOfAnotherProviderWithTheSameModuleEndsTheToken) {
    ComRef<ITokenProvider> other = makeProvider();
    EXPECT_HR(S_OK, other->Load(Text(module.path())));
    EXPECT_EQ(0u, other.release()->Release());
    expectDead();
}

TEST_F(TokenModuleTest, ReleaseOfAnotherProviderWithoutAModuleLeavesTheTokenAlive) {
    EXPECT_EQ(0u, makeProvider().release()->Release());
    expectAlive();
}

}  // namespace
}  // namespace zr::test
