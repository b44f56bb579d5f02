// A token, a container and a provider that keep what they are told and answer what they are bidden.
#pragma once

#include <string>
#include <vector>

#include "model/token_provider.h"
#include "pkcs11/key_container.h"
#include "tests/contract/token.h"
#include "tests/unit/model/bare_token.h"

namespace zr::test {

class ToldToken : public BareToken {
public:
    ToldToken() : BareToken(nullptr) {}

    HRESULT STDMETHODCALLTYPE GetSerialNumber(BSTR* out) override { return tell("serial", out); }
    HRESULT STDMETHODCALLTYPE GetLabel(BSTR* out) override { return tell("label", out); }
    HRESULT STDMETHODCALLTYPE GetManufacturerID(BSTR* out) override { return tell("maker", out); }
    HRESULT STDMETHODCALLTYPE GetModelID(BSTR* out) override { return tell("model", out); }
    HRESULT STDMETHODCALLTYPE GetDigestMethod(BSTR* out) override { return tell("digest", out); }
    HRESULT STDMETHODCALLTYPE GetSignAlgo(BSTR* out) override { return tell("algo", out); }

    HRESULT STDMETHODCALLTYPE GetTotalSize(VARIANT* out) override { return note("total", out); }
    HRESULT STDMETHODCALLTYPE GetFreeSize(VARIANT* out) override { return note("free", out); }
    HRESULT STDMETHODCALLTYPE Lock(VARIANT* out) override { return note("lock", out); }
    HRESULT STDMETHODCALLTYPE Unlock(VARIANT* out) override { return note("unlock", out); }

    HRESULT STDMETHODCALLTYPE GetMaxRetryCount(INT type, VARIANT* out) override {
        return note("max " + std::to_string(type), out);
    }
    HRESULT STDMETHODCALLTYPE GetRemainRetryCount(INT type, VARIANT* out) override {
        return note("remain " + std::to_string(type), out);
    }
    HRESULT STDMETHODCALLTYPE IsDefaultPIN(INT type, VARIANT* out) override {
        return note("default " + std::to_string(type), out);
    }
    HRESULT STDMETHODCALLTYPE FileExists(BSTR name, VARIANT* out) override {
        return note("exists " + narrow(name), out);
    }

    HRESULT STDMETHODCALLTYPE VerifyPIN(BSTR pin, INT type) override {
        return note("verify " + narrow(pin) + " " + std::to_string(type));
    }
    HRESULT STDMETHODCALLTYPE UnlockPIN(BSTR soPin, BSTR newPin) override {
        return note("unlock " + narrow(soPin) + " " + narrow(newPin));
    }

    HRESULT answer = S_OK;
    std::string told;                 ///< the last call
    const VARIANT* handed = nullptr;  ///< its result

private:
    HRESULT note(const std::string& call, const VARIANT* result = nullptr) {
        told = call;
        handed = result;
        return answer;
    }
    HRESULT tell(const char* text, BSTR* out) {
        if (SUCCEEDED(answer)) {
            *out = SysAllocString(Text(text));
        }
        return note(text);
    }
};

class ToldProvider : public TokenProvider {
public:
    HRESULT STDMETHODCALLTYPE Load(BSTR) override { return answer; }
    HRESULT STDMETHODCALLTYPE Unload() override { return answer; }
    HRESULT STDMETHODCALLTYPE OpenKey(LONG index, void** key) override {
        opened = index;
        *key = token;
        return answer;
    }
    HRESULT STDMETHODCALLTYPE GetKeyCount(INT* count) override {
        *count = 5;
        return answer;
    }

    HRESULT answer = S_OK;
    LONG opened = -1;
    IKeyObject* token = nullptr;
};

class ToldContainer : public KeyContainer_pkcs11 {
public:
    ToldContainer() : KeyContainer_pkcs11(nullptr) {}
    HRESULT STDMETHODCALLTYPE GetKeyCert(bool signing, void** certificate) override {
        told += signing ? "true " : "false ";
        wasNull = wasNull && !*certificate;
        *certificate = answered;
        return answer;
    }

    HRESULT answer = S_OK;
    IKeyCertificate* answered = nullptr;
    std::string told;
    bool wasNull = true;
};

/// The block of a call without Invoke.
inline DISPPARAMS blockOf(std::vector<VARIANT>& arguments) {
    DISPPARAMS params = {};
    params.rgvarg = arguments.data();
    params.cArgs = static_cast<UINT>(arguments.size());
    return params;
}

}  // namespace zr::test
