// The library zrkey.dll, as this DLL loads it.
#include "host/automation/library_loader.h"

#include <windows.h>

#include <new>
#include <string>
#include <utility>

#include "host/automation/no_error_windows.h"
#include "host/automation/own_file.h"

namespace zr::automation {
namespace {

using GetClassObject = decltype(&ZCLGetClassObject);

HMODULE s_library = nullptr;

HRESULT lastError() {
    return HRESULT_FROM_WIN32(GetLastError());
}

HRESULT loadLibrary() {
    if (s_library) {
        return S_OK;
    }
    const std::wstring path = ownFolder() + kLibraryName;
    const NoErrorWindows quiet;
    s_library = LoadLibraryExW(path.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
    return s_library ? S_OK : lastError();
}

HRESULT createWith(GetClassObject getClassObject, zrkey::ComRef<ITokenProvider>& provider) {
    zrkey::ComRef<IClassFactory> factory;
    const HRESULT result = getClassObject(LIBID_ZRKey, IID_IClassFactory, factory.receive());
    if (FAILED(result)) {
        return result;
    }
    return factory->CreateInstance(nullptr, IID_ITokenProvider, provider.receive());
}

}  // namespace

HRESULT createLibraryProvider(zrkey::ComRef<ITokenProvider>& provider) noexcept {
    provider.reset();
    try {
        if (const HRESULT result = loadLibrary(); FAILED(result)) {
            return result;
        }
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    }
    const auto getClassObject = reinterpret_cast<GetClassObject>(
        reinterpret_cast<void*>(GetProcAddress(s_library, "ZCLGetClassObject")));
    return getClassObject ? createWith(getClassObject, provider) : lastError();
}

void freeLibrary() noexcept {
    if (const HMODULE library = std::exchange(s_library, nullptr)) {
        FreeLibrary(library);
    }
}

}  // namespace zr::automation
