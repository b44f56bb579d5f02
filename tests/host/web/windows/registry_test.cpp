// The keys by which browsers of Windows find zrkey-browser. On Windows alone, which has a registry.
#include <windows.h>

#include "host/system/utf8_path.h"
#include "host/web/extension_ids.h"
#include "host/web/host_registration.h"
#include "tests/host/web/web_test.h"

namespace fs = std::filesystem;

namespace zr::test {
namespace {

using host::Browser;
using host::ManifestState;
using host::SettingsScope;

const std::string kTestKey = "Software\\ZRKey test\\";
const std::string kHost = "\\NativeMessagingHosts\\zrkey.browser";

class RegistryTest : public WebTest {
protected:
    RegistryTest() : manifest{makeProgram(folder.root() / "bin"), host::ownExtensions()} {}

    static bool exists(HKEY root, const std::string& key) {
        HKEY open = nullptr;
        const bool isOpen = RegOpenKeyExA(root, key.c_str(), 0, KEY_READ, &open) == ERROR_SUCCESS;
        if (isOpen) {
            RegCloseKey(open);
        }
        return isOpen;
    }
    /// The value without a name; empty when there is none.
    static fs::path value(HKEY root, const std::string& key) {
        wchar_t text[1000] = {};
        DWORD size = sizeof text;
        RegGetValueW(root, host::toPath(key).c_str(), nullptr, RRF_RT_REG_SZ, nullptr, text, &size);
        return text;
    }
    static void setValue(const std::string& key, const std::wstring& text) {
        ASSERT_EQ(
            ERROR_SUCCESS,
            RegSetKeyValueW(HKEY_CURRENT_USER, host::toPath(key).c_str(), nullptr, REG_SZ,
                            text.c_str(), static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t))));
    }
    host::ManifestReport examine(Browser browser) const {
        return host::examineRegistration(browser, SettingsScope::kUser, manifest).report;
    }

    host::HostManifest manifest;
};

TEST_F(RegistryTest, EachBrowserHasItsKey) {
    host::replaceWebPlaces(std::nullopt);
    const auto key = [](Browser browser) {
        return host::manifestKey(browser, SettingsScope::kUser);
    };
    EXPECT_EQ("HKCU\\Software\\Chromium" + kHost, key(Browser::kChromium));
    EXPECT_EQ("HKCU\\Software\\Google\\Chrome" + kHost, key(Browser::kChrome));
    EXPECT_EQ("HKCU\\Software\\Microsoft\\Edge" + kHost, key(Browser::kEdge));
    EXPECT_EQ("HKCU\\Software\\Mozilla" + kHost, key(Browser::kFirefox));
    EXPECT_EQ("HKLM\\Software\\Mozilla" + kHost,
              host::manifestKey(Browser::kFirefox, SettingsScope::kSystem));
}

TEST_F(RegistryTest, KeyNamesTheManifest) {
    for (const SettingsScope scope : {SettingsScope::kUser, SettingsScope::kSystem}) {
        host::installHost(Browser::kChrome, scope, manifest, false);
        const HKEY root = scope == SettingsScope::kUser ? HKEY_CURRENT_USER : HKEY_LOCAL_MACHINE;
        fs::path expected = host::ownManifest(Browser::kChrome, scope).value();
        EXPECT_EQ(expected.make_preferred().native(),
                  value(root, kTestKey + "Google\\Chrome" + kHost).native());
    }
}

TEST_F(RegistryTest, UninstallRemovesEmptyKeysAndKeepsOthers) {
    host::installHost(Browser::kChrome, SettingsScope::kUser, manifest, false);
    host::installHost(Browser::kEdge, SettingsScope::kUser, manifest, false);
    setValue(kTestKey + "Google\\Chrome\\NativeMessagingHosts\\other.host", L"C:\\other.json");
    host::uninstallHost(Browser::kChrome, SettingsScope::kUser, manifest, false);
    host::uninstallHost(Browser::kEdge, SettingsScope::kUser, manifest, false);
    EXPECT_FALSE(exists(HKEY_CURRENT_USER, kTestKey + "Google\\Chrome" + kHost));
    EXPECT_EQ(
        "C:\\other.json",
        value(HKEY_CURRENT_USER, kTestKey + "Google\\Chrome\\NativeMessagingHosts\\other.host"));
    EXPECT_FALSE(exists(HKEY_CURRENT_USER, kTestKey + "Microsoft"));
}

TEST_F(RegistryTest, KeyOfAMissingManifestIsBrokenAndRepaired) {
    host::installHost(Browser::kFirefox, SettingsScope::kUser, manifest, false);
    fs::remove(host::ownManifest(Browser::kFirefox, SettingsScope::kUser).value());
    EXPECT_EQ(ManifestState::kBroken, examine(Browser::kFirefox).state);
    EXPECT_EQ("does not exist, but is named by HKCU\\" + kTestKey + "Mozilla" + kHost,
              examine(Browser::kFirefox).problem);
    host::installHost(Browser::kFirefox, SettingsScope::kUser, manifest, false);
    EXPECT_EQ(ManifestState::kInstalled, examine(Browser::kFirefox).state);
}

TEST_F(RegistryTest, ManifestOfAPackageStaysWhenItsKeyIsRemoved) {
    const fs::path packaged = folder.root() / "packaged.json";
    writeFile(packaged, host::manifestText(Browser::kFirefox, manifest));
    setValue(kTestKey + "Mozilla" + kHost, packaged.wstring());
    EXPECT_EQ(ManifestState::kInstalled, examine(Browser::kFirefox).state);
    host::uninstallHost(Browser::kFirefox, SettingsScope::kUser, manifest, false);
    EXPECT_EQ(ManifestState::kMissing, examine(Browser::kFirefox).state);
    EXPECT_TRUE(fs::exists(packaged));
}

TEST_F(RegistryTest, ManifestMayNameItsProgramRelativeToItself) {
    host::HostManifest relative = manifest;
    relative.program = fs::path("bin") / manifest.program.filename();
    const fs::path packaged = folder.root() / "packaged.json";
    writeFile(packaged, host::manifestText(Browser::kFirefox, relative));
    setValue(kTestKey + "Mozilla" + kHost, packaged.wstring());
    EXPECT_EQ("", examine(Browser::kFirefox).problem);
}

TEST_F(RegistryTest, ManifestElsewhereOfAnotherProgramIsForeign) {
    const fs::path other = folder.root() / "other.json";
    writeFile(other, R"({"name": "other.host"})");
    setValue(kTestKey + "Chromium" + kHost, other.wstring());
    EXPECT_NE("-", failureOf([&] {
                  host::installHost(Browser::kChromium, SettingsScope::kUser, manifest, false);
              }));
    EXPECT_EQ(other.native(), value(HKEY_CURRENT_USER, kTestKey + "Chromium" + kHost).native());
}

TEST_F(RegistryTest, ValueThatIsNotATextIsForeign) {
    const DWORD number = 1;
    ASSERT_EQ(ERROR_SUCCESS,
              RegSetKeyValueA(HKEY_CURRENT_USER, (kTestKey + "Chromium" + kHost).c_str(), nullptr,
                              REG_DWORD, &number, sizeof number));
    EXPECT_EQ(ManifestState::kForeign, examine(Browser::kChromium).state);
}

}  // namespace
}  // namespace zr::test
