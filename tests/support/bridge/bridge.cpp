// A Cryptoki module for Windows hosts under Wine that passes each call on to a native Linux module:
// SoftHSM2, or the one that ZRKEY_BRIDGE_MODULE names.
#include <dlfcn.h>

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <vector>

#include "tests/support/bridge/translate.h"

using windows::Ulong;

namespace {

const CK_FUNCTIONS* s_native = nullptr;

/// A length argument that goes both ways.
class Length {
public:
    explicit Length(Ulong* windowsLength) : m_windows(windowsLength), m_native(*windowsLength) {}
    ~Length() {
        *m_windows = bridge::narrow(m_native);
    }
    CK_ULONG* get() {
        return &m_native;
    }

private:
    Ulong* m_windows;
    CK_ULONG m_native;
};

CK_MECHANISM toNative(const windows::Mechanism* mechanism) {
    return {mechanism->mechanism, mechanism->pParameter, mechanism->ulParameterLen};
}

CK_ULONG session(Ulong handle) {
    return bridge::widenHandle(handle);
}

Ulong ZR_WINDOWS_CALL notSupported() {
    return static_cast<Ulong>(CKR_FUNCTION_NOT_SUPPORTED);
}

Ulong ZR_WINDOWS_CALL initialize(void*) {
    // A Windows host's locking callbacks would be entered by the other calling convention.
    return bridge::narrow(s_native->C_Initialize(nullptr));
}

Ulong ZR_WINDOWS_CALL finalize(void* reserved) {
    return bridge::narrow(s_native->C_Finalize(reserved));
}

Ulong ZR_WINDOWS_CALL getInfo(windows::Info* info) {
    CK_INFO native = {};
    const CK_RV rv = s_native->C_GetInfo(&native);
    info->cryptokiVersion = native.cryptokiVersion;
    std::memcpy(info->manufacturerID, native.manufacturerID, sizeof info->manufacturerID);
    info->flags = bridge::narrow(native.flags);
    std::memcpy(info->libraryDescription, native.libraryDescription,
                sizeof info->libraryDescription);
    info->libraryVersion = native.libraryVersion;
    return bridge::narrow(rv);
}

Ulong ZR_WINDOWS_CALL getSlotList(CK_BBOOL tokenPresent, Ulong* slots, Ulong* count) {
    Length length(count);
    if (!slots) {
        return bridge::narrow(s_native->C_GetSlotList(tokenPresent, nullptr, length.get()));
    }
    std::vector<CK_SLOT_ID> native(*count + 1);
    const CK_RV rv = s_native->C_GetSlotList(tokenPresent, native.data(), length.get());
    for (CK_ULONG i = 0; rv == CKR_OK && i < *length.get(); ++i) {
        slots[i] = bridge::narrowHandle(native[i]);
    }
    return bridge::narrow(rv);
}

Ulong ZR_WINDOWS_CALL getSlotInfo(Ulong slot, windows::SlotInfo* info) {
    CK_SLOT_INFO native = {};
    const CK_RV rv = s_native->C_GetSlotInfo(bridge::widenHandle(slot), &native);
    std::memcpy(info->slotDescription, native.slotDescription, sizeof info->slotDescription);
    std::memcpy(info->manufacturerID, native.manufacturerID, sizeof info->manufacturerID);
    info->flags = bridge::narrow(native.flags);
    info->hardwareVersion = native.hardwareVersion;
    info->firmwareVersion = native.firmwareVersion;
    return bridge::narrow(rv);
}

Ulong ZR_WINDOWS_CALL getTokenInfo(Ulong slot, windows::TokenInfo* info) {
    CK_TOKEN_INFO native = {};
    const CK_RV rv = s_native->C_GetTokenInfo(bridge::widenHandle(slot), &native);
    if (rv != CKR_OK) {
        return bridge::narrow(rv);
    }
    std::memcpy(info->label, native.label, sizeof info->label);
    std::memcpy(info->manufacturerID, native.manufacturerID, sizeof info->manufacturerID);
    std::memcpy(info->model, native.model, sizeof info->model);
    std::memcpy(info->serialNumber, native.serialNumber, sizeof info->serialNumber);
    const CK_ULONG* numbers = &native.flags;
    for (std::size_t i = 0; i < std::size(info->numbers); ++i) {
        info->numbers[i] = bridge::narrow(numbers[i]);
    }
    info->hardwareVersion = native.hardwareVersion;
    info->firmwareVersion = native.firmwareVersion;
    std::memcpy(info->utcTime, native.utcTime, sizeof info->utcTime);
    return bridge::narrow(rv);
}

Ulong ZR_WINDOWS_CALL setPin(Ulong handle, CK_UTF8CHAR* oldPin, Ulong oldLength,
                             CK_UTF8CHAR* newPin, Ulong newLength) {
    return bridge::narrow(
        s_native->C_SetPIN(session(handle), oldPin, oldLength, newPin, newLength));
}

Ulong ZR_WINDOWS_CALL openSession(Ulong slot, Ulong flags, void*, void*, Ulong* handle) {
    CK_SESSION_HANDLE native = 0;
    // No module calls a Windows host back through here, so it needs no application pointer.
    const CK_RV rv =
        s_native->C_OpenSession(bridge::widenHandle(slot), flags, nullptr, nullptr, &native);
    *handle = bridge::narrowHandle(native);
    return bridge::narrow(rv);
}

Ulong ZR_WINDOWS_CALL closeSession(Ulong handle) {
    return bridge::narrow(s_native->C_CloseSession(session(handle)));
}

Ulong ZR_WINDOWS_CALL closeAllSessions(Ulong slot) {
    return bridge::narrow(s_native->C_CloseAllSessions(bridge::widenHandle(slot)));
}

Ulong ZR_WINDOWS_CALL getSessionInfo(Ulong handle, windows::SessionInfo* info) {
    CK_SESSION_INFO native = {};
    const CK_RV rv = s_native->C_GetSessionInfo(session(handle), &native);
    *info = {bridge::narrowHandle(native.slotID), bridge::narrow(native.state),
             bridge::narrow(native.flags), bridge::narrow(native.ulDeviceError)};
    return bridge::narrow(rv);
}

Ulong ZR_WINDOWS_CALL login(Ulong handle, Ulong user, CK_UTF8CHAR* pin, Ulong length) {
    return bridge::narrow(s_native->C_Login(session(handle), user, pin, length));
}

Ulong ZR_WINDOWS_CALL logout(Ulong handle) {
    return bridge::narrow(s_native->C_Logout(session(handle)));
}

Ulong ZR_WINDOWS_CALL createObject(Ulong handle, windows::Attribute* attributes, Ulong count,
                                   Ulong* object) {
    bridge::Template native(attributes, count);
    CK_OBJECT_HANDLE created = 0;
    const CK_RV rv =
        s_native->C_CreateObject(session(handle), native.data(), native.count(), &created);
    *object = bridge::narrowHandle(created);
    return bridge::narrow(rv);
}

Ulong ZR_WINDOWS_CALL destroyObject(Ulong handle, Ulong object) {
    return bridge::narrow(s_native->C_DestroyObject(session(handle), bridge::widenHandle(object)));
}

Ulong ZR_WINDOWS_CALL getAttributeValue(Ulong handle, Ulong object, windows::Attribute* attributes,
                                        Ulong count) {
    bridge::Template native(attributes, count);
    const CK_RV rv = s_native->C_GetAttributeValue(session(handle), bridge::widenHandle(object),
                                                   native.data(), native.count());
    native.writeBack();
    return bridge::narrow(rv);
}

Ulong ZR_WINDOWS_CALL setAttributeValue(Ulong handle, Ulong object, windows::Attribute* attributes,
                                        Ulong count) {
    bridge::Template native(attributes, count);
    return bridge::narrow(s_native->C_SetAttributeValue(
        session(handle), bridge::widenHandle(object), native.data(), native.count()));
}

Ulong ZR_WINDOWS_CALL findObjectsInit(Ulong handle, windows::Attribute* attributes, Ulong count) {
    bridge::Template native(attributes, count);
    return bridge::narrow(
        s_native->C_FindObjectsInit(session(handle), native.data(), native.count()));
}

Ulong ZR_WINDOWS_CALL findObjects(Ulong handle, Ulong* objects, Ulong maximum, Ulong* count) {
    std::vector<CK_OBJECT_HANDLE> native(maximum + 1);
    CK_ULONG found = 0;
    const CK_RV rv = s_native->C_FindObjects(session(handle), native.data(), maximum, &found);
    for (CK_ULONG i = 0; rv == CKR_OK && i < found && i < maximum; ++i) {
        objects[i] = bridge::narrowHandle(native[i]);
    }
    *count = bridge::narrow(found);
    return bridge::narrow(rv);
}

Ulong ZR_WINDOWS_CALL findObjectsFinal(Ulong handle) {
    return bridge::narrow(s_native->C_FindObjectsFinal(session(handle)));
}

Ulong ZR_WINDOWS_CALL signInit(Ulong handle, windows::Mechanism* mechanism, Ulong key) {
    CK_MECHANISM native = toNative(mechanism);
    return bridge::narrow(s_native->C_SignInit(session(handle), &native, bridge::widenHandle(key)));
}

Ulong ZR_WINDOWS_CALL sign(Ulong handle, CK_BYTE* data, Ulong dataLength, CK_BYTE* signature,
                           Ulong* signatureLength) {
    Length length(signatureLength);
    return bridge::narrow(
        s_native->C_Sign(session(handle), data, dataLength, signature, length.get()));
}

Ulong ZR_WINDOWS_CALL verifyInit(Ulong handle, windows::Mechanism* mechanism, Ulong key) {
    CK_MECHANISM native = toNative(mechanism);
    return bridge::narrow(
        s_native->C_VerifyInit(session(handle), &native, bridge::widenHandle(key)));
}

Ulong ZR_WINDOWS_CALL verify(Ulong handle, CK_BYTE* data, Ulong dataLength, CK_BYTE* signature,
                             Ulong signatureLength) {
    return bridge::narrow(
        s_native->C_Verify(session(handle), data, dataLength, signature, signatureLength));
}

Ulong ZR_WINDOWS_CALL generateRandom(Ulong handle, CK_BYTE* random, Ulong length) {
    return bridge::narrow(s_native->C_GenerateRandom(session(handle), random, length));
}

bool loadNative() {
    if (s_native) {
        return true;
    }
    const char* path = std::getenv("ZRKEY_BRIDGE_MODULE");
    void* module = dlopen(path && *path ? path : ZR_DEFAULT_MODULE, RTLD_NOW | RTLD_LOCAL);
    using GetFunctionList = CK_RV (*)(CK_FUNCTION_LIST**);
    const auto getList =
        module ? reinterpret_cast<GetFunctionList>(dlsym(module, "C_GetFunctionList")) : nullptr;
    CK_FUNCTION_LIST* list = nullptr;
    if (!getList || getList(&list) != CKR_OK || !list) {
        return false;
    }
    s_native = &list->functions;
    return true;
}

windows::FunctionList s_list;

template <class Entry>
void set(std::size_t byteOffset, Entry entry) {
    s_list.functions[byteOffset / sizeof(void*)] = reinterpret_cast<void*>(entry);
}

}  // namespace

