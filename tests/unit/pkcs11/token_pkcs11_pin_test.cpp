// What a token object stores about its login. The library never reads the type of the login;
// compiled users of the class may. These tests look for it in the bytes of the object.
#include <cstring>

#include "pkcs11/token_pkcs11.h"
#include "tests/support/fixtures/token.h"

namespace zr::test {
namespace {

class TokenPkcs11PinTest : public ModuleTest {
protected:
    TokenPkcs11PinTest() {
        // One PIN for both users: a login then differs from another by its type alone.
        module->settings().userPin = module->settings().securityOfficerPin = "12345678";
        EXPECT_HR(S_OK, provider->Load(Text(module.path())));
        ComRef<IKeyObject> opened;
        EXPECT_HR(S_OK, provider->OpenKey(0, opened.receive()));
        token.reset(static_cast<KeyObject_pkcs11*>(opened.release()));
    }

    /// The bytes of the object after a login.
    std::string afterLogin(const char* pin, INT type, HRESULT expected) {
        EXPECT_HR(expected, token->VerifyPIN(Text(pin), type));
        return {reinterpret_cast<const char*>(token.get()), sizeof(KeyObject_pkcs11)};
    }

    /// The one 32-bit number in which two states of the object differ, from first to second.
    static std::string difference(const std::string& first, const std::string& second) {
        std::string found;
        for (std::size_t at = 0; at + 4 <= first.size(); at += 4) {
            std::int32_t from = 0;
            std::int32_t to = 0;
            std::memcpy(&from, &first[at], 4);
            std::memcpy(&to, &second[at], 4);
            if (from != to) {
                found += std::to_string(from) + " to " + std::to_string(to) + "; ";
            }
        }
        return found;
    }

    ComRef<TokenProvider_pkcs11> provider = makeObject<TokenProvider_pkcs11>();
    ComRef<KeyObject_pkcs11> token;
};

TEST_F(TokenPkcs11PinTest, VerifyPinStoresTheTypeOfTheLogin) {
    const std::string user = afterLogin("12345678", 0, S_OK);
    const std::string officer = afterLogin("12345678", 1, S_OK);
    EXPECT_EQ("0 to 1; ", difference(user, officer));
    EXPECT_EQ("1 to 0; ", difference(officer, afterLogin("12345678", 0, S_OK)));
}

TEST_F(TokenPkcs11PinTest, FailedVerifyPinKeepsTheTypeOfThePreviousLogin) {
    const std::string user = afterLogin("12345678", 0, S_OK);
    const std::string officer = afterLogin("12345678", 1, S_OK);
    const std::string failed = afterLogin("wrong", 0, E_FAIL);
    EXPECT_EQ("1 to 0; ", difference(officer, failed));  // no longer logged in
    EXPECT_NE("1 to 0; ", difference(user, failed));     // still the type of the officer
}

TEST_F(TokenPkcs11PinTest, VerifyPinWithARefusedTypeChangesNothing) {
    const std::string officer = afterLogin("12345678", 1, S_OK);
    EXPECT_EQ("", difference(officer, afterLogin("12345678", 2, E_INVALIDARG)));
}

}  // namespace
}  // namespace zr::test
