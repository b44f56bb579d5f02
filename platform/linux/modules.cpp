// Shared libraries by the dynamic loader.
#include <dlfcn.h>
#include <kernel.h>
#include <link.h>
#include <strings.h>

#include <cstring>

namespace {

HMODULE fromHandle(void* handle) {
    return reinterpret_cast<HMODULE>(handle);
}

void* toHandle(HMODULE module) {
    return reinterpret_cast<void*>(module);
}

// The automation platform is in the process already: this code is linked with it. Its path comes
// from one of its functions, as it may be known to the loader by a RUNPATH only.
HMODULE openAutomation() {
    Dl_info info{};
    if (dladdr(reinterpret_cast<void*>(&SysAllocString), &info) == 0 || info.dli_fname == nullptr) {
        return nullptr;
    }
    return fromHandle(dlopen(info.dli_fname, RTLD_NOW | RTLD_LOCAL | RTLD_NOLOAD));
}

// It stays for the life of the process; it is asked for with every string that is made.
HMODULE automation() {
    static const HMODULE module = openAutomation();
    return module;
}

// The dynamic loader looks in what the module depends on, too.
bool isOwnFunction(HMODULE module, void* function) {
    link_map* asked = nullptr;
    void* owner = nullptr;
    Dl_info info{};
    return dlinfo(toHandle(module), RTLD_DI_LINKMAP, &asked) == 0 &&
           dladdr1(function, &info, &owner, RTLD_DL_LINKMAP) != 0 && owner == asked;
}

}  // namespace

HMODULE LoadLibraryA(LPCSTR fileName) {
    if (fileName == nullptr || fileName[0] == '\0') {
        return nullptr;
    }
    if (strcasecmp(fileName, "oleaut32.dll") == 0) {
        return automation();
    }
    return fromHandle(dlopen(fileName, RTLD_NOW | RTLD_LOCAL));
}

HMODULE LoadLibraryExA(LPCSTR fileName, HANDLE file, DWORD flags) {
    if (file != nullptr || (flags & ~LOAD_WITH_ALTERED_SEARCH_PATH) != 0) {
        return nullptr;
    }
    return LoadLibraryA(fileName);
}

FARPROC GetProcAddress(HMODULE module, LPCSTR name) {
    // A null handle would have the dynamic loader search the whole process.
    if (module == nullptr || name == nullptr || name[0] == '\0') {
        return nullptr;
    }
    if (module == automation() && std::strcmp(name, "SysAllocString") == 0) {
        // The loader takes longer than the call.
        return reinterpret_cast<FARPROC>(reinterpret_cast<void*>(&SysAllocString));
    }
    void* const function = dlsym(toHandle(module), name);
    return function != nullptr && isOwnFunction(module, function)
               ? reinterpret_cast<FARPROC>(function)
               : nullptr;
}

BOOL FreeLibrary(HMODULE module) {
    if (module == nullptr) {
        return FALSE;
    }
    return module == automation() || dlclose(toHandle(module)) == 0 ? TRUE : FALSE;
}
