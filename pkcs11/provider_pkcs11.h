// TokenProvider_pkcs11: the provider over a Cryptoki module.
#pragma once

#include <memory>

#include "model/token_provider.h"
#include "pkcs11/module.h"

class TokenProvider_pkcs11 : public TokenProvider {
public:
    TokenProvider_pkcs11();
    ~TokenProvider_pkcs11() override;

    HRESULT STDMETHODCALLTYPE Load(BSTR path) override;
    HRESULT STDMETHODCALLTYPE Unload() override;
    HRESULT STDMETHODCALLTYPE OpenKey(LONG index, void** key) override;
    HRESULT STDMETHODCALLTYPE GetName(BSTR* name) override;
    HRESULT STDMETHODCALLTYPE GetKeyCount(INT* count) override;
    HRESULT STDMETHODCALLTYPE GetKeySN(LONG index, BSTR* serial) override;

    /// The module that was loaded last; null without one.
    const std::shared_ptr<Module>& GetModule() const { return m_pModule; }

private:
    HRESULT LoadModule(const char* path);
    bool LoadConfig();

    char m_szAlgoList[500] = {};
    char m_szDigestList[500] = {};
    std::shared_ptr<Module> m_pModule;
};
