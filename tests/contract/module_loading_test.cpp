// Loading and unloading a module, its configuration, counting and opening tokens.
#include <algorithm>
#include <filesystem>

#include "tests/contract/token.h"
#include "tests/support/log_file.h"

namespace zr::test {
namespace {

class ModuleLoadingTest : public ModuleTest {
protected:
    ~ModuleLoadingTest() override { provider->Release(); }

    HRESULT load() { return provider->Load(Text(module.path())); }

    std::string listText() {
        IKeyObject* token = nullptr;
        EXPECT_HR(S_OK, provider->OpenKey(0, reinterpret_cast<void**>(&token)));
        BSTR text = nullptr;
        token->GetSignAlgo(&text);
        const std::string list = narrow(text);
        SysFreeString(text);
        token->Release();
        return list;
    }

    ITokenProvider* provider = makeProvider();
};

TEST_F(ModuleLoadingTest, LoadInitialisesWithoutArguments) {
    EXPECT_HR(S_OK, load());
    EXPECT_EQ(Lines{"C_Initialize(null)"}, module.takeCalls());
}

TEST_F(ModuleLoadingTest, AnAbsolutePathIsPrefixedToo) {
    const auto path = std::filesystem::absolute(module.path()).lexically_normal();
    EXPECT_HR(E_FAIL, provider->Load(Text(path.string())));
    EXPECT_TRUE(module.takeCalls().empty());
}

TEST_F(ModuleLoadingTest, ALibraryWithoutAFunctionListIsOutOfMemory) {
    EXPECT_HR(E_OUTOFMEMORY, provider->Load(Text(module.noListPath())));
    INT count = 0;
    EXPECT_HR(E_FAIL, provider->GetKeyCount(&count));
}

TEST_F(ModuleLoadingTest, AFailingOrNullFunctionListIsOutOfMemory) {
    module->settings().functionListResult = CKR_GENERAL_ERROR;
    EXPECT_HR(E_OUTOFMEMORY, load());
    module->settings().functionListResult = CKR_OK;
    module->settings().functionListIsNull = true;
    EXPECT_HR(E_OUTOFMEMORY, load());
    EXPECT_TRUE(module.takeCalls().empty());
    INT count = 0;
    EXPECT_HR(E_FAIL, provider->GetKeyCount(&count));
}

TEST_F(ModuleLoadingTest, AFailingInitialisationFails) {
    module->fail("C_Initialize", 1, CKR_GENERAL_ERROR);
    EXPECT_HR(E_FAIL, load());
    INT count = 0;
    EXPECT_HR(E_FAIL, provider->GetKeyCount(&count));
    EXPECT_EQ(Lines{"C_Initialize(null)"}, module.takeCalls());
    provider->Unload();
    EXPECT_TRUE(module.takeCalls().empty());
}

TEST_F(ModuleLoadingTest, AMissingInitialisationFails) {
    module->removeEntry(0);
    EXPECT_HR(E_FAIL, load());
}

TEST_F(ModuleLoadingTest, AModuleInUseByOthersLoads) {
    module->fail("C_Initialize", 1, CKR_CRYPTOKI_ALREADY_INITIALIZED);
    EXPECT_HR(S_OK, load());
}

TEST_F(ModuleLoadingTest, WithoutAConfigurationLoadFailsAndTheModuleStays) {
    std::filesystem::remove("config.xml");
    EXPECT_HR(E_FAIL, load());
    INT count = 0;
    EXPECT_HR(S_OK, provider->GetKeyCount(&count));
    EXPECT_EQ(1, count);
}

TEST_F(ModuleLoadingTest, ConfigurationsThatAreNoneFail) {
    for (const char* text : {"", "no xml", "<driver>", "<other><driver/></other>", "<Driver/>",
                             "<?xml version=\"1.0\"?>"}) {
        folder.write("config.xml", text);
        EXPECT_HR(E_FAIL, load()) << text;
        EXPECT_HR(S_OK, provider->Unload());
    }
}

TEST_F(ModuleLoadingTest, OnlyTheFirstListsOfTheDriverCount) {
    folder.write("config.xml",
                 "<!-- lists --><driver a='b'><x/><algo>One;Two</algo><algo>Three</algo></driver>");
    EXPECT_HR(S_OK, load());
    EXPECT_EQ("One;Two", listText());
}

TEST_F(ModuleLoadingTest, EntitiesAreReadAndBlanksStay) {
    folder.write("config.xml", "<driver><algo> A&amp;B  </algo></driver>");
    EXPECT_HR(S_OK, load());
    EXPECT_EQ(" A&B  ", listText());
}

TEST_F(ModuleLoadingTest, ADriverWithoutListsLoads) {
    folder.write("config.xml", "<driver/>");
    EXPECT_HR(S_OK, load());
    EXPECT_EQ("", listText());
}

TEST_F(ModuleLoadingTest, APathAboveTheRootIsNotSearchedFor) {
    // Each is a library of one target that is found by its bare name.
    for (const std::string name : {"libm.so.6", "kernel32.dll"}) {
        std::string path = name;
        for (int i = 0; i < 30; ++i) {
            path.insert(0, "../");
        }
        EXPECT_HR(E_FAIL, provider->Load(Text(path))) << name;
    }
}

TEST_F(ModuleLoadingTest, ASecondLoadAppendsTheLists) {
    EXPECT_HR(S_OK, load());
    EXPECT_HR(S_OK, load());
    EXPECT_EQ("RSARSA", listText());
}

TEST_F(ModuleLoadingTest, ListsUpTo499BytesFit) {
    folder.writeConfig(std::string(499, 'a'), "");
    EXPECT_HR(S_OK, load());
    EXPECT_EQ(std::string(499, 'a'), listText());
}

TEST_F(ModuleLoadingTest, LongerListsFailAndTheModuleStays) {
    for (const std::size_t length : {500, 5000000}) {
        folder.writeConfig("", std::string(length, 'd'));
        EXPECT_HR(E_FAIL, load());
        EXPECT_EQ("", listText());
        provider->Unload();
    }
}

TEST_F(ModuleLoadingTest, TheListsAreLogged) {
    folder.enableLog();
    ITokenProvider* logging = makeProvider();
    EXPECT_HR(S_OK, logging->Load(Text(module.path())));
    Lines lines = readLogLines(folder.home());
    lines.erase(lines.begin(), lines.begin() + 5);
    EXPECT_EQ((Lines{"[Load] Begin", "[LoadConfig] algoList=[RSA]", "[LoadConfig] digestList=[MD5]",
                     "[Load] End"}),
              lines);
    logging->Release();
}

TEST_F(ModuleLoadingTest, UnloadFinalisesOnceAndTheLastReleaseNotAgain) {
    EXPECT_HR(S_OK, load());
    module.takeCalls();
    provider->AddRef();
    EXPECT_HR(S_OK, provider->Unload());
    EXPECT_EQ(Lines{"C_Finalize(null)"}, module.takeCalls());
    INT count = 3;
    EXPECT_HR(E_FAIL, provider->GetKeyCount(&count));
    EXPECT_EQ(0, count);
    void* key = nullptr;
    EXPECT_HR(E_FAIL, provider->OpenKey(0, &key));
    EXPECT_HR(S_OK, provider->Unload());
    provider->Release();
    EXPECT_TRUE(module.takeCalls().empty());
}

TEST_F(ModuleLoadingTest, TheLastReleaseUnloads) {
    ITokenProvider* other = makeProvider();
    EXPECT_HR(S_OK, other->Load(Text(module.path())));
    module.takeCalls();
    EXPECT_EQ(0u, other->Release());
    EXPECT_EQ(Lines{"C_Finalize(null)"}, module.takeCalls());
}

using LoadedProvider = LoadedProviderTest;

TEST_F(LoadedProvider, GetKeyCountAsksForSlotsWithATokenOnly) {
    module->settings().slotCount = 3;
    INT count = 0;
    EXPECT_HR(S_OK, provider->GetKeyCount(&count));
    EXPECT_EQ(3, count);
    EXPECT_EQ(Lines{"C_GetSlotList(1, null)"}, module.takeCalls());
}

TEST_F(LoadedProvider, GetKeyCountFailsWithTheModule) {
    module->fail("C_GetSlotList", 1, CKR_DEVICE_REMOVED);
    INT count = 3;
    EXPECT_HR(E_FAIL, provider->GetKeyCount(&count));
    EXPECT_EQ(0, count);
    EXPECT_HR(E_INVALIDARG, provider->GetKeyCount(nullptr));
}

TEST_F(LoadedProvider, NoTokenCountsAsNone) {
    module->settings().slotCount = 0;
    INT count = 3;
    EXPECT_HR(S_OK, provider->GetKeyCount(&count));
    EXPECT_EQ(0, count);
    void* key = nullptr;
    EXPECT_HR(E_FAIL, provider->OpenKey(0, &key));
    EXPECT_EQ(nullptr, key);
}

TEST_F(LoadedProvider, OpenKeyOpensAReadWriteSessionOnTheSlotOfTheIndex) {
    module->settings().slotCount = module->settings().slotCountWhenListed = 2;
    IKeyObject* token = nullptr;
    EXPECT_HR(S_OK, provider->OpenKey(1, reinterpret_cast<void**>(&token)));
    EXPECT_EQ((Lines{"C_GetSlotList(1, null)", "C_GetSlotList(1, list)",
                     "C_OpenSession(11, 6, set, null)"}),
              module.takeCalls());
    EXPECT_EQ(2u, token->AddRef());
    EXPECT_EQ(1u, token->Release());
    EXPECT_EQ(0u, token->Release());
    EXPECT_EQ(Lines{"C_CloseSession(1)"}, module.takeCalls());
}

TEST_F(LoadedProvider, OpenKeyRefusesIndexesOutOfRange) {
    void* key = nullptr;
    EXPECT_HR(E_INVALIDARG, provider->OpenKey(-1, &key));
    EXPECT_HR(E_INVALIDARG, provider->OpenKey(0, nullptr));
    EXPECT_TRUE(module.takeCalls().empty());
    EXPECT_HR(E_FAIL, provider->OpenKey(1, &key));
    EXPECT_HR(E_FAIL, provider->OpenKey(2147483647, &key));
    EXPECT_EQ(nullptr, key);
}

TEST_F(LoadedProvider, OpenKeyAnswersSuccessWithoutATokenWhenTheSlotsChange) {
    void* key = this;
    module->settings().slotCountWhenListed = 0;
    EXPECT_HR(S_OK, provider->OpenKey(0, &key));
    module->settings().slotCountWhenListed = 1;
    module->fail("C_GetSlotList", 2, CKR_BUFFER_TOO_SMALL);
    EXPECT_HR(S_OK, provider->OpenKey(0, &key));
    EXPECT_EQ(this, key);
    EXPECT_EQ(0u, module.count("C_OpenSession"));
}

TEST_F(LoadedProvider, OpenKeySurvivesCountsThatGrowOrCannotBe) {
    void* key = nullptr;
    module->settings().slotCountWhenListed = 1000000;
    EXPECT_HR(S_OK, provider->OpenKey(0, &key));
    static_cast<IKeyObject*>(key)->Release();
    key = nullptr;
    constexpr CK_ULONG kMost = CK_ULONG{1} << 20;
    for (const CK_ULONG count : {CK_UNAVAILABLE_INFORMATION, kMost + 1}) {
        module->settings().slotCount = count;
        EXPECT_HR(E_FAIL, provider->OpenKey(0, &key));
    }
    EXPECT_EQ(nullptr, key);
    module->settings().slotCount = kMost;
    EXPECT_HR(S_OK, provider->OpenKey(0, &key));
    static_cast<IKeyObject*>(key)->Release();
}

TEST_F(LoadedProvider, OpenKeyFailsWithTheModule) {
    void* key = this;
    module->fail("C_GetSlotList", 1, CKR_GENERAL_ERROR);
    EXPECT_HR(E_FAIL, provider->OpenKey(0, &key));
    module->fail("C_OpenSession", 1, CKR_TOKEN_NOT_PRESENT);
    module.takeCalls();
    EXPECT_HR(E_FAIL, provider->OpenKey(0, &key));
    EXPECT_EQ((Lines{"C_GetSlotList(1, null)", "C_GetSlotList(1, list)",
                     "C_OpenSession(10, 6, set, null)"}),
              module.takeCalls());
    EXPECT_EQ(this, key);
}

TEST_F(LoadedProvider, WhatAModuleWritesAsApplicationIsNotFreed) {
    module->settings().setsApplication = true;
    void* key = nullptr;
    EXPECT_HR(S_OK, provider->OpenKey(0, &key));
    EXPECT_EQ(0u, static_cast<IKeyObject*>(key)->Release());
}

TEST_F(TokenTest, ATokenIsUsableAfterASecondLoadOfItsModule) {
    EXPECT_HR(S_OK, provider->Load(Text(module.path())));
    EXPECT_HR(S_OK, token->VerifyPIN(Text("1234"), 0));
    module.takeCalls();
    token->Release();
    EXPECT_EQ((Lines{"C_Logout(1)", "C_CloseSession(1)"}), module.takeCalls());
    token = nullptr;
}

TEST_F(TokenTest, ATokenDoesNotUseAModuleThatWasLoadedAfterItsOwn) {
    EXPECT_HR(E_OUTOFMEMORY, provider->Load(Text(module.noListPath())));
    EXPECT_HR(S_OK, provider->Load(Text(module.path())));
    module.takeCalls();
    EXPECT_HR(E_FAIL, token->VerifyPIN(Text("1234"), 0));
    EXPECT_EQ(0u, token->Release());
    EXPECT_EQ(Lines{}, module.takeCalls());
    token = nullptr;
}

TEST_F(TokenTest, ATokenOutlivesTheHostsProviderReference) {
    EXPECT_EQ(2u, provider->AddRef() - 1);
    provider->Release();
    EXPECT_EQ(1u, provider->Release());
    EXPECT_EQ(0u, token->Release());
    EXPECT_EQ((Lines{"C_CloseSession(1)", "C_Finalize(null)"}), module.takeCalls());
    token = nullptr;
    provider = makeProvider();
}

TEST_F(LoggedInTokenTest, ATokenIsReleasedSafelyAfterUnload) {
    EXPECT_HR(S_OK, provider->Unload());
    EXPECT_EQ(Lines{"C_Finalize(null)"}, module.takeCalls());
    BSTR text = nullptr;
    EXPECT_HR(E_FAIL, token->GetLabel(&text));
    EXPECT_HR(E_FAIL, token->VerifyPIN(Text("1234"), 0));
    EXPECT_EQ(0u, token->Release());
    token = nullptr;
    EXPECT_TRUE(module.takeCalls().empty());
}

TEST_F(TokenTest, ATokenOpenedBeforeAnUnloadStaysUnusable) {
    provider->Unload();
    EXPECT_HR(S_OK, provider->Load(Text(module.path())));
    module.takeCalls();
    BSTR text = nullptr;
    EXPECT_HR(E_FAIL, token->GetLabel(&text));
    token->Release();
    token = nullptr;
    EXPECT_TRUE(module.takeCalls().empty());
}

TEST_F(ModuleLoadingTest, APlatformLibraryInTheCurrentDirectoryIsNotTaken) {
    // It lacks what strings are made by: taken for the platform, no string would be made.
    std::filesystem::copy_file(module.noListPath(), folder.work() / "OleAut32.dll");
    BSTR text = nullptr;
    EXPECT_HR(S_OK, provider->GetName(&text));
    EXPECT_EQ("PKCS#11", narrow(text));
    SysFreeString(text);
}

}  // namespace
}  // namespace zr::test
