// The member Load of the Automation server: paths, the configuration, the current folder, what its
// failures say. Windows only, as Automation is.
#include "tests/host/automation/automation_test.h"
#include "tests/host/automation/installed_server.h"

namespace fs = std::filesystem;

namespace zr::test {
namespace {

std::string utf8(const fs::path& path) {
    const std::u8string text = path.u8string();
    return {text.begin(), text.end()};
}

/// The error modes of this thread in which DLLs were loaded, while it lives.
class LoadModes {
public:
    LoadModes() {
        EXPECT_EQ(0, function<Register>("LdrRegisterDllNotification")(0, note, this, &m_cookie));
    }
    ~LoadModes() { function<Unregister>("LdrUnregisterDllNotification")(m_cookie); }
    LoadModes(const LoadModes&) = delete;
    LoadModes& operator=(const LoadModes&) = delete;

    std::vector<DWORD> modes;

private:
    using Notify = void(CALLBACK*)(ULONG reason, const void* data, void* context);
    using Register = LONG(NTAPI*)(ULONG flags, Notify function, void* context, void** cookie);
    using Unregister = LONG(NTAPI*)(void* cookie);
    static constexpr ULONG kLoaded = 1;

    template <class Function>
    static Function function(const char* name) {
        return reinterpret_cast<Function>(
            reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"ntdll.dll"), name)));
    }
    static void CALLBACK note(ULONG reason, const void*, void* context) {
        if (reason == kLoaded) {
            static_cast<LoadModes*>(context)->modes.push_back(GetThreadErrorMode());
        }
    }

    void* m_cookie = nullptr;
};

/// A module in a folder of its own, with a library that it needs.
class ServerLoadTest : public testing::Test {
protected:
    ServerLoadTest() {
        installModule("modules");
        // No configuration of the user's or the system's.
        setEnvironment("APPDATA", folder.home().string());
        setEnvironment("ProgramData", folder.home().string());
        setEnvironment("TEMP", folder.home().string());
        setEnvironment("TMP", folder.home().string());
    }
    ~ServerLoadTest() override {
        call(provider, "Unload");
        EXPECT_EQ(folder.work(), fs::current_path());
        EXPECT_TRUE(fs::is_empty(folder.home()));
    }

    static fs::path installModule(const fs::path& place) {
        fs::create_directories(place);
        const fs::path module = place / "module.dll";
        fs::copy_file(ZRKEY_DEPENDENT_MODULE, module);
        fs::copy_file(ZRKEY_DEPENDENCY, place / fs::path(ZRKEY_DEPENDENCY).filename());
        return module;
    }
    Answer load(const fs::path& path) const { return call(provider, "Load", text(utf8(path))); }
    std::string problemOf(const fs::path& path) const {
        const Answer answer = load(path);
        EXPECT_HR(DISP_E_EXCEPTION, answer.result);
        return answer.description;
    }
    std::string signAlgorithm() const {
        const ComRef<IDispatch> token = call(provider, "OpenKey", integer(0)).value.toObject();
        return token ? shown(call(token, "GetSignAlgo").value.get()) : "no token";
    }

    Apartment apartment;
    TempDir folder;
    ComRef<IDispatch> provider = makeAutomationProvider();
};

// Otherwise a window of the system about a drive or a DLL could wait in a client without a screen.
TEST_F(ServerLoadTest, LoadsShowNoWindowsOfTheSystem) {
    const InstalledServer server("installed");
    SetThreadErrorMode(SEM_NOOPENFILEERRORBOX, nullptr);
    const LoadModes loads;
    ComRef<IDispatch> other;
    EXPECT_HR(S_OK, server.createProvider(other));
    other.reset();
    const std::size_t ofLibrary = loads.modes.size();
    EXPECT_NE(0u, ofLibrary);
    EXPECT_ANSWER("B:true", load("modules/module.dll"));
    EXPECT_LT(ofLibrary, loads.modes.size());
    for (const DWORD mode : loads.modes) {
        EXPECT_EQ(DWORD{SEM_NOOPENFILEERRORBOX | SEM_FAILCRITICALERRORS}, mode);
    }
    EXPECT_EQ(DWORD{SEM_NOOPENFILEERRORBOX}, GetThreadErrorMode());
    SetThreadErrorMode(0, nullptr);
}

