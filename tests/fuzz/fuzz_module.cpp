// The functions of the module that answers from a fuzzer's input.
#include "tests/fuzz/fuzz_module.h"

#include <dlfcn.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>

#include "pkcs11/cryptoki_types.h"

namespace zr::fuzz {
namespace {

// Writing the longest announced values completely would take too long.
constexpr CK_ULONG kMostWritten = 4096;

Input* s_input = nullptr;
CK_ULONG s_next = 0;

/// Mostly success: a session that fails at once shows little.
CK_RV result() {
    if (!s_input) {
        return CKR_OK;
    }
    const std::uint8_t choice = s_input->byte();
    if (choice < 200) {
        return CKR_OK;
    }
    static constexpr CK_RV failures[] = {CKR_GENERAL_ERROR, CKR_DEVICE_REMOVED,
                                         CKR_USER_ALREADY_LOGGED_IN, CKR_OPERATION_ACTIVE,
                                         CKR_CRYPTOKI_ALREADY_INITIALIZED};
    return choice < 250 ? failures[choice % std::size(failures)] : s_input->number<CK_RV>();
}

/// A number that is likely to matter: near the truth, or near an end of the range.
CK_ULONG about(CK_ULONG truth) {
    if (!s_input) {
        return truth;
    }
    switch (s_input->byte()) {
        case 255:
            return CK_UNAVAILABLE_INFORMATION;
        case 254:
            return CK_UNAVAILABLE_INFORMATION - 1;
        case 253:
            return truth + 1;
        case 252:
            return truth - 1;
        case 251:
            return s_input->number<CK_ULONG>();
        case 250:
            return 0;
        default:
            return truth;
    }
}

void fill(void* target, std::size_t size) {
    std::memset(target, ' ', size);
    if (s_input) {
        const std::string bytes = s_input->text(size);
        std::memcpy(target, bytes.data(), bytes.size());
    }
}

CK_RV succeed(void*) {
    return result();
}

CK_RV getSlotList(CK_BBOOL, CK_SLOT_ID* slots, CK_ULONG* count) {
    const CK_RV rv = result();
    const CK_ULONG room = *count;
    *count = about(2);
    for (CK_ULONG i = 0; slots && i < room && i < *count; ++i) {
        slots[i] = about(i);
    }
    return rv;
}

CK_RV getTokenInfo(CK_SLOT_ID, CK_TOKEN_INFO* info) {
    fill(info, sizeof *info);
    return result();
}

/// The information of a module, slot, session or mechanism.
template <class Info>
CK_RV answerInfo(Info* info) {
    fill(info, sizeof *info);
    return result();
}

CK_RV getMechanismList(CK_SLOT_ID, CK_MECHANISM_TYPE* mechanisms, CK_ULONG* count) {
    return getSlotList(CK_TRUE, mechanisms, count);
}

CK_RV openSession(CK_SLOT_ID, CK_FLAGS, void* application, CK_NOTIFY, CK_SESSION_HANDLE* session) {
    if (application && s_input && s_input->byte() == 255) {
        fill(application, sizeof(void*));
    }
    *session = about(1);
    return result();
}

CK_RV ofSession(CK_SESSION_HANDLE) {
    return result();
}

CK_RV login(CK_SESSION_HANDLE, CK_USER_TYPE, CK_UTF8CHAR*, CK_ULONG) {
    return result();
}

CK_RV setPin(CK_SESSION_HANDLE, CK_UTF8CHAR*, CK_ULONG, CK_UTF8CHAR*, CK_ULONG) {
    return result();
}

CK_RV createObject(CK_SESSION_HANDLE, CK_ATTRIBUTE*, CK_ULONG, CK_OBJECT_HANDLE* object) {
    *object = about(7);
    return result();
}

CK_RV destroyObject(CK_SESSION_HANDLE, CK_OBJECT_HANDLE) {
    return result();
}

CK_RV getAttributeValue(CK_SESSION_HANDLE, CK_OBJECT_HANDLE, CK_ATTRIBUTE* attributes,
                        CK_ULONG count) {
    for (CK_ULONG i = 0; i < count; ++i) {
        CK_ATTRIBUTE& attribute = attributes[i];
        const CK_ULONG truth = attribute.type == CKA_CLASS || attribute.type == CKA_KEY_TYPE
                                   ? sizeof(CK_ULONG)
                                   : CK_ULONG{s_input ? s_input->byte() % 8u : 1u};
        const CK_ULONG length = about(attribute.pValue ? attribute.ulValueLen : truth);
        if (attribute.pValue) {
            std::memset(attribute.pValue, '6', std::min(attribute.ulValueLen, kMostWritten));
            if (s_input && s_input->flag()) {
                fill(attribute.pValue, std::min(attribute.ulValueLen, kMostWritten));
            }
        }
        attribute.ulValueLen = length;
    }
    return result();
}

CK_RV setAttributeValue(CK_SESSION_HANDLE, CK_OBJECT_HANDLE, CK_ATTRIBUTE*, CK_ULONG) {
    return result();
}

CK_RV findObjectsInit(CK_SESSION_HANDLE, CK_ATTRIBUTE*, CK_ULONG) {
    s_next = 0;
    return result();
}

CK_RV findObjects(CK_SESSION_HANDLE, CK_OBJECT_HANDLE* object, CK_ULONG, CK_ULONG* count) {
    // At the end of the input no further object is found, so that every listing ends.
    const bool isThere = s_input ? !s_input->isAtEnd() && s_input->byte() < 200 : s_next < 1;
    *object = about(++s_next);
    *count = isThere ? about(1) : 0;
    return result();
}

CK_RV signInit(CK_SESSION_HANDLE, CK_MECHANISM*, CK_OBJECT_HANDLE) {
    return result();
}

CK_RV sign(CK_SESSION_HANDLE, CK_BYTE*, CK_ULONG, CK_BYTE* signature, CK_ULONG* length) {
    fill(signature, *length);
    *length = about(256);
    return result();
}

CK_RV verify(CK_SESSION_HANDLE, CK_BYTE*, CK_ULONG, CK_BYTE*, CK_ULONG) {
    return result();
}

CK_RV copyObject(CK_SESSION_HANDLE, CK_OBJECT_HANDLE, CK_ATTRIBUTE*, CK_ULONG,
                 CK_OBJECT_HANDLE* object) {
    *object = about(8);
    return result();
}

CK_RV generateKey(CK_SESSION_HANDLE, CK_MECHANISM*, CK_ATTRIBUTE*, CK_ULONG,
                  CK_OBJECT_HANDLE* key) {
    *key = about(9);
    return result();
}

CK_RV generateKeyPair(CK_SESSION_HANDLE, CK_MECHANISM*, CK_ATTRIBUTE*, CK_ULONG, CK_ATTRIBUTE*,
                      CK_ULONG, CK_OBJECT_HANDLE* publicKey, CK_OBJECT_HANDLE* privateKey) {
    *publicKey = about(10);
    *privateKey = about(11);
    return result();
}

CK_RV unwrapKey(CK_SESSION_HANDLE, CK_MECHANISM*, CK_OBJECT_HANDLE, CK_BYTE*, CK_ULONG,
                CK_ATTRIBUTE*, CK_ULONG, CK_OBJECT_HANDLE* key) {
    *key = about(12);
    return result();
}

CK_RV deriveKey(CK_SESSION_HANDLE, CK_MECHANISM*, CK_OBJECT_HANDLE, CK_ATTRIBUTE*, CK_ULONG,
                CK_OBJECT_HANDLE* key) {
    *key = about(13);
    return result();
}

/// Functions that only callers through the bridge use.
void addBridgeFunctions(CK_FUNCTIONS* functions) {
    functions->C_GetInfo = answerInfo<CK_INFO>;
    functions->C_GetSlotInfo = [](CK_SLOT_ID, CK_SLOT_INFO* info) { return answerInfo(info); };
    functions->C_GetSessionInfo = [](CK_SESSION_HANDLE, CK_SESSION_INFO* info) {
        return answerInfo(info);
    };
    functions->C_GetMechanismInfo = [](CK_SLOT_ID, CK_MECHANISM_TYPE, CK_MECHANISM_INFO* info) {
        return answerInfo(info);
    };
    functions->C_GetMechanismList = getMechanismList;
    functions->C_CopyObject = copyObject;
    functions->C_GenerateKey = generateKey;
    functions->C_GenerateKeyPair = generateKeyPair;
    functions->C_UnwrapKey = unwrapKey;
    functions->C_DeriveKey = deriveKey;
}

CK_FUNCTION_LIST makeList() {
    CK_FUNCTION_LIST list = {};
    list.version = {2, 40};
    CK_FUNCTIONS& functions = list.functions;
    functions.C_Initialize = succeed;
    functions.C_Finalize = succeed;
    functions.C_GetSlotList = getSlotList;
    functions.C_GetTokenInfo = getTokenInfo;
    functions.C_OpenSession = openSession;
    functions.C_CloseSession = ofSession;
    functions.C_Login = login;
    functions.C_Logout = ofSession;
    functions.C_SetPIN = setPin;
    functions.C_CreateObject = createObject;
    functions.C_DestroyObject = destroyObject;
    functions.C_GetAttributeValue = getAttributeValue;
    functions.C_SetAttributeValue = setAttributeValue;
    functions.C_FindObjectsInit = findObjectsInit;
    functions.C_FindObjects = findObjects;
    functions.C_FindObjectsFinal = ofSession;
    functions.C_SignInit = signInit;
    functions.C_Sign = sign;
    functions.C_VerifyInit = signInit;
    functions.C_Verify = verify;
    addBridgeFunctions(&functions);
    return list;
}

CK_FUNCTION_LIST s_whole = makeList();
CK_FUNCTION_LIST s_list;

/// Keeps the relay loaded and gives it the list.
void prepareRelay() {
    void* relay = dlopen(ZR_RELAY_MODULE, RTLD_NOW);
    const auto setList =
        relay ? reinterpret_cast<void (*)(CK_FUNCTION_LIST*)>(dlsym(relay, "SetRelayList"))
              : nullptr;
    if (!setList) {
        std::abort();
    }
    setList(&s_list);
}

}  // namespace

void answerFrom(Input* input) {
    s_input = input;
    s_list = s_whole;
    // Sometimes one entry is missing.
    if (input && input->byte() == 255) {
        std::memset(reinterpret_cast<char*>(&s_list.functions) + input->below(68) * sizeof(void*),
                    0, sizeof(void*));
    }
}

const std::string& modulePath() {
    static const std::string path = [] {
        prepareRelay();
        return std::filesystem::relative(ZR_RELAY_MODULE).generic_string();
    }();
    return path;
}

}  // namespace zr::fuzz
