// When the library frees a module.
#include <filesystem>
#include <stdexcept>

#include "tests/support/fixtures/token.h"

namespace zr::test {
namespace {

/// A copy of a module in the current directory, loaded by this test and the library: it loses its
/// mark when both have freed it.
class ModuleCopy {
public:
    explicit ModuleCopy(const std::string& file) {
        std::filesystem::copy_file(file, "copy.dll");
        hold();
        *mark() = 1;
    }
    ModuleCopy(const ModuleCopy&) = delete;
    ModuleCopy& operator=(const ModuleCopy&) = delete;
    ~ModuleCopy() { FreeLibrary(m_module); }

    static std::string path() { return "copy.dll"; }

    RecordingModule* operator->() const {
        return reinterpret_cast<RecordingModule* (*)()>(entry("GetRecordingModule"))();
    }

    /// Whether only the test had it loaded.
    bool isFree() {
        FreeLibrary(m_module);
        hold();
        const bool wasFreed = *mark() == 0;
        *mark() = 1;
        return wasFreed;
    }

    /// Frees a reference that the library keeps: Windows does not remove a loaded file.
    void giveBackOneReference() { FreeLibrary(m_module); }

private:
    void hold() {
        m_module = LoadLibraryA(std::filesystem::absolute(path()).string().c_str());
        if (!m_module) {
            throw std::runtime_error("the copy does not load");
        }
    }
    void* entry(const char* name) const {
        return reinterpret_cast<void*>(GetProcAddress(m_module, name));
    }
    int* mark() const { return reinterpret_cast<int* (*)()>(entry("GetModuleMark"))(); }

    HMODULE m_module = nullptr;
};

class ModuleReleaseTest : public ModuleTest {
protected:
    HRESULT load() { return provider->Load(Text(ModuleCopy::path())); }

    ComRef<ITokenProvider> provider = makeProvider();
};

TEST_F(ModuleReleaseTest, UnloadFreesTheModule) {
    ModuleCopy copy(module.file());
    EXPECT_HR(S_OK, load());
    EXPECT_FALSE(copy.isFree());
    provider->Unload();
    EXPECT_TRUE(copy.isFree());
}

TEST_F(ModuleReleaseTest, LastReleaseFreesTheModule) {
    ModuleCopy copy(module.file());
    EXPECT_HR(S_OK, load());
    provider.reset();
    EXPECT_TRUE(copy.isFree());
}

TEST_F(ModuleReleaseTest, LoadOfALibraryWithoutAFunctionListFreesIt) {
    ModuleCopy copy(module.noListFile());
    EXPECT_HR(E_OUTOFMEMORY, load());
    EXPECT_TRUE(copy.isFree());
}

TEST_F(ModuleReleaseTest, LoadWithAFailedFunctionListFreesTheModule) {
    ModuleCopy copy(module.file());
    copy->settings().functionListResult = CKR_GENERAL_ERROR;
    EXPECT_HR(E_OUTOFMEMORY, load());
    EXPECT_TRUE(copy.isFree());
}

TEST_F(ModuleReleaseTest, LoadWithAFailedInitialisationFreesTheModule) {
    ModuleCopy copy(module.file());
    copy->fail("C_Initialize", 1, CKR_GENERAL_ERROR);
    EXPECT_HR(E_FAIL, load());
    EXPECT_TRUE(copy.isFree());
}

TEST_F(ModuleReleaseTest, SecondLoadKeepsTheFirstModuleLoaded) {
    ModuleCopy copy(module.file());
    EXPECT_HR(S_OK, load());
    EXPECT_HR(S_OK, provider->Load(Text(module.path())));
    EXPECT_FALSE(copy.isFree());
    copy.giveBackOneReference();
}

TEST_F(ModuleReleaseTest, SecondLoadOfOneModuleAddsAReferenceToIt) {
    ModuleCopy copy(module.file());
    EXPECT_HR(S_OK, load());
    EXPECT_HR(S_OK, load());
    provider->Unload();
    EXPECT_FALSE(copy.isFree());
    copy.giveBackOneReference();
}

TEST_F(ModuleReleaseTest, LoadWithoutAConfigurationKeepsTheModule) {
    ModuleCopy copy(module.file());
    std::filesystem::remove("config.xml");
    EXPECT_HR(E_FAIL, load());
    EXPECT_FALSE(copy.isFree());
}

}  // namespace
}  // namespace zr::test
