// Loading and unloading a module, its configuration, counting and opening tokens.
#include <algorithm>
#include <filesystem>

#include "tests/support/fixtures/token.h"
#include "tests/support/log_file.h"

namespace zr::test {
namespace {

class ModuleLoadingTest : public ModuleTest {
protected:
    HRESULT load() { return provider->Load(Text(module.path())); }

    std::string listText() {
        ComRef<IKeyObject> token;
        EXPECT_HR(S_OK, provider->OpenKey(0, token.receive()));
        Text text;
        token->GetSignAlgo(text.receive());
        return narrow(text);
    }

    ComRef<ITokenProvider> provider = makeProvider();
};

TEST_F(ModuleLoadingTest, LoadInitialisesTheModuleWithoutArguments) {
    EXPECT_HR(S_OK, load());
    EXPECT_EQ(Lines{"C_Initialize(null)"}, module.takeCalls());
}

TEST_F(ModuleLoadingTest, LoadOfAnAbsolutePathPrefixesTheDirectory) {
    const auto path = std::filesystem::absolute(module.path()).lexically_normal();
    EXPECT_HR(E_FAIL, provider->Load(Text(path.string())));
    EXPECT_TRUE(module.takeCalls().empty());
}

TEST_F(ModuleLoadingTest, LoadOfALibraryWithoutAFunctionListReturnsOutOfMemory) {
    EXPECT_HR(E_OUTOFMEMORY, provider->Load(Text(module.noListPath())));
    INT count = 0;
    EXPECT_HR(E_FAIL, provider->GetKeyCount(&count));
}

TEST_F(ModuleLoadingTest, LoadWithAFailedOrNullFunctionListReturnsOutOfMemory) {
    module->settings().functionListResult = CKR_GENERAL_ERROR;
    EXPECT_HR(E_OUTOFMEMORY, load());
    module->settings().functionListResult = CKR_OK;
    module->settings().functionListIsNull = true;
    EXPECT_HR(E_OUTOFMEMORY, load());
    EXPECT_TRUE(module.takeCalls().empty());
    INT count = 0;
    EXPECT_HR(E_FAIL, provider->GetKeyCount(&count));
}

TEST_F(ModuleLoadingTest, LoadWithAFailedInitialisationFails) {
    module->fail("C_Initialize", 1, CKR_GENERAL_ERROR);
    EXPECT_HR(E_FAIL, load());
    INT count = 0;
    EXPECT_HR(E_FAIL, provider->GetKeyCount(&count));
    EXPECT_EQ(Lines{"C_Initialize(null)"}, module.takeCalls());
    provider->Unload();
    EXPECT_TRUE(module.takeCalls().empty());
}

TEST_F(ModuleLoadingTest, LoadWithoutAnInitialiseFunctionFails) {
    module->removeEntry(0);
    EXPECT_HR(E_FAIL, load());
}

TEST_F(ModuleLoadingTest, LoadOfAnInitialisedModuleSucceeds) {
    module->fail("C_Initialize", 1, CKR_CRYPTOKI_ALREADY_INITIALIZED);
    EXPECT_HR(S_OK, load());
}

TEST_F(ModuleLoadingTest, LoadWithoutAConfigurationFailsAndKeepsTheModule) {
    std::filesystem::remove("config.xml");
    EXPECT_HR(E_FAIL, load());
    INT count = 0;
    EXPECT_HR(S_OK, provider->GetKeyCount(&count));
    EXPECT_EQ(1, count);
}

TEST_F(ModuleLoadingTest, LoadWithAMalformedConfigurationFails) {
    for (const char* text : {"", "no xml", "<driver>", "<other><driver/></other>", "<Driver/>",
                             "<?xml version=\"1.0\"?>"}) {
        folder.write("config.xml", text);
        EXPECT_HR(E_FAIL, load()) << text;
        EXPECT_HR(S_OK, provider->Unload());
    }
}

TEST_F(ModuleLoadingTest, LoadWithTwoListsReadsTheFirst) {
    folder.write("config.xml",
                 "<!-- lists --><driver a='b'><x/><algo>One;Two</algo><algo>Three</algo></driver>");
    EXPECT_HR(S_OK, load());
    EXPECT_EQ("One;Two", listText());
}

TEST_F(ModuleLoadingTest, LoadDecodesEntitiesAndKeepsBlanks) {
    folder.write("config.xml", "<driver><algo> A&amp;B  </algo></driver>");
    EXPECT_HR(S_OK, load());
    EXPECT_EQ(" A&B  ", listText());
}

TEST_F(ModuleLoadingTest, LoadOfADriverWithoutListsSucceeds) {
    folder.write("config.xml", "<driver/>");
    EXPECT_HR(S_OK, load());
    EXPECT_EQ("", listText());
}

TEST_F(ModuleLoadingTest, LoadOfAPathAboveTheRootPassesTheRestToTheLoader) {
    // One library for each target, which the system finds by its name; neither is a module.
    std::vector<HRESULT> results;
    for (const std::string name : {"libm.so.6", "kernel32.dll"}) {
        results.push_back(provider->Load(Text(aboveTheRoot("../" + name))));
    }
    std::sort(results.begin(), results.end());
    EXPECT_EQ((std::vector<HRESULT>{E_FAIL, E_OUTOFMEMORY}), results);
}

TEST_F(ModuleLoadingTest, SecondLoadAppendsTheLists) {
    EXPECT_HR(S_OK, load());
    EXPECT_HR(S_OK, load());
    EXPECT_EQ("RSARSA", listText());
}

TEST_F(ModuleLoadingTest, LoadOfAListOf499BytesSucceeds) {
    folder.writeConfig(std::string(499, 'a'), "");
    EXPECT_HR(S_OK, load());
    EXPECT_EQ(std::string(499, 'a'), listText());
}

TEST_F(ModuleLoadingTest, LoadOfALongerListFailsAndKeepsTheModule) {
    for (const std::size_t length : {500, 5000000}) {
        folder.writeConfig("", std::string(length, 'd'));
        EXPECT_HR(E_FAIL, load());
        EXPECT_EQ("", listText());
        provider->Unload();
    }
}

TEST_F(ModuleLoadingTest, LoadLogsTheLists) {
    folder.enableLog();
    ComRef<ITokenProvider> logging = makeProvider();
    EXPECT_HR(S_OK, logging->Load(Text(module.path())));
    Lines lines = readLogLines(folder.home());
    lines.erase(lines.begin(), lines.begin() + 5);
    EXPECT_EQ((Lines{"[Load] Begin", "[LoadConfig] algoList=[RSA]", "[LoadConfig] digestList=[MD5]",
                     "[Load] End"}),
              lines);
}

TEST_F(ModuleLoadingTest, ReleaseAfterUnloadDoesNotFinaliseAgain) {
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
    EXPECT_EQ(1u, provider->Release());
    provider.reset();
    EXPECT_TRUE(module.takeCalls().empty());
}

TEST_F(ModuleLoadingTest, LastReleaseFinalisesTheModule) {
    ComRef<ITokenProvider> other = makeProvider();
    EXPECT_HR(S_OK, other->Load(Text(module.path())));
    module.takeCalls();
    EXPECT_EQ(0u, other.release()->Release());
    EXPECT_EQ(Lines{"C_Finalize(null)"}, module.takeCalls());
}

TEST_F(LoadedProviderTest, GetKeyCountCountsSlotsWithATokenOnly) {
    module->settings().slotCount = 3;
    INT count = 0;
    EXPECT_HR(S_OK, provider->GetKeyCount(&count));
    EXPECT_EQ(3, count);
    EXPECT_EQ(Lines{"C_GetSlotList(1, null)"}, module.takeCalls());
}

TEST_F(LoadedProviderTest, GetKeyCountFailsWhenTheModuleFails) {
    module->fail("C_GetSlotList", 1, CKR_DEVICE_REMOVED);
    INT count = 3;
    EXPECT_HR(E_FAIL, provider->GetKeyCount(&count));
    EXPECT_EQ(0, count);
    EXPECT_HR(E_INVALIDARG, provider->GetKeyCount(nullptr));
}

TEST_F(LoadedProviderTest, GetKeyCountWithoutATokenReturnsZero) {
    module->settings().slotCount = 0;
    INT count = 3;
    EXPECT_HR(S_OK, provider->GetKeyCount(&count));
    EXPECT_EQ(0, count);
    void* key = nullptr;
    EXPECT_HR(E_FAIL, provider->OpenKey(0, &key));
    EXPECT_EQ(nullptr, key);
}

TEST_F(LoadedProviderTest, OpenKeyOpensAReadWriteSessionOnTheSlotOfTheIndex) {
    module->settings().slotCount = module->settings().slotCountWhenListed = 2;
    ComRef<IKeyObject> token;
    EXPECT_HR(S_OK, provider->OpenKey(1, token.receive()));
    EXPECT_EQ((Lines{"C_GetSlotList(1, null)", "C_GetSlotList(1, list)",
                     "C_OpenSession(11, 6, set, null)"}),
              module.takeCalls());
    EXPECT_EQ(2u, token->AddRef());
    EXPECT_EQ(1u, token->Release());
    EXPECT_EQ(0u, token.release()->Release());
    EXPECT_EQ(Lines{"C_CloseSession(1)"}, module.takeCalls());
}

TEST_F(LoadedProviderTest, OpenKeyWithAnIndexOutOfRangeFails) {
    void* key = nullptr;
    EXPECT_HR(E_INVALIDARG, provider->OpenKey(-1, &key));
    EXPECT_HR(E_INVALIDARG, provider->OpenKey(0, nullptr));
    EXPECT_TRUE(module.takeCalls().empty());
    EXPECT_HR(E_FAIL, provider->OpenKey(1, &key));
    EXPECT_HR(E_FAIL, provider->OpenKey(2147483647, &key));
    EXPECT_EQ(nullptr, key);
}

TEST_F(LoadedProviderTest, OpenKeyAfterTheSlotsChangedSucceedsWithoutAToken) {
    void* key = this;
    module->settings().slotCountWhenListed = 0;
    EXPECT_HR(S_OK, provider->OpenKey(0, &key));
    module->settings().slotCountWhenListed = 1;
    module->fail("C_GetSlotList", 2, CKR_BUFFER_TOO_SMALL);
    EXPECT_HR(S_OK, provider->OpenKey(0, &key));
    EXPECT_EQ(this, key);
    EXPECT_EQ(0u, module.count("C_OpenSession"));
}

TEST_F(LoadedProviderTest, OpenKeyWithAGrowingOrImpossibleSlotCountStaysInBounds) {
    ComRef<IKeyObject> key;
    module->settings().slotCountWhenListed = 1000000;
    EXPECT_HR(S_OK, provider->OpenKey(0, key.receive()));
    key.reset();
    constexpr CK_ULONG kMost = CK_ULONG{1} << 20;
    for (const CK_ULONG count : {CK_UNAVAILABLE_INFORMATION, kMost + 1}) {
        module->settings().slotCount = count;
        EXPECT_HR(E_FAIL, provider->OpenKey(0, key.receive()));
        EXPECT_FALSE(key);
    }
    module->settings().slotCount = kMost;
    EXPECT_HR(S_OK, provider->OpenKey(0, key.receive()));
}

TEST_F(LoadedProviderTest, OpenKeyFailsWhenTheModuleFails) {
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

TEST_F(LoadedProviderTest, OpenKeyDoesNotFreeTheApplicationOfTheModule) {
    module->settings().setsApplication = true;
    ComRef<IKeyObject> key;
    EXPECT_HR(S_OK, provider->OpenKey(0, key.receive()));
    EXPECT_EQ(0u, key.release()->Release());
}

TEST_F(TokenTest, ReleaseOfAProviderWithATokenKeepsTheProviderAlive) {
    EXPECT_EQ(2u, provider->AddRef() - 1);
    EXPECT_EQ(2u, provider->Release());
    EXPECT_EQ(1u, provider.release()->Release());
    EXPECT_EQ(0u, token.release()->Release());
    EXPECT_EQ((Lines{"C_CloseSession(1)", "C_Finalize(null)"}), module.takeCalls());
}

TEST_F(ModuleLoadingTest, GetNameIgnoresAPlatformLibraryInTheCurrentDirectory) {
    // It lacks the string functions: if it were used as the platform, GetName would fail.
    std::filesystem::copy_file(module.noListPath(), folder.work() / "OleAut32.dll");
    Text text;
    EXPECT_HR(S_OK, provider->GetName(text.receive()));
    EXPECT_EQ("PKCS#11", narrow(text));
}

}  // namespace
}  // namespace zr::test
