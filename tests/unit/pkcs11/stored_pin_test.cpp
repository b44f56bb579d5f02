// How long a token object keeps the PIN of its login. The library never reads it; these tests look
// for it in the bytes of the object.
#include "pkcs11/token_pkcs11.h"
#include "tests/support/fixtures/token.h"

namespace zr::test {
namespace {

class StoredPinTest : public ModuleTest {
protected:
    StoredPinTest() {
        module->settings().userPin = "secret-1";
        EXPECT_HR(S_OK, provider->Load(Text(module.path())));
    }

    static ComRef<KeyObject_pkcs11> openToken(TokenProvider_pkcs11& from) {
        ComRef<IKeyObject> opened;
        EXPECT_HR(S_OK, from.OpenKey(0, opened.receive()));
        ComRef<KeyObject_pkcs11> token;
        token.reset(static_cast<KeyObject_pkcs11*>(opened.release()));
        EXPECT_HR(S_OK, token->VerifyPIN(Text("secret-1"), 0));
        EXPECT_TRUE(holdsPin(token));
        return token;
    }

    static bool holdsPin(const ComRef<KeyObject_pkcs11>& token) {
        const std::string_view bytes(reinterpret_cast<const char*>(token.get()),
                                     sizeof(KeyObject_pkcs11));
        return bytes.find("ecret-1") != bytes.npos;
    }

    ComRef<TokenProvider_pkcs11> provider = makeObject<TokenProvider_pkcs11>();
};

TEST_F(StoredPinTest, CloseKeyWipesThePin) {
    const auto token = openToken(*provider.get());
    EXPECT_HR(S_OK, token->CloseKey());
    EXPECT_FALSE(holdsPin(token));
}

TEST_F(StoredPinTest, FailedLoginKeepsThePinOfThePreviousOne) {
    const auto token = openToken(*provider.get());
    EXPECT_HR(E_FAIL, token->VerifyPIN(Text("wrong"), 0));
    EXPECT_TRUE(holdsPin(token));
}

TEST_F(StoredPinTest, UnloadWipesThePinsOfAllItsTokens) {
    const auto first = openToken(*provider.get());
    const auto second = openToken(*provider.get());
    EXPECT_HR(S_OK, provider->Unload());
    EXPECT_FALSE(holdsPin(first));
    EXPECT_FALSE(holdsPin(second));
}

TEST_F(StoredPinTest, UnloadByAnotherProviderOverTheModuleWipesThePin) {
    const auto token = openToken(*provider.get());
    auto other = makeObject<TokenProvider_pkcs11>();
    EXPECT_HR(S_OK, other->Load(Text(module.path())));
    EXPECT_HR(S_OK, other->Unload());
    EXPECT_FALSE(holdsPin(token));
}

TEST_F(StoredPinTest, UnloadOfAnotherModuleKeepsThePin) {
    const auto token = openToken(*provider.get());
    std::filesystem::copy_file(Recording::file(), "copy.dll");
    auto other = makeObject<TokenProvider_pkcs11>();
    EXPECT_HR(S_OK, other->Load(Text("copy.dll")));
    EXPECT_HR(S_OK, other->Unload());
    EXPECT_TRUE(holdsPin(token));
}

TEST_F(StoredPinTest, UnloadWipesThePinOfATokenThatDeleteFileKeeps) {
    module.addData("6", "contents");
    auto token = openToken(*provider.get());
    EXPECT_HR(S_OK, token->DeleteFile(Text("7")));
    KeyObject_pkcs11* const kept = token.get();
    token.reset();
    EXPECT_HR(S_OK, provider->Unload());
    const std::string_view bytes(reinterpret_cast<const char*>(kept), sizeof *kept);
    EXPECT_EQ(bytes.npos, bytes.find("ecret-1"));
}

}  // namespace
}  // namespace zr::test
