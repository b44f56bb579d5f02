// docs/habits.md: loading a module, unloading it, and the slots that it shows.
#include <filesystem>

#include "tests/support/fixtures/soft_token.h"

namespace zr::test {
namespace {

using PathsAreRelativeToTheWorkingDirectory = SoftProviderTest;
using AFailedLoadMayLeaveTheModuleLoaded = SoftProviderTest;
using ASecondLoadAddsToTheFirst = SoftProviderTest;
using UnloadEndsTheModuleForTheWholeProcess = SoftTokenTest;
using TokensPluggedInLaterMayStayUnseen = SoftProviderTest;
using IndexesMove = SoftProviderTest;

INT countKeys(const ComRef<ITokenProvider>& provider) {
    INT count = 0;
    EXPECT_HR(S_OK, provider->GetKeyCount(&count));
    return count;
}

std::string algorithms(const ComRef<IKeyObject>& token) {
    Text list;
    EXPECT_HR(S_OK, token->GetSignAlgo(list.receive()));
    return list.utf8();
}

TEST_F(PathsAreRelativeToTheWorkingDirectory, AnAbsolutePathIsNotFound) {
    const std::string module = fromEnvironment("ZRKEY_TEST_MODULE");
    const ComRef<ITokenProvider> other = makeProvider();
    EXPECT_HR(E_FAIL, other->Load(Text(module)));
    const std::string relative = relativePath(module.c_str());
    std::filesystem::create_directory("below");
    std::filesystem::copy_file("config.xml", "below/config.xml");
    std::filesystem::current_path("below");
    EXPECT_HR(E_FAIL, other->Load(Text(relative)));
    EXPECT_HR(S_OK, other->Load(Text("../" + relative)));
}

TEST_F(AFailedLoadMayLeaveTheModuleLoaded, TokensOpenWithoutAConfiguration) {
    std::filesystem::remove("config.xml");
    ComRef<ITokenProvider> other = makeProvider();
    INT count = 0;
    EXPECT_HR(E_FAIL, other->GetKeyCount(&count));
    EXPECT_HR(E_FAIL, load(other));
    EXPECT_EQ(3, countKeys(other));
    EXPECT_TRUE(openToken(other));
    EXPECT_HR(S_OK, other->Unload());
    EXPECT_HR(E_FAIL, other->GetKeyCount(&count));
}

TEST_F(ASecondLoadAddsToTheFirst, ListsGrowWithEveryLoad) {
    const std::string list = "SHA1WithRSA;SM3WithSM2";
    EXPECT_EQ(list, algorithms(openToken(provider)));
    EXPECT_HR(S_OK, load(provider));
    EXPECT_EQ(list + list, algorithms(openToken(provider)));
    EXPECT_HR(S_OK, provider->Unload());
    EXPECT_HR(S_OK, load(provider));
    EXPECT_EQ(list + list + list, algorithms(openToken(provider)));
}

TEST_F(ASecondLoadAddsToTheFirst, UnloadEndsTheLastModuleOnly) {
    const Recording module;
    ASSERT_HR(S_OK, provider->Load(Text(module.path())));
    const ComRef<ITokenProvider> other = makeProvider();
    ASSERT_HR(S_OK, load(other));
    const ComRef<IKeyObject> token = openToken(other);
    EXPECT_HR(S_OK, provider->Unload());
    EXPECT_HR(S_OK, provider->Unload());
    EXPECT_HR(S_OK, token->VerifyPIN(Text("1234"), 0));
}

TEST_F(UnloadEndsTheModuleForTheWholeProcess, TokensOfAnotherProviderFail) {
    const ComRef<ITokenProvider> other = makeProvider();
    ASSERT_HR(S_OK, load(other));
    EXPECT_HR(S_OK, token->VerifyPIN(Text("1234"), 0));
    EXPECT_HR(S_OK, other->Unload());
    EXPECT_HR(E_FAIL, token->VerifyPIN(Text("1234"), 0));
    Text label;
    EXPECT_HR(E_FAIL, token->GetLabel(label.receive()));
    INT count = 0;
    EXPECT_HR(E_FAIL, provider->GetKeyCount(&count));
}

TEST_F(UnloadEndsTheModuleForTheWholeProcess, TheLastReleaseOfAProviderUnloads) {
    ComRef<ITokenProvider> other = makeProvider();
    ASSERT_HR(S_OK, load(other));
    EXPECT_EQ(0u, other.release()->Release());
    EXPECT_HR(E_FAIL, token->VerifyPIN(Text("1234"), 0));
}

// SoftHSM2 itself stays as it is: see linux/new_token_test.cpp.
TEST_F(TokensPluggedInLaterMayStayUnseen, AModuleThatLooksAgainShowsThem) {
    const Recording module;
    ASSERT_HR(S_OK, provider->Load(Text(module.path())));
    EXPECT_EQ(1, countKeys(provider));
    module->settings().slotCount = 2;
    module->settings().slotCountWhenListed = 2;
    EXPECT_EQ(2, countKeys(provider));
    ComRef<IKeyObject> token;
    EXPECT_HR(S_OK, provider->OpenKey(1, token.receive()));
    EXPECT_TRUE(token);
}

TEST_F(IndexesMove, ASlotMayHoldNoUsableToken) {
    ASSERT_EQ(3, countKeys(provider));
    int usable = 0;
    for (LONG index = 0; index < 3; ++index) {
        ComRef<IKeyObject> token;
        const HRESULT hr = provider->OpenKey(index, token.receive());
        EXPECT_EQ(hr == S_OK, static_cast<bool>(token));
        usable += hr == S_OK ? 1 : 0;
    }
    EXPECT_EQ(2, usable);
}

// SoftHSM2 keeps a slot when its token is pulled.
TEST_F(IndexesMove, TokensBehindAPulledOneMoveUp) {
    const Recording module;
    ASSERT_HR(S_OK, provider->Load(Text(module.path())));
    module->settings().slotCount = 2;
    module->settings().slotCountWhenListed = 2;
    ComRef<IKeyObject> token;
    EXPECT_HR(S_OK, provider->OpenKey(1, token.receive()));
    module->settings().slotCount = 1;
    module->settings().slotCountWhenListed = 1;
    EXPECT_HR(E_FAIL, provider->OpenKey(1, token.receive()));
    EXPECT_HR(S_OK, provider->OpenKey(0, token.receive()));
    EXPECT_TRUE(token);
}

}  // namespace
}  // namespace zr::test
