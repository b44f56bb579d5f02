// The Linux module behind the bridge.
#include "tests/support/bridge/native_module.h"

#include <dlfcn.h>

#include <cstdio>
#include <cstdlib>

namespace zr::bridge {
namespace {

const CK_FUNCTION_LIST* load() {
    const char* file = std::getenv("ZRKEY_BRIDGE_MODULE");
    if (!file) {
        file = ZR_BRIDGE_DEFAULT_MODULE;
    }
    void* module = dlopen(file, RTLD_NOW | RTLD_LOCAL);
    void* symbol = module ? dlsym(module, "C_GetFunctionList") : nullptr;
    if (!symbol) {
        std::fprintf(stderr, "pkcs11bridge: %s\n", dlerror());
        return nullptr;
    }
    CK_FUNCTION_LIST* list = nullptr;
    const auto getFunctionList = reinterpret_cast<CK_RV (*)(CK_FUNCTION_LIST**)>(symbol);
    if (const CK_RV rv = getFunctionList(&list); rv != CKR_OK) {
        std::fprintf(stderr, "pkcs11bridge: %s: C_GetFunctionList gave 0x%lx\n", file, rv);
        return nullptr;
    }
    return list;
}

}  // namespace

const CK_FUNCTION_LIST* nativeModule() {
    static const CK_FUNCTION_LIST* const s_list = load();
    return s_list;
}

}  // namespace zr::bridge
