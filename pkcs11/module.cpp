// Module: starting and finalising a Cryptoki module.
#include "pkcs11/module.h"

#include <cstdlib>
#include <cstring>

#include "runtime/path_utils.h"

Module::Started Module::start(HMODULE library) {
    std::shared_ptr<Module> module;
    try {
        module = std::make_shared<Module>(library);
    } catch (const std::bad_alloc&) {
        ZFreeLibrary(library);
        return {E_OUTOFMEMORY, nullptr};
    }
    HRESULT hr = module->copyFunctionList();
    if (SUCCEEDED(hr)) {
        hr = module->initialize();
    }
    if (FAILED(hr)) {
        ZFreeLibrary(library);
        return {hr, nullptr};
    }
    return {S_OK, std::move(module)};
}

Module::Module(HMODULE library) : m_hModule(library) {}

Module::~Module() {
    freeFunctionTable();
}

/// Returns E_OUTOFMEMORY for a library without a usable list: hosts recognise by this code a file
/// that is not a Cryptoki module.
HRESULT Module::copyFunctionList() {
    m_pFunctionTable = static_cast<CK_FUNCTIONS*>(std::calloc(1, sizeof(CK_FUNCTIONS)));
    if (!m_pFunctionTable) {
        return E_OUTOFMEMORY;
    }
    const auto getFunctionList = reinterpret_cast<decltype(CK_FUNCTIONS::C_GetFunctionList)>(
        reinterpret_cast<void*>(ZGetProcAddress(m_hModule, "C_GetFunctionList")));
    CK_FUNCTION_LIST* list = nullptr;
    if (!getFunctionList || getFunctionList(&list) != CKR_OK || !list) {
        return E_OUTOFMEMORY;
    }
    std::memcpy(m_pFunctionTable, &list->functions, sizeof(CK_FUNCTIONS));
    m_epoch.identify(m_pFunctionTable->C_Finalize);
    return S_OK;
}

HRESULT Module::initialize() const {
    const auto function = entry(&CK_FUNCTIONS::C_Initialize);
    const CK_RV rv = function ? function(nullptr) : CKR_FUNCTION_NOT_SUPPORTED;
    return rv == CKR_OK || rv == CKR_CRYPTOKI_ALREADY_INITIALIZED ? S_OK : E_FAIL;
}

void Module::unload() {
    if (m_pFunctionTable) {
        const auto finalize = entry(&CK_FUNCTIONS::C_Finalize);
        m_epoch.advance();
        if (finalize) {
            finalize(nullptr);
            // Also ends a session that was opened while the module finalised.
            m_epoch.advance();
        }
        freeFunctionTable();
    }
    m_isUnloaded = true;
    freeUnloadedLibrary();
}

void Module::freeUnloadedLibrary() {
    if (m_isUnloaded && m_calls == 0) {
        ZFreeLibrary(m_hModule);
        m_hModule = nullptr;
    }
}

void Module::freeFunctionTable() {
    if (m_pFunctionTable) {
        std::memset(static_cast<void*>(m_pFunctionTable), 0, sizeof(CK_FUNCTIONS));
        std::free(m_pFunctionTable);
        m_pFunctionTable = nullptr;
    }
}
