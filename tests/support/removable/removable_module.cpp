// A Cryptoki module over another one, whose tokens a test can pull: while the file that
// ZRKEY_REMOVABLE_PULLED names exists, no slot has a token and calls of sessions return
// CKR_DEVICE_REMOVED. ZRKEY_REMOVABLE_MODULE names the other module. Linux only, for tests that cannot
// reach into the process that loads it.
#include <dlfcn.h>
#include <p11-kit/pkcs11.h>
#include <unistd.h>

#include <cstdlib>

namespace {

CK_FUNCTION_LIST* s_inner = nullptr;
CK_FUNCTION_LIST s_list;

bool isPulled() {
    const char* const file = std::getenv("ZRKEY_REMOVABLE_PULLED");
    return file && access(file, F_OK) == 0;
}

/// A function of the other module that fails while the tokens are pulled.
template <auto member>
struct Guarded;
template <class... Arguments, CK_RV (*CK_FUNCTION_LIST::*member)(Arguments...)>
struct Guarded<member> {
    static CK_RV call(Arguments... arguments) {
        return isPulled() ? CKR_DEVICE_REMOVED : (s_inner->*member)(arguments...);
    }
};

CK_RV slotList(CK_BBOOL withToken, CK_SLOT_ID* slots, CK_ULONG* count) {
    if (withToken && isPulled()) {
        *count = 0;
        return CKR_OK;
    }
    return s_inner->C_GetSlotList(withToken, slots, count);
}

CK_RV slotInfo(CK_SLOT_ID slot, CK_SLOT_INFO* info) {
    const CK_RV rv = s_inner->C_GetSlotInfo(slot, info);
    if (rv == CKR_OK && isPulled()) {
        info->flags &= ~static_cast<CK_FLAGS>(CKF_TOKEN_PRESENT);
    }
    return rv;
}

CK_RV tokenInfo(CK_SLOT_ID slot, CK_TOKEN_INFO* info) {
    return isPulled() ? CKR_TOKEN_NOT_PRESENT : s_inner->C_GetTokenInfo(slot, info);
}

CK_RV openSession(CK_SLOT_ID slot, CK_FLAGS flags, void* data, CK_NOTIFY notify,
                  CK_SESSION_HANDLE* session) {
    return isPulled() ? CKR_TOKEN_NOT_PRESENT
                      : s_inner->C_OpenSession(slot, flags, data, notify, session);
}

template <auto member>
void guard() {
    s_list.*member = &Guarded<member>::call;
}

bool load() {
    const char* const file = std::getenv("ZRKEY_REMOVABLE_MODULE");
    void* const library = file ? dlopen(file, RTLD_NOW | RTLD_LOCAL) : nullptr;
    void* const symbol = library ? dlsym(library, "C_GetFunctionList") : nullptr;
    return symbol && reinterpret_cast<CK_C_GetFunctionList>(symbol)(&s_inner) == CKR_OK;
}

}  // namespace

extern "C" __attribute__((visibility("default"))) CK_RV C_GetFunctionList(CK_FUNCTION_LIST** list) {
    if (!s_inner && !load()) {
        return CKR_GENERAL_ERROR;
    }
    s_list = *s_inner;
    s_list.C_GetFunctionList = &C_GetFunctionList;
    s_list.C_GetSlotList = &slotList;
    s_list.C_GetSlotInfo = &slotInfo;
    s_list.C_GetTokenInfo = &tokenInfo;
    s_list.C_OpenSession = &openSession;
    guard<&CK_FUNCTION_LIST::C_CloseSession>();
    guard<&CK_FUNCTION_LIST::C_GetSessionInfo>();
    guard<&CK_FUNCTION_LIST::C_Login>();
    guard<&CK_FUNCTION_LIST::C_Logout>();
    guard<&CK_FUNCTION_LIST::C_FindObjectsInit>();
    guard<&CK_FUNCTION_LIST::C_FindObjects>();
    guard<&CK_FUNCTION_LIST::C_FindObjectsFinal>();
    guard<&CK_FUNCTION_LIST::C_GetAttributeValue>();
    guard<&CK_FUNCTION_LIST::C_SignInit>();
    guard<&CK_FUNCTION_LIST::C_Sign>();
    guard<&CK_FUNCTION_LIST::C_SignUpdate>();
    guard<&CK_FUNCTION_LIST::C_SignFinal>();
    *list = &s_list;
    return CKR_OK;
}
