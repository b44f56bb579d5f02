// Modules that call the host back, and hosts that load or unload the module then.
#include <functional>

#include "tests/support/fixtures/token.h"

namespace zr::test {
namespace {

class ModuleReentryTest : public ModuleTest {
protected:
    HRESULT load() { return provider->Load(Text(module.path())); }

    /// Runs code once, from within the next call of a function of the module.
    void during(const char* function, std::function<void()> action) {
        m_action = std::move(action);
        module->callBack(
            function, [](void* test) { static_cast<ModuleReentryTest*>(test)->m_action(); }, this);
    }

    /// Loads the module, and unloads it during the next call of a function.
    void unloadDuring(const char* function) {
        EXPECT_HR(S_OK, load());
        during(function, [this] { EXPECT_HR(S_OK, provider->Unload()); });
    }

    ComRef<ITokenProvider> provider = makeProvider();
    ComRef<IKeyObject> token;
    INT keyCount = -1;

private:
    std::function<void()> m_action;
};

TEST_F(ModuleReentryTest, UnloadDuringTheFunctionListLetsLoadFinish) {
    during("C_GetFunctionList", [this] { EXPECT_HR(S_OK, provider->Unload()); });
    EXPECT_HR(S_OK, load());
    EXPECT_HR(S_OK, provider->GetKeyCount(&keyCount));
    EXPECT_EQ(1, keyCount);
    EXPECT_EQ(0u, module.count("C_Finalize"));
}

TEST_F(ModuleReentryTest, UnloadDuringInitializeLetsLoadFinish) {
    during("C_Initialize", [this] { EXPECT_HR(S_OK, provider->Unload()); });
    EXPECT_HR(S_OK, load());
    EXPECT_HR(S_OK, provider->OpenKey(0, token.receive()));
    EXPECT_TRUE(token);
}

TEST_F(ModuleReentryTest, LoadDuringInitializeLetsBothFinish) {
    during("C_Initialize", [this] { EXPECT_HR(S_OK, load()); });
    EXPECT_HR(S_OK, load());
    EXPECT_HR(S_OK, provider->OpenKey(0, token.receive()));
    EXPECT_TRUE(token);
}

TEST_F(ModuleReentryTest, UnloadDuringFinalizeFinalisesOnce) {
    EXPECT_HR(S_OK, load());
    during("C_Finalize", [this] { EXPECT_HR(S_OK, provider->Unload()); });
    EXPECT_HR(S_OK, provider->Unload());
    EXPECT_EQ(1u, module.count("C_Finalize"));
}

TEST_F(ModuleReentryTest, UnloadDuringTheSlotCountFailsGetKeyCount) {
    unloadDuring("C_GetSlotList");
    EXPECT_HR(E_FAIL, provider->GetKeyCount(&keyCount));
    EXPECT_EQ(0, keyCount);
}

TEST_F(ModuleReentryTest, UnloadDuringOpenSessionFailsOpenKey) {
    unloadDuring("C_OpenSession");
    EXPECT_HR(E_FAIL, provider->OpenKey(0, token.receive()));
    EXPECT_FALSE(token);
}

TEST_F(ModuleReentryTest, UnloadAndLoadDuringOpenSessionFailsOpenKey) {
    EXPECT_HR(S_OK, load());
    during("C_OpenSession", [this] {
        EXPECT_HR(S_OK, provider->Unload());
        EXPECT_HR(S_OK, load());
    });
    EXPECT_HR(E_FAIL, provider->OpenKey(0, token.receive()));
    EXPECT_FALSE(token);
    EXPECT_HR(S_OK, provider->OpenKey(0, token.receive()));
    EXPECT_TRUE(token);
}

TEST_F(ModuleReentryTest, UnloadDuringLoginFailsVerifyPin) {
    EXPECT_HR(S_OK, load());
    EXPECT_HR(S_OK, provider->OpenKey(0, token.receive()));
    during("C_Login", [this] { provider->Unload(); });
    EXPECT_HR(E_FAIL, token->VerifyPIN(Text("1234"), 0));
    module.takeCalls();
    token.reset();
    EXPECT_EQ(Lines{}, module.takeCalls());
}

TEST_F(ModuleReentryTest, UnloadByAnotherProviderDuringAReadFailsIt) {
    ComRef<ITokenProvider> other = makeProvider();
    EXPECT_HR(S_OK, other->Load(Text(module.path())));
    EXPECT_HR(S_OK, load());
    EXPECT_HR(S_OK, provider->OpenKey(0, token.receive()));
    during("C_GetTokenInfo", [&] { other->Unload(); });
    BSTR label = nullptr;
    EXPECT_HR(E_FAIL, token->GetLabel(&label));
    EXPECT_EQ(nullptr, label);
}

/// The same with a copy of the module that nothing but the library keeps in memory.
TEST_F(ModuleReentryTest, UnloadDuringACallFreesTheModuleAfterTheCall) {
    std::filesystem::copy_file(Recording::file(), "copy.dll");
    EXPECT_HR(S_OK, provider->Load(Text("copy.dll")));
    HMODULE copy = LoadLibraryA(std::filesystem::absolute("copy.dll").string().c_str());
    ASSERT_TRUE(copy);
    auto* control = reinterpret_cast<RecordingModule* (*)()>(
        reinterpret_cast<void*>(GetProcAddress(copy, "GetRecordingModule")))();
    control->callBack(
        "C_GetSlotList", [](void* loaded) { static_cast<ITokenProvider*>(loaded)->Unload(); },
        provider.get());
    FreeLibrary(copy);
    EXPECT_HR(E_FAIL, provider->GetKeyCount(&keyCount));
}

}  // namespace
}  // namespace zr::test