extern "C" Ulong ZR_WINDOWS_CALL C_GetFunctionList(windows::FunctionList** list) {
    if (!loadNative()) {
        return static_cast<Ulong>(CKR_GENERAL_ERROR);
    }
    s_list.version = {2, 40};
    for (std::size_t i = 0; i < std::size(s_list.functions); ++i) {
        set(i * sizeof(void*), notSupported);
    }
    set(offsetof(CK_FUNCTIONS, C_Initialize), initialize);
    set(offsetof(CK_FUNCTIONS, C_Finalize), finalize);
    set(offsetof(CK_FUNCTIONS, C_GetInfo), getInfo);
    set(offsetof(CK_FUNCTIONS, C_GetFunctionList), C_GetFunctionList);
    set(offsetof(CK_FUNCTIONS, C_GetSlotList), getSlotList);
    set(offsetof(CK_FUNCTIONS, C_GetSlotInfo), getSlotInfo);
    set(offsetof(CK_FUNCTIONS, C_GetTokenInfo), getTokenInfo);
    set(offsetof(CK_FUNCTIONS, C_SetPIN), setPin);
    set(offsetof(CK_FUNCTIONS, C_OpenSession), openSession);
    set(offsetof(CK_FUNCTIONS, C_CloseSession), closeSession);
    set(offsetof(CK_FUNCTIONS, C_CloseAllSessions), closeAllSessions);
    set(offsetof(CK_FUNCTIONS, C_GetSessionInfo), getSessionInfo);
    set(offsetof(CK_FUNCTIONS, C_Login), login);
    set(offsetof(CK_FUNCTIONS, C_Logout), logout);
    set(offsetof(CK_FUNCTIONS, C_CreateObject), createObject);
    set(offsetof(CK_FUNCTIONS, C_DestroyObject), destroyObject);
    set(offsetof(CK_FUNCTIONS, C_GetAttributeValue), getAttributeValue);
    set(offsetof(CK_FUNCTIONS, C_SetAttributeValue), setAttributeValue);
    set(offsetof(CK_FUNCTIONS, C_FindObjectsInit), findObjectsInit);
    set(offsetof(CK_FUNCTIONS, C_FindObjects), findObjects);
    set(offsetof(CK_FUNCTIONS, C_FindObjectsFinal), findObjectsFinal);
    set(offsetof(CK_FUNCTIONS, C_SignInit), signInit);
    set(offsetof(CK_FUNCTIONS, C_Sign), sign);
    set(offsetof(CK_FUNCTIONS, C_VerifyInit), verifyInit);
    set(offsetof(CK_FUNCTIONS, C_Verify), verify);
    set(offsetof(CK_FUNCTIONS, C_GenerateRandom), generateRandom);
    *list = &s_list;
    return 0;
}
