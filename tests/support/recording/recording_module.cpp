// The recording Cryptoki module: entry points that record their arguments and call the state.
#include <cstdio>
#include <cstring>
#include <string>

#include "tests/support/recording/recording_state.h"

#define EXPORT extern "C" __attribute__((visibility("default"), used))

namespace {

RecordingState& state() {
    static RecordingState s_state;
    return s_state;
}

std::string text(CK_ULONG value) {
    return value == CK_UNAVAILABLE_INFORMATION ? "unavailable" : std::to_string(value);
}

std::string text(const CK_BYTE* bytes, CK_ULONG length) {
    return {reinterpret_cast<const char*>(bytes), length};
}

/// A template: types in hexadecimal, values of Cryptoki numbers as numbers, others by their length;
/// without a value the length alone, if it is not zero.
std::string text(const CK_ATTRIBUTE* attributes, CK_ULONG count) {
    std::string line = "{";
    for (CK_ULONG i = 0; i < count; ++i) {
        const CK_ATTRIBUTE& attribute = attributes[i];
        char type[16];
        std::snprintf(type, sizeof type, "%s0x%lx", i ? " " : "", attribute.type);
        line += type;
        if (!attribute.pValue) {
            line += attribute.ulValueLen ? "(" + text(attribute.ulValueLen) + ")" : "";
            continue;
        }
        CK_ULONG number = 0;
        if (attribute.ulValueLen == sizeof number &&
            (attribute.type == CKA_CLASS || attribute.type == CKA_KEY_TYPE)) {
            std::memcpy(&number, attribute.pValue, sizeof number);
            line += "=" + text(number);
        } else if (attribute.type == CKA_TOKEN) {
            line += "=" + std::to_string(*static_cast<const CK_BBOOL*>(attribute.pValue));
        } else if (attribute.type == CKA_LABEL || attribute.type == CKA_VALUE) {
            line += "[" + text(attribute.ulValueLen) + "]";
        } else {
            line += "[]";
        }
    }
    return line + "}";
}

/// A mechanism with the length of its parameter, and "set" when there is one.
std::string text(const CK_MECHANISM& mechanism) {
    return text(mechanism.mechanism) + "/" + text(mechanism.ulParameterLen) +
           (mechanism.pParameter ? " set" : "");
}

CK_RV initialize(void* initArgs) {
    return state().record("C_Initialize", initArgs ? "set" : "null");
}

CK_RV finalize(void* reserved) {
    const CK_RV rv = state().record("C_Finalize", reserved ? "set" : "null");
    return rv == CKR_OK ? state().closeAll() : rv;
}

CK_RV getFunctionList(CK_FUNCTION_LIST** list) {
    state().runCallback("C_GetFunctionList");
    if (const CK_RV rv = state().settings().functionListResult; rv != CKR_OK) {
        return rv;
    }
    *list = state().settings().functionListIsNull ? nullptr : state().makeList();
    return CKR_OK;
}

CK_RV getSlotList(CK_BBOOL tokenPresent, CK_SLOT_ID* slots, CK_ULONG* count) {
    const CK_RV rv = state().record("C_GetSlotList",
                                    std::to_string(tokenPresent) + (slots ? ", list" : ", null"));
    if (rv != CKR_OK) {
        return rv;
    }
    const auto& settings = state().settings();
    const CK_ULONG present = (slots ? settings.slotCountWhenListed : settings.slotCount) +
                             (tokenPresent ? 0 : settings.emptySlotCount);
    for (CK_ULONG i = 0; slots && i < *count && i < present; ++i) {
        slots[i] = 10 + i;
    }
    *count = present;
    state().fault().lieAboutCount(count);
    state().lastCall().setCount(*count, 0);
    return CKR_OK;
}

CK_RV getInfo(CK_INFO* info) {
    const CK_RV rv = state().record("C_GetInfo", "");
    if (rv == CKR_OK) {
        *info = {};
        info->cryptokiVersion = {2, 40};
        info->libraryVersion = {1, 2};
        std::memcpy(info->manufacturerID, "Module Maker", 12);
        std::memcpy(info->libraryDescription, "Recording Module", 16);
    }
    return rv;
}

CK_RV getSlotInfo(CK_SLOT_ID slot, CK_SLOT_INFO* info) {
    const CK_RV rv = state().record("C_GetSlotInfo", text(slot));
    if (rv == CKR_OK) {
        *info = {};
        std::memcpy(info->slotDescription, "Recording Reader", 16);
        std::memcpy(info->manufacturerID, "Reader Maker", 12);
        info->flags = slot < 10 + state().settings().slotCount ? CKF_TOKEN_PRESENT : 0;
    }
    return rv;
}

CK_RV getMechanismList(CK_SLOT_ID slot, CK_MECHANISM_TYPE* mechanisms, CK_ULONG* count) {
    const CK_RV rv =
        state().record("C_GetMechanismList", text(slot) + (mechanisms ? ", list" : ", null"));
    if (rv != CKR_OK) {
        return rv;
    }
    const auto& settings = state().settings();
    for (CK_ULONG i = 0; mechanisms && i < *count && i < settings.mechanismCount; ++i) {
        mechanisms[i] = settings.mechanisms[i];
    }
    *count = settings.mechanismCount;
    state().fault().lieAboutCount(count);
    return CKR_OK;
}

CK_RV getMechanismInfo(CK_SLOT_ID slot, CK_MECHANISM_TYPE mechanism, CK_MECHANISM_INFO* info) {
    const CK_RV rv = state().record("C_GetMechanismInfo", text(slot) + ", " + text(mechanism));
    if (rv == CKR_OK) {
        *info = {512, 4096, state().settings().mechanismFlags};
    }
    return rv;
}

CK_RV waitForSlotEvent(CK_FLAGS flags, CK_SLOT_ID* slot, void* reserved) {
    const CK_RV rv =
        state().record("C_WaitForSlotEvent", text(flags) + (reserved ? ", set" : ", null"));
    if (rv != CKR_OK) {
        return rv;
    }
    CK_SLOT_ID& next = state().settings().eventSlot;
    if (next == 0) {
        return 0x8;  // CKR_NO_EVENT
    }
    *slot = next;
    next = 0;
    return CKR_OK;
}

CK_RV getTokenInfo(CK_SLOT_ID slot, CK_TOKEN_INFO* info) {
    const CK_RV rv = state().record("C_GetTokenInfo", text(slot));
    if (rv == CKR_OK) {
        *info = state().settings().tokenInfo;
        state().fault().lieAboutToken(info);
        state().lastCall().setTokenInfo(*info);
    }
    return rv;
}

CK_RV openSession(CK_SLOT_ID slot, CK_FLAGS flags, void* application, CK_NOTIFY notify,
                  CK_SESSION_HANDLE* session) {
    const CK_RV rv = state().record("C_OpenSession", text(slot) + ", " + text(flags) +
                                                         (application ? ", set" : ", null") +
                                                         (notify ? ", set" : ", null"));
    if (rv != CKR_OK) {
        return rv;
    }
    const CK_RV opened = state().openSession(session, application);
    state().lastCall().setCount(0, *session);
    return opened;
}

CK_RV closeSession(CK_SESSION_HANDLE session) {
    const CK_RV rv = state().record("C_CloseSession", text(session));
    return rv == CKR_OK ? state().closeSession(session) : rv;
}

CK_RV login(CK_SESSION_HANDLE session, CK_USER_TYPE user, CK_UTF8CHAR* pin, CK_ULONG length) {
    const CK_RV rv =
        state().record("C_Login", text(session) + ", " + text(user) + ", " + text(pin, length));
    const std::string given = text(pin, length);
    if (state().settings().overwritesPin) {
        std::memset(pin, 'x', length + 1);
    }
    return rv == CKR_OK ? state().login(user, given) : rv;
}

CK_RV logout(CK_SESSION_HANDLE session) {
    const CK_RV rv = state().record("C_Logout", text(session));
    return rv == CKR_OK ? state().logout() : rv;
}

CK_RV setPin(CK_SESSION_HANDLE session, CK_UTF8CHAR* oldPin, CK_ULONG oldLength,
             CK_UTF8CHAR* newPin, CK_ULONG newLength) {
    const CK_RV rv = state().record("C_SetPIN", text(session) + ", " + text(oldPin, oldLength) +
                                                    ", " + text(newPin, newLength));
    return rv == CKR_OK ? state().setPin(text(oldPin, oldLength), text(newPin, newLength)) : rv;
}

CK_RV initPin(CK_SESSION_HANDLE session, CK_UTF8CHAR* pin, CK_ULONG length) {
    const CK_RV rv = state().record("C_InitPIN", text(session) + ", " + text(pin, length));
    return rv == CKR_OK ? state().initPin(text(pin, length)) : rv;
}

CK_RV createObject(CK_SESSION_HANDLE session, CK_ATTRIBUTE* attributes, CK_ULONG count,
                   CK_OBJECT_HANDLE* object) {
    const CK_RV rv =
        state().record("C_CreateObject", text(session) + ", " + text(attributes, count));
    if (rv != CKR_OK) {
        return rv;
    }
    const CK_RV created = state().create(attributes, count, object);
    state().lastCall().setCount(0, *object);
    return created;
}

CK_RV copyObject(CK_SESSION_HANDLE session, CK_OBJECT_HANDLE object, CK_ATTRIBUTE* attributes,
                 CK_ULONG count, CK_OBJECT_HANDLE* made) {
    const CK_RV rv = state().record(
        "C_CopyObject", text(session) + ", " + text(object) + ", " + text(attributes, count));
    return rv == CKR_OK ? state().copy(object, attributes, count, made) : rv;
}

CK_RV destroyObject(CK_SESSION_HANDLE session, CK_OBJECT_HANDLE object) {
    const CK_RV rv = state().record("C_DestroyObject", text(session) + ", " + text(object));
    return rv == CKR_OK ? state().destroy(object) : rv;
}

CK_RV getAttributeValue(CK_SESSION_HANDLE session, CK_OBJECT_HANDLE object,
                        CK_ATTRIBUTE* attributes, CK_ULONG count) {
    const CK_RV rv = state().record("C_GetAttributeValue", text(session) + ", " + text(object) +
                                                               ", " + text(attributes, count));
    return rv == CKR_OK ? state().read(object, attributes, count) : rv;
}

CK_RV setAttributeValue(CK_SESSION_HANDLE session, CK_OBJECT_HANDLE object,
                        CK_ATTRIBUTE* attributes, CK_ULONG count) {
    const CK_RV rv = state().record("C_SetAttributeValue", text(session) + ", " + text(object) +
                                                               ", " + text(attributes, count));
    return rv == CKR_OK ? state().write(object, attributes, count) : rv;
}

CK_RV findObjectsInit(CK_SESSION_HANDLE session, CK_ATTRIBUTE* attributes, CK_ULONG count) {
    const CK_RV rv =
        state().record("C_FindObjectsInit", text(session) + ", " + text(attributes, count));
    return rv == CKR_OK ? state().findInit(session, attributes, count) : rv;
}

CK_RV findObjects(CK_SESSION_HANDLE session, CK_OBJECT_HANDLE* objects, CK_ULONG maximum,
                  CK_ULONG* count) {
    // A count of 1 beside a failure, as modules leave it when the token is pulled.
    *count = 1;
    const CK_RV rv = state().record("C_FindObjects", text(session) + ", " + text(maximum));
    if (rv != CKR_OK) {
        return rv;
    }
    const CK_RV found = state().find(session, objects, count);
    state().fault().lieAboutCount(count);
    state().lastCall().setCount(*count, *objects);
    return found;
}

CK_RV findObjectsFinal(CK_SESSION_HANDLE session) {
    const CK_RV rv = state().record("C_FindObjectsFinal", text(session));
    return rv == CKR_OK ? state().findFinal(session) : rv;
}

CK_RV signInit(CK_SESSION_HANDLE session, CK_MECHANISM* mechanism, CK_OBJECT_HANDLE key) {
    return state().record("C_SignInit", text(session) + ", " + text(*mechanism) + ", " + text(key));
}

/// Hands the signature out.
CK_RV giveSignature(CK_BYTE* signature, CK_ULONG* signatureLength) {
    const auto& settings = state().settings();
    const CK_ULONG size = settings.signatureLength;
    if (size > *signatureLength) {
        *signatureLength = size;
        return CKR_BUFFER_TOO_SMALL;
    }
    const CK_ULONG room = *signatureLength;
    for (CK_ULONG i = 0; i < size; ++i) {
        signature[i] = settings.signature ? settings.signature[i] : static_cast<CK_BYTE>(i);
    }
    *signatureLength = size;
    state().fault().lieAboutLength(signatureLength, 0, room);
    state().lastCall().addValue(*signatureLength, signature, room);
    return CKR_OK;
}

CK_RV sign(CK_SESSION_HANDLE session, CK_BYTE* data, CK_ULONG length, CK_BYTE* signature,
           CK_ULONG* signatureLength) {
    const CK_RV rv = state().record(
        "C_Sign", text(session) + ", [" + text(data, length) + "], " + text(*signatureLength));
    return rv == CKR_OK ? giveSignature(signature, signatureLength) : rv;
}

CK_RV signUpdate(CK_SESSION_HANDLE session, CK_BYTE* part, CK_ULONG length) {
    return state().record("C_SignUpdate", text(session) + ", [" + text(part, length) + "]");
}

CK_RV signFinal(CK_SESSION_HANDLE session, CK_BYTE* signature, CK_ULONG* signatureLength) {
    const CK_RV rv = state().record("C_SignFinal", text(session) + ", " + text(*signatureLength));
    return rv == CKR_OK ? giveSignature(signature, signatureLength) : rv;
}

CK_RV verifyInit(CK_SESSION_HANDLE session, CK_MECHANISM* mechanism, CK_OBJECT_HANDLE key) {
    return state().record("C_VerifyInit",
                          text(session) + ", " + text(*mechanism) + ", " + text(key));
}

CK_RV checkSignature(const CK_BYTE* signature, CK_ULONG length) {
    const auto& settings = state().settings();
    bool isGood = length == settings.signatureLength;
    for (CK_ULONG i = 0; isGood && i < length; ++i) {
        isGood =
            signature[i] == (settings.signature ? settings.signature[i] : static_cast<CK_BYTE>(i));
    }
    return isGood ? CKR_OK : CKR_SIGNATURE_INVALID;
}

CK_RV verify(CK_SESSION_HANDLE session, CK_BYTE* data, CK_ULONG length, CK_BYTE* signature,
             CK_ULONG signatureLength) {
    const CK_RV rv = state().record(
        "C_Verify", text(session) + ", [" + text(data, length) + "], " + text(signatureLength));
    return rv == CKR_OK ? checkSignature(signature, signatureLength) : rv;
}

CK_RV verifyUpdate(CK_SESSION_HANDLE session, CK_BYTE* part, CK_ULONG length) {
    return state().record("C_VerifyUpdate", text(session) + ", [" + text(part, length) + "]");
}

CK_RV verifyFinal(CK_SESSION_HANDLE session, CK_BYTE* signature, CK_ULONG signatureLength) {
    const CK_RV rv = state().record("C_VerifyFinal", text(session) + ", " + text(signatureLength));
    return rv == CKR_OK ? checkSignature(signature, signatureLength) : rv;
}

/// An entry point whose result is recorded with the call.
template <auto Entry>
struct Answering;

template <class... Parameters, CK_RV (*Entry)(Parameters...)>
struct Answering<Entry> {
    static CK_RV call(Parameters... parameters) {
        const CK_RV rv = state().fault().endCall(Entry(parameters...));
        state().lastCall().setResult(rv);
        return rv;
    }
};

}  // namespace

