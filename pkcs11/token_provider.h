// TokenProvider_pkcs11: the provider over a Cryptoki module.
#pragma once

#include "kernel.h"
#include "model/token_provider.h"
#include "pkcs11/cryptoki.h"

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

    /// Calls an entry point of the module; every Cryptoki call goes through here.
    /// @return its result; CKR_CRYPTOKI_NOT_INITIALIZED without a module,
    ///         CKR_FUNCTION_NOT_SUPPORTED when the module's list has no such entry.
    template <class... Parameters, class... Arguments>
    CK_RV Call(CK_RV (*CK_FUNCTIONS::*entry)(Parameters...), Arguments... arguments) const {
        if (!m_pFunctionTable) {
            return CKR_CRYPTOKI_NOT_INITIALIZED;
        }
        const auto function = m_pFunctionTable->*entry;
        return function ? function(arguments...) : CKR_FUNCTION_NOT_SUPPORTED;
    }

    /// How often the module was unloaded or another took its place. A token opened before must not be
    /// used: its session means nothing, or another token's, to a module loaded since.
    unsigned int GetModuleChanges() const { return m_nModuleChanges; }

private:
    HRESULT LoadModule(const char* path);
    HRESULT StartModule();
    HRESULT ReadFunctionList();
    bool InitializeModule() const;
    void DropModule();
    void DropFunctionTable();
    bool LoadConfig();

    HMODULE m_hModule = nullptr;
    char m_szAlgoList[500] = {};
    char m_szDigestList[500] = {};
    CK_FUNCTIONS* m_pFunctionTable = nullptr;
    unsigned int m_nModuleChanges = 0;
};
