// Fixtures, each built on the one before: a folder with a configuration and the recording module, a
// provider, a token, a logged-in token, one that can sign.
#pragma once

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "tests/contract/library.h"
#include "tests/support/console_capture.h"
#include "tests/support/hresult.h"
#include "tests/support/recording/recording.h"
#include "tests/support/temp_dir.h"

namespace zr::test {

using Lines = std::vector<std::string>;

inline std::string narrow(BSTR text) {
    return text ? std::string(text, text + SysStringLen(text)) : "(null)";
}

/// A path that climbs from the current directory as far as it can, so that the rest alone is left.
inline std::string aboveTheRoot(const std::string& rest) {
    std::string path;
    for (const auto& component : std::filesystem::current_path()) {
        path += component.empty() ? "" : "../";
    }
    return path + rest;
}

class ModuleTest : public testing::Test {
protected:
    ModuleTest() { folder.writeConfig(); }

    TempDir folder;
    Recording module;
};

class LoadedProviderTest : public ModuleTest {
protected:
    LoadedProviderTest() {
        EXPECT_HR(S_OK, provider->Load(Text(module.path())));
        module.takeCalls();
    }
    ~LoadedProviderTest() override { provider->Release(); }

    ITokenProvider* provider = makeProvider();
};

class TokenTest : public LoadedProviderTest {
protected:
    TokenTest() {
        EXPECT_HR(S_OK, provider->OpenKey(0, reinterpret_cast<void**>(&token)));
        module.takeCalls();
    }
    ~TokenTest() override {
        if (token) {
            token->Release();
        }
    }

    IKeyObject* token = nullptr;
};

class LoggedInTokenTest : public TokenTest {
protected:
    LoggedInTokenTest() {
        EXPECT_HR(S_OK, token->VerifyPIN(Text("1234"), 0));
        module.takeCalls();
    }
};

/// With a container "a": a certificate, a private and a public key.
class SigningTokenTest : public LoggedInTokenTest {
protected:
    SigningTokenTest() {
        VariantInit(&result);
        module.addCertificate("a", "A");
        privateKey = module.addKey(CKO_PRIVATE_KEY, "a");
        publicKey = module.addKey(CKO_PUBLIC_KEY, "a");
        IKeyContainer* container = nullptr;
        const Text name("a");
        EXPECT_HR(S_OK, token->OpenContainer(string(name), reinterpret_cast<void**>(&container)));
        EXPECT_HR(S_OK, container->GetKeyCert(true, reinterpret_cast<void**>(&certificate)));
        container->Release();
        module.takeCalls();
    }
    ~SigningTokenTest() override { certificate->Release(); }

    CK_OBJECT_HANDLE privateKey;
    CK_OBJECT_HANDLE publicKey;
    IKeyCertificate* certificate = nullptr;
    VARIANT result;
};

/// Byte data for one call.
class Bytes {
public:
    explicit Bytes(const std::string& bytes, VARTYPE element = VT_UI1) {
        VariantInit(&m_variant);
        SAFEARRAYBOUND bound = {static_cast<ULONG>(bytes.size()), 0};
        m_variant.vt = static_cast<VARTYPE>(VT_ARRAY | element);
        m_variant.parray = SafeArrayCreate(element, 1, &bound);
        void* data = nullptr;
        SafeArrayAccessData(m_variant.parray, &data);
        std::copy(bytes.begin(), bytes.end(), static_cast<char*>(data));
        SafeArrayUnaccessData(m_variant.parray);
    }
    Bytes(const Bytes&) = delete;
    Bytes& operator=(const Bytes&) = delete;
    ~Bytes() { VariantClear(&m_variant); }
    operator const VARIANT&() const { return m_variant; }

private:
    VARIANT m_variant;
};

/// The bytes of a result, which is cleared; "(none)" when it is no byte data.
inline std::string takeBytes(VARIANT* variant) {
    if (variant->vt != (VT_ARRAY | VT_UI1)) {
        return "(none)";
    }
    void* data = nullptr;
    SafeArrayAccessData(variant->parray, &data);
    const auto* begin = static_cast<const char*>(data);
    const std::string bytes(begin, begin + variant->parray->rgsabound[0].cElements);
    SafeArrayUnaccessData(variant->parray);
    VariantClear(variant);
    return bytes;
}

}  // namespace zr::test
