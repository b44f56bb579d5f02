// When the library gives a module back to the system.
#include <filesystem>
#include <stdexcept>

#include "tests/contract/token.h"

namespace zr::test {
namespace {

/// A module's file in the current directory, which this test and the library load: its mark is lost
/// when the last of them frees it.
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

    /// Whether nobody but the test had it loaded.
    bool isFree() {
        FreeLibrary(m_module);
        hold();
        const bool wasFreed = *mark() == 0;
        *mark() = 1;
        return wasFreed;
    }

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
    ~ModuleReleaseTest() override {
        if (provider) {
            provider->Release();
        }
    }

    HRESULT load() { return provider->Load(Text(ModuleCopy::path())); }

    ITokenProvider* provider = makeProvider();
};

TEST_F(ModuleReleaseTest, UnloadFreesTheModule) {
    ModuleCopy copy(module.file());
    EXPECT_HR(S_OK, load());
    EXPECT_FALSE(copy.isFree());
    provider->Unload();
    EXPECT_TRUE(copy.isFree());
}

TEST_F(ModuleReleaseTest, TheLastReleaseFreesTheModule) {
    ModuleCopy copy(module.file());
    EXPECT_HR(S_OK, load());
    provider->Release();
    provider = nullptr;
    EXPECT_TRUE(copy.isFree());
}

TEST_F(ModuleReleaseTest, ALibraryWithoutAFunctionListIsFreed) {
    ModuleCopy copy(module.noListFile());
    EXPECT_HR(E_OUTOFMEMORY, load());
    EXPECT_TRUE(copy.isFree());
}

TEST_F(ModuleReleaseTest, AModuleWhoseFunctionListFailsIsFreed) {
    ModuleCopy copy(module.file());
    copy->settings().functionListResult = CKR_GENERAL_ERROR;
    EXPECT_HR(E_OUTOFMEMORY, load());
    EXPECT_TRUE(copy.isFree());
}

TEST_F(ModuleReleaseTest, AModuleThatDoesNotInitialiseIsFreed) {
    ModuleCopy copy(module.file());
    copy->fail("C_Initialize", 1, CKR_GENERAL_ERROR);
    EXPECT_HR(E_FAIL, load());
    EXPECT_TRUE(copy.isFree());
}

TEST_F(ModuleReleaseTest, AModuleWithoutAConfigurationStays) {
    ModuleCopy copy(module.file());
    std::filesystem::remove("config.xml");
    EXPECT_HR(E_FAIL, load());
    EXPECT_FALSE(copy.isFree());
}

}  // namespace
}  // namespace zr::test