TEST_F(ServerLoadTest, PathMayBeAbsoluteOrRelative) {
    EXPECT_ANSWER("B:true", load(fs::absolute("modules/module.dll")));
    EXPECT_ANSWER("N:1", call(provider, "GetKeyCount"));
    EXPECT_ANSWER("B:true", call(provider, "Unload"));
    EXPECT_ANSWER("B:true", load("modules/module.dll"));
    EXPECT_ANSWER("N:1", call(provider, "GetKeyCount"));
}

TEST_F(ServerLoadTest, ConfigurationIsBuiltInUnlessThereIsAFile) {
    EXPECT_ANSWER("B:true", load("modules/module.dll"));
    EXPECT_EQ("S:SHA1WithRSA", signAlgorithm());
}

TEST_F(ServerLoadTest, ConfigurationOfTheCurrentFolderIsUsed) {
    folder.writeConfig("Own");
    EXPECT_ANSWER("B:true", load(fs::absolute("modules/module.dll")));
    EXPECT_EQ("S:Own", signAlgorithm());
}

/// In a process like those of clients, whose code page is not UTF-8.
class ServerLoadNamesTest : public ServerLoadTest {
protected:
    void SetUp() override { ASSERT_NE(UINT{CP_UTF8}, GetACP()); }
};

TEST_F(ServerLoadNamesTest, ModuleMayHaveBlanksAndAnyLetters) {
    const fs::path module = installModule(fs::path(L"Schl\u00FCssel \u043A\u043B\u044E\u0447"));
    EXPECT_ANSWER("B:true", load(module));
    EXPECT_ANSWER("N:1", call(provider, "GetKeyCount"));
}

TEST_F(ServerLoadNamesTest, CurrentFolderMayHaveBlanksAndAnyLetters) {
    const fs::path module = fs::absolute("modules/module.dll");
    const fs::path other = fs::path(L"Schl\u00FCssel \u043A\u043B\u044E\u0447");
    fs::create_directory(other);
    fs::current_path(other);
    EXPECT_ANSWER("B:true", load(module));
    EXPECT_ANSWER("B:true", call(provider, "Unload"));
    folder.writeConfig("Own");
    fs::rename(folder.work() / "config.xml", "config.xml");
    // A provider adds the lists of a second Load to those of the first.
    provider = makeAutomationProvider();
    EXPECT_ANSWER("B:true", load(module));
    EXPECT_EQ("S:Own", signAlgorithm());
    EXPECT_EQ(folder.work() / other, fs::current_path());
    fs::current_path(folder.work());
}

TEST_F(ServerLoadTest, FailureSaysTheCause) {
    EXPECT_EQ("Load failed: E_FAIL (0x80004005): it is a folder", problemOf("modules"));
    EXPECT_EQ("Load failed: E_FAIL (0x80004005): No such file or directory", problemOf("none.dll"));
    EXPECT_EQ("Load failed: E_OUTOFMEMORY (0x8007000E): it has no function C_GetFunctionList",
              problemOf(fs::path(ZRKEY_DEPENDENCY)));
    folder.write("config.xml", "<other/>");
    const std::string problem = problemOf("modules/module.dll");
    EXPECT_TRUE(problem.ends_with(" is not valid")) << problem;
    fs::remove("config.xml");
}

TEST_F(ServerLoadTest, FailureLeavesTheEarlierModule) {
    EXPECT_ANSWER("B:true", load("modules/module.dll"));
    problemOf("none.dll");
    EXPECT_ANSWER("N:1", call(provider, "GetKeyCount"));
}

}  // namespace
}  // namespace zr::test
