// The exports of zrkeycom.dll.
#include <windows.h>

#include <olectl.h>

#include <cwchar>
#include <mutex>

#include "host/automation/interfaces.h"
#include "host/automation/library_loader.h"
#include "host/automation/provider_factory.h"
#include "host/automation/registration.h"
#include "host/automation/server_state.h"

using zr::automation::Scope;

STDAPI DllGetClassObject(REFCLSID classId, REFIID iid, void** result) {
    if (!result) {
        return E_POINTER;
    }
    *result = nullptr;
    return IsEqualCLSID(classId, CLSID_TokenProvider)
               ? zr::automation::createProviderFactory(iid, result)
               : CLASS_E_CLASSNOTAVAILABLE;
}

STDAPI DllCanUnloadNow() {
    // A call that has the lock may last: it may ask a person for a PIN.
    if (zr::automation::isInUse()) {
        return S_FALSE;
    }
    try {
        const std::lock_guard lock(zr::automation::libraryLock());
        if (zr::automation::isInUse()) {
            return S_FALSE;
        }
        zr::automation::freeLibrary();
        return S_OK;
    } catch (...) {
        return S_FALSE;
    }
}

STDAPI DllRegisterServer() {
    return zr::automation::registerServer(Scope::kMachine);
}

STDAPI DllUnregisterServer() {
    return zr::automation::unregisterServer(Scope::kMachine);
}

/// What "regsvr32 /n /i:user" calls, to register for one user.
/// @param options  "user"; "machine", empty or null for the whole machine.
STDAPI DllInstall(BOOL isInstalled, const wchar_t* options) {
    const wchar_t* const words = options ? options : L"";
    const bool isForUser = _wcsicmp(words, L"user") == 0;
    if (!isForUser && *words && _wcsicmp(words, L"machine") != 0) {
        return E_INVALIDARG;
    }
    const Scope scope = isForUser ? Scope::kUser : Scope::kMachine;
    return isInstalled ? zr::automation::registerServer(scope)
                       : zr::automation::unregisterServer(scope);
}
