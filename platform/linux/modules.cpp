// Shared libraries, over the dynamic loader.
#include "platform/linux/kernel.h"

#include <dlfcn.h>
#include <strings.h>

#include <cstring>
#include <string_view>

namespace {

HMODULE fromHandle(void* handle) {
    return reinterpret_cast<HMODULE>(handle);
}

void* toHandle(HMODULE module) {
    return reinterpret_cast<void*>(module);
}

// This code is linked with the automation platform, so it is in the process already. Its path comes
// from one of its functions: the loader may find the file by a RUNPATH only.
HMODULE openAutomation() {
    Dl_info info{};
    if (dladdr(reinterpret_cast<void*>(&SysAllocString), &info) == 0 || !info.dli_fname) {
        return nullptr;
    }
    return fromHandle(dlopen(info.dli_fname, RTLD_NOW | RTLD_LOCAL | RTLD_NOLOAD));
}

// Opened once and never closed: every new string uses it.
HMODULE automation() {
    static const HMODULE module = openAutomation();
    return module;
}

/// Whether dlopen would replace a part of the name, as in "$LIB" or "${LIB}".
bool hasLoaderToken(std::string_view name) {
    for (std::size_t at = 0; (at = name.find('$', at)) != name.npos; ++at) {
        std::string_view token = name.substr(at + 1);
        if (token.substr(0, 1) == "{") {
            token.remove_prefix(1);
        }
        for (const std::string_view known : {"ORIGIN", "LIB", "PLATFORM"}) {
            if (token.substr(0, known.size()) == known) {
                return true;
            }
        }
    }
    return false;
}

}  // namespace

HMODULE LoadLibraryA(LPCSTR fileName) {
    if (!fileName || fileName[0] == '\0') {
        return nullptr;
    }
    if (strcasecmp(fileName, "oleaut32.dll") == 0) {
        return automation();
    }
    return hasLoaderToken(fileName) ? nullptr : fromHandle(dlopen(fileName, RTLD_NOW | RTLD_LOCAL));
}

HMODULE LoadLibraryExA(LPCSTR fileName, HANDLE file, DWORD flags) {
    if (file || (flags & ~LOAD_WITH_ALTERED_SEARCH_PATH) != 0) {
        return nullptr;
    }
    return LoadLibraryA(fileName);
}

FARPROC GetProcAddress(HMODULE module, LPCSTR name) {
    // With a null handle the dynamic loader would search the whole process.
    if (!module || !name || name[0] == '\0') {
        return nullptr;
    }
    if (module == automation() && std::strcmp(name, "SysAllocString") == 0) {
        // Saves a look-up that takes longer than the call itself.
        return reinterpret_cast<FARPROC>(reinterpret_cast<void*>(&SysAllocString));
    }
    return reinterpret_cast<FARPROC>(dlsym(toHandle(module), name));
}

BOOL FreeLibrary(HMODULE module) {
    if (!module) {
        return FALSE;
    }
    return module == automation() || dlclose(toHandle(module)) == 0 ? TRUE : FALSE;
}
