// Fixtures on a real token: a provider with the module of ZRKEY_TEST_MODULE loaded, the token
// "ZRKey Test" opened from it, the same with the user logged in.
#pragma once

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>

#include "tests/contract/token.h"

namespace zr::test {

inline std::string fromEnvironment(const char* name) {
    const char* value = std::getenv(name);
    if (!value) {
        throw std::runtime_error(std::string(name) + " is not set; run this by ctest");
    }
    return value;
}

/// A file of the token's folder, where scripts/softtoken and around-test leave them.
inline std::string tokenFile(const std::string& name) {
    return fromEnvironment("ZRKEY_TOKEN_FOLDER") + "/" + name;
}

inline std::string readTokenFile(const std::string& name) {
    std::ifstream file(tokenFile(name), std::ios::binary);
    EXPECT_TRUE(file) << tokenFile(name);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

/// A string that a call handed out; it is freed.
inline std::string take(BSTR text) {
    const std::string result = narrow(text);
    SysFreeString(text);
    return result;
}

class SoftProviderTest : public testing::Test {
protected:
    SoftProviderTest() {
        folder.writeConfig("SHA1WithRSA;SM3WithSM2", "MD5");
        EXPECT_HR(S_OK, load(provider));
    }
    ~SoftProviderTest() override {
        if (provider) {
            provider->Release();
        }
    }

    static HRESULT load(ITokenProvider* provider) {
        const std::string module = fromEnvironment("ZRKEY_TEST_MODULE");
        return provider->Load(Text(relativePath(module.c_str())));
    }

    /// The token by its label: SoftHSM2 shows an empty slot beside it. Null when it is not there.
    static IKeyObject* openToken(ITokenProvider* provider) {
        INT count = 0;
        EXPECT_HR(S_OK, provider->GetKeyCount(&count));
        for (LONG i = 0; i < count; ++i) {
            IKeyObject* key = nullptr;
            provider->OpenKey(i, reinterpret_cast<void**>(&key));
            BSTR label = nullptr;
            if (key && key->GetLabel(&label) == S_OK && take(label) == "ZRKey Test") {
                return key;
            }
            if (key) {
                key->Release();
            }
        }
        return nullptr;
    }

    TempDir folder;
    ITokenProvider* provider = makeProvider();
};

class SoftTokenTest : public SoftProviderTest {
protected:
    void SetUp() override { ASSERT_TRUE(token); }
    ~SoftTokenTest() override {
        if (token) {
            token->Release();
        }
    }

    /// The certificate of the token's one container, with one reference.
    IKeyCertificate* openCertificate() const {
        const Text name("container1");
        IKeyContainer* container = nullptr;
        IKeyCertificate* certificate = nullptr;
        EXPECT_HR(S_OK, token->OpenContainer(string(name), reinterpret_cast<void**>(&container)));
        EXPECT_HR(S_OK, container->GetKeyCert(true, reinterpret_cast<void**>(&certificate)));
        container->Release();
        return certificate;
    }

    IKeyObject* token = openToken(provider);
};

class LoggedInSoftTokenTest : public SoftTokenTest {
protected:
    void SetUp() override {
        ASSERT_TRUE(token);
        ASSERT_HR(S_OK, token->VerifyPIN(Text("1234"), 0));
    }
};

}  // namespace zr::test
