// The recording Cryptoki module: entry points that record their arguments and ask the state.
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

/// A template: types in hexadecimal, values of Cryptoki numbers as numbers, others by their length.
std::string text(const CK_ATTRIBUTE* attributes, CK_ULONG count) {
    std::string line = "{";
    for (CK_ULONG i = 0; i < count; ++i) {
        const CK_ATTRIBUTE& attribute = attributes[i];
        char type[16];
        std::snprintf(type, sizeof type, "%s0x%lx", i ? " " : "", attribute.type);
        line += type;
        if (!attribute.pValue) {
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

CK_RV initialize(void* initArgs) {
    return state().record("C_Initialize", initArgs ? "set" : "null");
}

CK_RV finalize(void* reserved) {
    return state().record("C_Finalize", reserved ? "set" : "null");
}

CK_RV getFunctionList(CK_FUNCTION_LIST** list) {
    if (const CK_RV rv = state().settings().functionListResult; rv != CKR_OK) {
        return rv;
    }
    *list = state().settings().functionListIsNull ? nullptr : state().makeList();
    return CKR_OK;
}

CK_RV getSlotList(CK_BBOOL tokenPresent, CK_SLOT_ID* slots, CK_ULONG* count) {
    const CK_RV rv = state().record("C_GetSlotList", std::to_string(tokenPresent) +
                                                         (slots ? ", list" : ", null"));
    if (rv != CKR_OK) {
        return rv;
    }
    const auto& settings = state().settings();
    if (!slots) {
        *count = settings.slotCount;
        return CKR_OK;
    }
    for (CK_ULONG i = 0; i < *count && i < settings.slotCountWhenListed; ++i) {
        slots[i] = 10 + i;
    }
    *count = settings.slotCountWhenListed;
    return CKR_OK;
}

CK_RV getTokenInfo(CK_SLOT_ID slot, CK_TOKEN_INFO* info) {
    const CK_RV rv = state().record("C_GetTokenInfo", text(slot));
    if (rv == CKR_OK) {
        *info = state().settings().tokenInfo;
    }
    return rv;
}

CK_RV openSession(CK_SLOT_ID slot, CK_FLAGS flags, void* application, CK_NOTIFY notify,
                  CK_SESSION_HANDLE* session) {
    const CK_RV rv = state().record(
        "C_OpenSession", text(slot) + ", " + text(flags) + (application ? ", set" : ", null") +
                             (notify ? ", set" : ", null"));
    return rv == CKR_OK ? state().openSession(session, application) : rv;
}

CK_RV closeSession(CK_SESSION_HANDLE session) {
    const CK_RV rv = state().record("C_CloseSession", text(session));
    return rv == CKR_OK ? state().closeSession() : rv;
}

CK_RV login(CK_SESSION_HANDLE session, CK_USER_TYPE user, CK_UTF8CHAR* pin, CK_ULONG length) {
    const CK_RV rv = state().record("C_Login", text(session) + ", " + text(user) + ", " +
                                                   text(pin, length));
    return rv == CKR_OK ? state().login(user, text(pin, length)) : rv;
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

CK_RV createObject(CK_SESSION_HANDLE session, CK_ATTRIBUTE* attributes, CK_ULONG count,
                   CK_OBJECT_HANDLE* object) {
    const CK_RV rv =
        state().record("C_CreateObject", text(session) + ", " + text(attributes, count));
    return rv == CKR_OK ? state().create(attributes, count, object) : rv;
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
    return rv == CKR_OK ? state().findInit(attributes, count) : rv;
}

CK_RV findObjects(CK_SESSION_HANDLE session, CK_OBJECT_HANDLE* objects, CK_ULONG maximum,
                  CK_ULONG* count) {
    // A count of 1 beside a failure, as modules leave it when the token is pulled.
    *count = 1;
    const CK_RV rv = state().record("C_FindObjects", text(session) + ", " + text(maximum));
    return rv == CKR_OK ? state().find(objects, count) : rv;
}

CK_RV findObjectsFinal(CK_SESSION_HANDLE session) {
    const CK_RV rv = state().record("C_FindObjectsFinal", text(session));
    return rv == CKR_OK ? state().findFinal() : rv;
}

CK_RV signInit(CK_SESSION_HANDLE session, CK_MECHANISM* mechanism, CK_OBJECT_HANDLE key) {
    return state().record("C_SignInit", text(session) + ", " + text(mechanism->mechanism) + "/" +
                                            text(mechanism->ulParameterLen) + ", " + text(key));
}

CK_RV sign(CK_SESSION_HANDLE session, CK_BYTE* data, CK_ULONG length, CK_BYTE* signature,
           CK_ULONG* signatureLength) {
    const CK_RV rv = state().record("C_Sign", text(session) + ", [" + text(data, length) + "], " +
                                                  text(*signatureLength));
    if (rv != CKR_OK) {
        return rv;
    }
    const CK_ULONG size = state().settings().signatureLength;
    if (size > *signatureLength) {
        *signatureLength = size;
        return CKR_BUFFER_TOO_SMALL;
    }
    for (CK_ULONG i = 0; i < size; ++i) {
        signature[i] = static_cast<CK_BYTE>(i);
    }
    *signatureLength = size;
    return CKR_OK;
}

CK_RV verifyInit(CK_SESSION_HANDLE session, CK_MECHANISM* mechanism, CK_OBJECT_HANDLE key) {
    return state().record("C_VerifyInit", text(session) + ", " + text(mechanism->mechanism) + "/" +
                                              text(mechanism->ulParameterLen) + ", " + text(key));
}

CK_RV verify(CK_SESSION_HANDLE session, CK_BYTE* data, CK_ULONG length, CK_BYTE* signature,
             CK_ULONG signatureLength) {
    const CK_RV rv = state().record("C_Verify", text(session) + ", [" + text(data, length) +
                                                    "], " + text(signatureLength));
    if (rv != CKR_OK) {
        return rv;
    }
    bool isGood = signatureLength == state().settings().signatureLength;
    for (CK_ULONG i = 0; isGood && i < signatureLength; ++i) {
        isGood = signature[i] == static_cast<CK_BYTE>(i);
    }
    return isGood ? CKR_OK : CKR_SIGNATURE_INVALID;
}

}  // namespace

void fillFunctionList(CK_FUNCTIONS* functions) {
    functions->C_Initialize = initialize;
    functions->C_Finalize = finalize;
    functions->C_GetFunctionList = getFunctionList;
    functions->C_GetSlotList = getSlotList;
    functions->C_GetTokenInfo = getTokenInfo;
    functions->C_SetPIN = setPin;
    functions->C_OpenSession = openSession;
    functions->C_CloseSession = closeSession;
    functions->C_Login = login;
    functions->C_Logout = logout;
    functions->C_CreateObject = createObject;
    functions->C_DestroyObject = destroyObject;
    functions->C_GetAttributeValue = getAttributeValue;
    functions->C_SetAttributeValue = setAttributeValue;
    functions->C_FindObjectsInit = findObjectsInit;
    functions->C_FindObjects = findObjects;
    functions->C_FindObjectsFinal = findObjectsFinal;
    functions->C_SignInit = signInit;
    functions->C_Sign = sign;
    functions->C_VerifyInit = verifyInit;
    functions->C_Verify = verify;
}

EXPORT CK_RV C_GetFunctionList(CK_FUNCTION_LIST** list) {
    return getFunctionList(list);
}

EXPORT RecordingModule* GetRecordingModule() {
    return &state();
}
