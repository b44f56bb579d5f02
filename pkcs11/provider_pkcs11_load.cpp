// TokenProvider_pkcs11: loading and unloading a Cryptoki module.
#include <cstring>
#include <memory>
#include <utility>

#include "model/log_scope.h"
#include "pkcs11/provider_pkcs11.h"
#include "pkcs11/stored_pin.h"
#include "runtime/bounded_text.h"
#include "runtime/path_utils.h"
#include "runtime/zcom_bstr.h"

namespace {

constexpr std::size_t kPathSize = 260;

/// Whether a backslash in a name of the current directory would read as a separator.
bool namesAnotherFolder(const char* directory) {
    return zr::kPathSeparator != '\\' && std::strchr(directory, '\\');
}

/// Makes the path of a module. It is always taken relative to the current directory; an absolute
/// path is prefixed with it too, and hosts give their paths accordingly.
/// @param path  kPathSize zeroed bytes.
/// @return false when the path does not fit or would lie in another folder. What the resolution
///         leaves of a path that climbs above the root goes to the loader as it is.
bool makeModulePath(const char* modulePath, char* path) {
    const DWORD length = GetCurrentDirectoryA(kPathSize, path);
    if (length == 0 || length >= kPathSize || namesAnotherFolder(path)) {
        return false;
    }
    ZConvertLinuxPath(path);
    const bool isSeparated = path[std::strlen(path) - 1] == '/';
    return (isSeparated || zr::appendText(path, kPathSize, "/")) &&
           zr::appendText(path, kPathSize, modulePath) &&
           ZGetAbsolutionPath(path, path, kPathSize) == 0;
}

}  // namespace

HRESULT STDMETHODCALLTYPE TokenProvider_pkcs11::Load(BSTR path) {
    const LogScope scope(GetLog(), "Load");
    zrapi::ZComBSTR wide(path);
    const char* modulePath = wide;
    char buffer[kPathSize] = {};
    // Reject a null path here: the folder alone would go to the loader, which may complete it.
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

/// Loads a module and starts it. A file that cannot be loaded changes nothing. Otherwise the
/// provider drops the earlier module without finalising or freeing it: its tokens still use it.
HRESULT TokenProvider_pkcs11::LoadModule(const char* path) {
    const HMODULE library = ZLoadLibrary(path);
    if (!library) {
        return E_FAIL;
    }
    m_pModule = nullptr;
    Module::Started started = Module::start(library);
    m_pModule = std::move(started.module);
    return started.result;
}

HRESULT STDMETHODCALLTYPE TokenProvider_pkcs11::Unload() {
    const LogScope scope(GetLog(), "Unload");
    // Forgotten first: a module that calls back must not be unloaded twice.
    if (const std::shared_ptr<Module> module = std::exchange(m_pModule, nullptr)) {
        module->unload();
        StoredPin::wipeEnded();
    }
    return scope.end(S_OK);
}
