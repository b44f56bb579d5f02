// Which files the Automation server loads, from where, and until when. Windows only, as Automation is.
#include "host/automation/interfaces.h"
#include "tests/host/automation/automation_test.h"
#include "tests/host/automation/installed_server.h"

namespace fs = std::filesystem;

namespace zr::test {
namespace {

constexpr const wchar_t* kClasses = L"Software\\Classes\\";

std::wstring textOf(const GUID& id) {
    wchar_t text[40];
    StringFromGUID2(id, text, sizeof text / sizeof *text);
    return text;
}

/// Whether this user has a key below Software\Classes.
bool hasKey(const std::wstring& path) {
    HKEY key = nullptr;
    const bool isThere =
        RegOpenKeyExW(HKEY_CURRENT_USER, (kClasses + path).c_str(), 0, KEY_READ, &key) == 0;
    RegCloseKey(key);
    return isThere;
}

/// A key below Software\Classes in which the system makes no keys that stay.
class VolatileKey {
public:
    explicit VolatileKey(const std::wstring& path) : m_path(kClasses + path) {
        HKEY key = nullptr;
        EXPECT_EQ(0, RegCreateKeyExW(HKEY_CURRENT_USER, m_path.c_str(), 0, nullptr,
                                     REG_OPTION_VOLATILE, KEY_WRITE, nullptr, &key, nullptr));
        RegCloseKey(key);
    }
    ~VolatileKey() { RegDeleteTreeW(HKEY_CURRENT_USER, m_path.c_str()); }
    VolatileKey(const VolatileKey&) = delete;
    VolatileKey& operator=(const VolatileKey&) = delete;

private:
    std::wstring m_path;
};

class ServerFilesTest : public testing::Test {
protected:
    Apartment apartment;
    TempDir folder;
};

TEST_F(ServerFilesTest, WorksInAFolderWithBlanksAndAnyLetters) {
    const InstalledServer server(fs::path(L"Schl\u00FCssel \u043A\u043B\u044E\u0447 \u9375"));
    const ComRef<IDispatch> provider = server.makeProvider();
    ASSERT_TRUE(provider);
    EXPECT_ANSWER("S:PKCS#11", call(provider, "GetName"));
    EXPECT_TRUE(server.hasLoadedLibrary());
    ComRef<ITypeInfo> info;
    EXPECT_HR(S_OK, provider->GetTypeInfo(0, 0, info.receive()));
}

TEST_F(ServerFilesTest, LibraryInTheCurrentFolderIsNotLoaded) {
    fs::copy_file(fs::path(ZRKEY_AUTOMATION_SERVER).replace_filename("zrkey.dll"), "zrkey.dll");
    const InstalledServer server("installed", InstalledServer::Files::kServerAlone);
    ComRef<IDispatch> provider;
    EXPECT_HR(HRESULT_FROM_WIN32(ERROR_MOD_NOT_FOUND), server.createProvider(provider));
    EXPECT_FALSE(provider);
    EXPECT_EQ(nullptr, GetModuleHandleW(fs::absolute("zrkey.dll").c_str()));
}

TEST_F(ServerFilesTest, ServersOfTwoFoldersLoadALibraryEach) {
    const InstalledServer first("first");
    const InstalledServer second("second");
    const ComRef<IDispatch> provider = first.makeProvider();
    EXPECT_TRUE(first.hasLoadedLibrary());
    EXPECT_FALSE(second.hasLoadedLibrary());
    const ComRef<IDispatch> other = second.makeProvider();
    EXPECT_TRUE(second.hasLoadedLibrary());
}

TEST_F(ServerFilesTest, LibraryIsLoadedFromTheFirstObjectUntilTheServerCanBeUnloaded) {
    const InstalledServer server("installed");
    EXPECT_FALSE(server.hasLoadedLibrary());
    for (int i = 0; i < 3; ++i) {
        ComRef<IDispatch> provider = server.makeProvider();
        EXPECT_HR(S_FALSE, server.canUnloadNow());
        EXPECT_TRUE(server.hasLoadedLibrary());
        EXPECT_ANSWER("S:PKCS#11", call(provider, "GetName"));
        provider.reset();
        EXPECT_TRUE(server.hasLoadedLibrary());
        EXPECT_HR(S_OK, server.canUnloadNow());
        EXPECT_FALSE(server.hasLoadedLibrary());
    }
}

TEST_F(ServerFilesTest, RegistrationNeedsTheLibrary) {
    const InstalledServer server("installed", InstalledServer::Files::kServerAlone);
    EXPECT_HR(HRESULT_FROM_WIN32(ERROR_MOD_NOT_FOUND), server.install(true, L"user"));
    EXPECT_FALSE(hasKey(L"CLSID\\" + textOf(CLSID_TokenProvider)));
}

TEST_F(ServerFilesTest, UnregistrationLeavesTheEntriesOfAnotherCopy) {
    const std::wstring key = L"CLSID\\" + textOf(CLSID_TokenProvider) + L"\\InprocServer32";
    const InstalledServer first("first");
    const InstalledServer second("second");
    ASSERT_HR(S_OK, first.install(true, L"user"));
    EXPECT_HR(S_OK, second.install(false, L"user"));
    EXPECT_TRUE(hasKey(key));
    EXPECT_TRUE(hasKey(L"ZRKey.TokenProvider"));
    EXPECT_HR(S_OK, first.install(false, L"user"));
    EXPECT_FALSE(hasKey(key));
    EXPECT_FALSE(hasKey(L"ZRKey.TokenProvider"));
}

TEST_F(ServerFilesTest, RegistrationOfACopyReplacesThatOfAnother) {
    const InstalledServer first("first");
    const InstalledServer second("second");
    ASSERT_HR(S_OK, first.install(true, L"user"));
    ASSERT_HR(S_OK, second.install(true, L"user"));
    EXPECT_HR(S_OK, second.install(false, L"user"));
    EXPECT_FALSE(hasKey(L"ZRKey.TokenProvider"));
}

TEST_F(ServerFilesTest, UnregistrationLeavesEmptyKeysThatServersShare) {
    for (const wchar_t* const key : {L"CLSID", L"TypeLib", L"Interface"}) {
        HKEY made = nullptr;
        EXPECT_EQ(0,
                  RegCreateKeyW(HKEY_CURRENT_USER, (kClasses + std::wstring(key)).c_str(), &made));
        RegCloseKey(made);
    }
    const InstalledServer server("installed");
    ASSERT_HR(S_OK, server.install(true, L"user"));
    EXPECT_HR(S_OK, server.install(false, L"user"));
    for (const wchar_t* const key : {L"CLSID", L"TypeLib", L"Interface"}) {
        EXPECT_TRUE(hasKey(key));
    }
}

TEST_F(ServerFilesTest, InstallAcceptsOnlyUserAndMachine) {
    const InstalledServer server("installed");
    EXPECT_HR(E_INVALIDARG, server.install(true, L"other"));
    EXPECT_HR(E_INVALIDARG, server.install(false, L"users"));
    // Nothing is registered for this user.
    EXPECT_HR(S_OK, server.install(false, L"USER"));
}

TEST_F(ServerFilesTest, FailedRegistrationLeavesNothing) {
    const InstalledServer server("installed");
    const VolatileKey obstacle(L"TypeLib\\" + textOf(LIBID_ZRKeyAutomation));
    EXPECT_HR(HRESULT_FROM_WIN32(ERROR_CHILD_MUST_BE_VOLATILE), server.install(true, L"user"));
    // These come before the type library.
    EXPECT_FALSE(hasKey(L"CLSID\\" + textOf(CLSID_TokenProvider)));
    EXPECT_FALSE(hasKey(L"ZRKey.TokenProvider"));
    EXPECT_FALSE(hasKey(L"ZRKey.TokenProvider.1"));
}

}  // namespace
}  // namespace zr::test