void fillFunctionList(CK_FUNCTIONS* functions) {
    functions->C_Initialize = Answering<initialize>::call;
    functions->C_Finalize = Answering<finalize>::call;
    functions->C_GetInfo = Answering<getInfo>::call;
    functions->C_GetFunctionList = getFunctionList;
    functions->C_GetSlotList = Answering<getSlotList>::call;
    functions->C_GetSlotInfo = Answering<getSlotInfo>::call;
    functions->C_GetTokenInfo = Answering<getTokenInfo>::call;
    functions->C_GetMechanismList = Answering<getMechanismList>::call;
    functions->C_GetMechanismInfo = Answering<getMechanismInfo>::call;
    functions->C_InitPIN = Answering<initPin>::call;
    functions->C_SetPIN = Answering<setPin>::call;
    functions->C_OpenSession = Answering<openSession>::call;
    functions->C_CloseSession = Answering<closeSession>::call;
    functions->C_Login = Answering<login>::call;
    functions->C_Logout = Answering<logout>::call;
    functions->C_CreateObject = Answering<createObject>::call;
    functions->C_CopyObject = Answering<copyObject>::call;
    functions->C_DestroyObject = Answering<destroyObject>::call;
    functions->C_GetAttributeValue = Answering<getAttributeValue>::call;
    functions->C_SetAttributeValue = Answering<setAttributeValue>::call;
    functions->C_FindObjectsInit = Answering<findObjectsInit>::call;
    functions->C_FindObjects = Answering<findObjects>::call;
    functions->C_FindObjectsFinal = Answering<findObjectsFinal>::call;
    functions->C_SignInit = Answering<signInit>::call;
    functions->C_Sign = Answering<sign>::call;
    functions->C_SignUpdate = Answering<signUpdate>::call;
    functions->C_SignFinal = Answering<signFinal>::call;
    functions->C_VerifyInit = Answering<verifyInit>::call;
    functions->C_Verify = Answering<verify>::call;
    functions->C_VerifyUpdate = Answering<verifyUpdate>::call;
    functions->C_VerifyFinal = Answering<verifyFinal>::call;
    functions->C_WaitForSlotEvent = Answering<waitForSlotEvent>::call;
}

EXPORT CK_RV C_GetFunctionList(CK_FUNCTION_LIST** list) {
    return getFunctionList(list);
}

EXPORT RecordingModule* GetRecordingModule() {
    return &state();
}
