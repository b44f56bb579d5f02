// TokenProvider_pkcs11: loading and unloading a Cryptoki module.
#include <cstdlib>
#include <cstring>

#include "model/log_scope.h"
#include "pkcs11/token_provider.h"
#include "runtime/bounded_text.h"
#include "runtime/path_utils.h"
#include "runtime/zcom_bstr.h"

namespace {

constexpr std::size_t kPathSize = 260;

/// The path of a module, always taken relative to the current directory; an absolute path is
/// prefixed with it too, and hosts give their paths accordingly.
/// @param path  kPathSize zeroed bytes.
/// @return false when the path does not fit, or climbs above the root so that no absolute path is
///         left: it would be searched for. Another drive's path may be left.
bool makeModulePath(const char* modulePath, char* path) {
    const int length = ZGetCurrentPath(path, kPathSize);
    if (length <= 0 || static_cast<std::size_t>(length) >= kPathSize) {
        return false;
    }
    ZConvertLinuxPath(path);
    const bool isSeparated = path[std::strlen(path) - 1] == '/';
    return (isSeparated || zr::appendText(path, kPathSize, "/")) &&
           zr::appendText(path, kPathSize, modulePath) &&
           ZGetAbsolutionPath(path, path, kPathSize) == 0 && zr::isAbsolutePath(path);
}

}  // namespace

HRESULT STDMETHODCALLTYPE TokenProvider_pkcs11::Load(BSTR path) {
    const LogScope scope(GetLog(), "Load");
    zrapi::ZComBSTR wide(path);
    const char* modulePath = wide;
    char buffer[kPathSize] = {};
    // Without a path the folder itself would go to the loader, which may complete it.
    if (!modulePath || !makeModulePath(modulePath, buffer)) {
        return E_FAIL;
    }
    const HRESULT hr = LoadModule(buffer);
    if (FAILED(hr)) {
        return hr;
    }
    if (!LoadConfig()) {
        // The module stays loaded and initialised: tokens can be opened without a configuration.
        return E_FAIL;
    }
    return scope.end(S_OK);
}

/// Loads a module and initialises it. One that is loaded already stays loaded: only its entry points
/// are forgotten.
HRESULT TokenProvider_pkcs11::LoadModule(const char* path) {
    const HMODULE module = ZLoadLibrary(path);
    if (!module) {
        return E_FAIL;
    }
    m_hModule = module;
    const CK_FUNCTIONS before = m_pFunctionTable ? *m_pFunctionTable : CK_FUNCTIONS();
    DropFunctionTable();
    const HRESULT hr = StartModule();
    if (FAILED(hr)) {
        DropModule();
    }
    if (!m_pFunctionTable || std::memcmp(m_pFunctionTable, &before, sizeof before) != 0) {
        // Tokens of another module must not use their sessions with this one.
        ++m_nModuleChanges;
    }
    return hr;
}

HRESULT TokenProvider_pkcs11::StartModule() {
    m_pFunctionTable = static_cast<CK_FUNCTIONS*>(std::calloc(1, sizeof(CK_FUNCTIONS)));
    const HRESULT hr = m_pFunctionTable ? ReadFunctionList() : E_OUTOFMEMORY;
    return FAILED(hr) ? hr : InitializeModule() ? S_OK : E_FAIL;
}

/// Copies the module's entry points. A module without a usable list yields E_OUTOFMEMORY; hosts
/// know a file that is no Cryptoki module by that code.
HRESULT TokenProvider_pkcs11::ReadFunctionList() {
    using GetFunctionList = decltype(CK_FUNCTIONS::C_GetFunctionList);
    m_pFunctionTable->C_GetFunctionList = reinterpret_cast<GetFunctionList>(
        reinterpret_cast<void*>(ZGetProcAddress(m_hModule, "C_GetFunctionList")));
    CK_FUNCTION_LIST* list = nullptr;
    if (Call(&CK_FUNCTIONS::C_GetFunctionList, &list) != CKR_OK || !list) {
        return E_OUTOFMEMORY;
    }
    std::memcpy(m_pFunctionTable, &list->functions, sizeof(CK_FUNCTIONS));
    return S_OK;
}

bool TokenProvider_pkcs11::InitializeModule() const {
    const CK_RV rv = Call(&CK_FUNCTIONS::C_Initialize, nullptr);
    return rv == CKR_OK || rv == CKR_CRYPTOKI_ALREADY_INITIALIZED;
}

void TokenProvider_pkcs11::DropModule() {
    ZFreeLibrary(m_hModule);
    m_hModule = nullptr;
    DropFunctionTable();
}

void TokenProvider_pkcs11::DropFunctionTable() {
    if (m_pFunctionTable) {
        std::memset(static_cast<void*>(m_pFunctionTable), 0, sizeof(CK_FUNCTIONS));
        std::free(m_pFunctionTable);
        m_pFunctionTable = nullptr;
    }
}

HRESULT STDMETHODCALLTYPE TokenProvider_pkcs11::Unload() {
    const LogScope scope(GetLog(), "Unload");
    if (m_pFunctionTable) {
        Call(&CK_FUNCTIONS::C_Finalize, nullptr);
        ++m_nModuleChanges;
        DropFunctionTable();
    }
    DropModule();
    return scope.end(S_OK);
}
