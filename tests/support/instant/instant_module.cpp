// A Cryptoki module that returns at once and stores nothing, so that time and memory of the
// library itself can be measured: one token with as many certificates as set by
// ZRKEY_INSTANT_CERTIFICATES (32), one key pair, and a file "6". With ZRKEY_INSTANT_FILES it has as many
// files instead, labelled from "1" on; the contents of each are its label. It accepts any PIN and any
// signature, and forgets the file that is created. The end of a
// session takes as many milliseconds as set by ZRKEY_INSTANT_CLOSE_TIME (0), and a login as many as
// set by ZRKEY_INSTANT_LOGIN_TIME (0). The token "Instant" has the flags set by ZRKEY_INSTANT_FLAGS
// (0), and a login the result set by ZRKEY_INSTANT_LOGIN (0). With ZRKEY_INSTANT_EMPTY=1 the reader is
// empty. Logins, logouts and ends are appended to the file ZRKEY_INSTANT_LOG, a line for each. With
// ZRKEY_INSTANT_SERVER a login is also written to this descriptor, as to a server of the module, and
// is CKR_GENERAL_ERROR when that fails. C_GetTokenInfo takes as many milliseconds as set by
// ZRKEY_INSTANT_INFO_TIME (0); with ZRKEY_INSTANT_NOISE=1 it reads standard input and prints on standard
// output what it found.
// Other programs can use it as far as tests/documents/compare does.
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <thread>

#include "pkcs11/cryptoki_types.h"

namespace {

// Added to the number of a file makes its handle; all other objects have their number as handle.
constexpr CK_OBJECT_HANDLE kNumberedFile = CK_OBJECT_HANDLE{1} << 24;

// Every thread of a host may start the module.
std::atomic<CK_ULONG> s_certificates{32};
std::atomic<CK_ULONG> s_files{0};  // 0: the file "6" alone
std::atomic<long> s_closeTime{0};
// A session is used by one thread at a time, and each thread of a test has one.
thread_local CK_OBJECT_CLASS s_class = 0;
thread_local CK_ULONG s_next = 0;

/// @param call  a line.
void note(const char* call) {
    if (const char* path = std::getenv("ZRKEY_INSTANT_LOG")) {
        if (std::FILE* file = std::fopen(path, "ab")) {
            std::fputs(call, file);
            std::fclose(file);
        }
    }
}

CK_RV initialize(void*) {
    if (const char* count = std::getenv("ZRKEY_INSTANT_CERTIFICATES")) {
        s_certificates = std::strtoul(count, nullptr, 10);
    }
    if (const char* count = std::getenv("ZRKEY_INSTANT_FILES")) {
        s_files = std::strtoul(count, nullptr, 10);
    }
    if (const char* milliseconds = std::getenv("ZRKEY_INSTANT_CLOSE_TIME")) {
        s_closeTime = std::strtol(milliseconds, nullptr, 10);
    }
    return CKR_OK;
}

CK_RV finalize(void*) {
    note("C_Finalize\n");
    return CKR_OK;
}

/// A number from the environment.
CK_ULONG setting(const char* name) {
    const char* value = std::getenv(name);
    return value ? std::strtoul(value, nullptr, 0) : 0;
}

CK_RV getSlotList(CK_BBOOL withToken, CK_SLOT_ID* slots, CK_ULONG* count) {
    *count = withToken && setting("ZRKEY_INSTANT_EMPTY") != 0 ? 0 : 1;
    if (slots && *count > 0) {
        slots[0] = 0;
    }
    return CKR_OK;
}

CK_RV getInfo(CK_INFO* info) {
    *info = {};
    info->cryptokiVersion = {2, 40};
    return CKR_OK;
}

CK_RV getSlotInfo(CK_SLOT_ID, CK_SLOT_INFO* info) {
    constexpr CK_FLAGS kTokenPresent = 1;
    constexpr CK_FLAGS kRemovableDevice = 2;
    *info = {};
    info->flags = kRemovableDevice | (setting("ZRKEY_INSTANT_EMPTY") != 0 ? 0 : kTokenPresent);
    return CKR_OK;
}

CK_RV getSessionInfo(CK_SESSION_HANDLE, CK_SESSION_INFO* info) {
    *info = {};
    return CKR_OK;
}

/// Uses the streams of the program, as a module should not.
void makeNoise() {
    char bytes[16];
    const auto count = read(0, bytes, sizeof bytes);
    std::printf("noise after %d bytes of input\n", static_cast<int>(count));
    std::fflush(stdout);
}

CK_RV getTokenInfo(CK_SLOT_ID, CK_TOKEN_INFO* info) {
    if (setting("ZRKEY_INSTANT_NOISE") != 0) {
        makeNoise();
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(setting("ZRKEY_INSTANT_INFO_TIME")));
    *info = {};
    std::memset(info->label, ' ', sizeof info->label);
    std::memcpy(info->label, "Instant", 7);
    info->flags = setting("ZRKEY_INSTANT_FLAGS");
    return CKR_OK;
}

CK_RV openSession(CK_SLOT_ID, CK_FLAGS, void*, CK_NOTIFY, CK_SESSION_HANDLE* session) {
    *session = 1;
    return CKR_OK;
}

CK_RV closeSession(CK_SESSION_HANDLE) {
    note("C_CloseSession\n");
    if (s_closeTime > 0) {
        std::this_thread::sleep_for(std::chrono::milliseconds(s_closeTime));
    }
    return CKR_OK;
}

CK_RV logout(CK_SESSION_HANDLE) {
    note("C_Logout\n");
    return CKR_OK;
}

CK_RV login(CK_SESSION_HANDLE, CK_USER_TYPE, CK_UTF8CHAR*, CK_ULONG) {
    note("C_Login\n");
    const int server = static_cast<int>(setting("ZRKEY_INSTANT_SERVER"));
    if (server != 0 && write(server, "C_Login\n", 8) != 8) {
        return CKR_GENERAL_ERROR;
    }
    if (const char* milliseconds = std::getenv("ZRKEY_INSTANT_LOGIN_TIME")) {
        const auto time = std::chrono::milliseconds(std::strtol(milliseconds, nullptr, 10));
        std::this_thread::sleep_until(std::chrono::steady_clock::now() + time);
    }
    return setting("ZRKEY_INSTANT_LOGIN");
}

CK_RV setPin(CK_SESSION_HANDLE, CK_UTF8CHAR*, CK_ULONG, CK_UTF8CHAR*, CK_ULONG) {
    return CKR_OK;
}

CK_RV findObjectsInit(CK_SESSION_HANDLE, CK_ATTRIBUTE* attributes, CK_ULONG) {
    std::memcpy(&s_class, attributes[0].pValue, sizeof s_class);
    s_next = 0;
    return CKR_OK;
}

CK_RV findObjects(CK_SESSION_HANDLE, CK_OBJECT_HANDLE* objects, CK_ULONG, CK_ULONG* count) {
    CK_ULONG objectCount = 1;
    CK_OBJECT_HANDLE kind = 0;
    if (s_class == CKO_CERTIFICATE) {
        objectCount = s_certificates;
    } else if (s_class == CKO_DATA && s_files > 0) {
        objectCount = s_files;
        kind = kNumberedFile;
    }
    *count = s_next < objectCount ? 1 : 0;
    objects[0] = kind | ++s_next;
    return CKR_OK;
}

CK_RV findObjectsFinal(CK_SESSION_HANDLE) {
    return CKR_OK;
}

/// The ID of an object: eight hexadecimal digits. Formatting by printf would take longer than the work
/// that is measured with this module.
void writeId(CK_OBJECT_HANDLE object, char* id) {
    for (int i = 0; i < 8; ++i) {
        id[i] = "0123456789abcdef"[(object >> (4 * (7 - i))) & 0xF];
    }
}

/// Answers with the number of a file in decimal, which is its label and its contents.
void answerNumber(CK_ULONG number, CK_ATTRIBUTE* attribute) {
    CK_ULONG digits = 1;
    for (CK_ULONG rest = number; rest >= 10; rest /= 10) {
        ++digits;
    }
    for (CK_ULONG i = digits; attribute->pValue && i > 0; number /= 10) {
        static_cast<char*>(attribute->pValue)[--i] = static_cast<char>('0' + number % 10);
    }
    attribute->ulValueLen = digits;
}

CK_RV getAttributeValue(CK_SESSION_HANDLE, CK_OBJECT_HANDLE object, CK_ATTRIBUTE* attributes,
                        CK_ULONG count) {
    for (CK_ULONG i = 0; i < count; ++i) {
        CK_ATTRIBUTE& attribute = attributes[i];
        if (attribute.type == CKA_ID) {
            if (attribute.pValue) {
                writeId(object, static_cast<char*>(attribute.pValue));
            }
            attribute.ulValueLen = 8;
        } else if (object > kNumberedFile &&
                   (attribute.type == CKA_LABEL || attribute.type == CKA_VALUE)) {
            answerNumber(object - kNumberedFile, &attribute);
        } else if (attribute.type == CKA_LABEL) {
            if (attribute.pValue) {
                std::memcpy(attribute.pValue, "6", 1);
            }
            attribute.ulValueLen = 1;
        } else {
            if (attribute.pValue) {
                std::memset(attribute.pValue, 0, sizeof(CK_ULONG));
            }
            attribute.ulValueLen = sizeof(CK_ULONG);
        }
    }
    return CKR_OK;
}

CK_RV createObject(CK_SESSION_HANDLE, CK_ATTRIBUTE*, CK_ULONG, CK_OBJECT_HANDLE* object) {
    *object = 1;
    return CKR_OK;
}

CK_RV setAttributeValue(CK_SESSION_HANDLE, CK_OBJECT_HANDLE, CK_ATTRIBUTE*, CK_ULONG) {
    return CKR_OK;
}

CK_RV destroyObject(CK_SESSION_HANDLE, CK_OBJECT_HANDLE) {
    return CKR_OK;
}

CK_RV signInit(CK_SESSION_HANDLE, CK_MECHANISM*, CK_OBJECT_HANDLE) {
    return CKR_OK;
}

CK_RV sign(CK_SESSION_HANDLE, CK_BYTE*, CK_ULONG, CK_BYTE* signature, CK_ULONG* length) {
    if (signature) {  // else the caller asks for the length
        std::memset(signature, 1, 256);
    }
    *length = 256;
    return CKR_OK;
}

CK_RV verifyInit(CK_SESSION_HANDLE, CK_MECHANISM*, CK_OBJECT_HANDLE) {
    return CKR_OK;
}

CK_RV verify(CK_SESSION_HANDLE, CK_BYTE*, CK_ULONG, CK_BYTE*, CK_ULONG) {
    return CKR_OK;
}

CK_FUNCTION_LIST makeList() {
    CK_FUNCTION_LIST list = {};
    list.version = {2, 40};
    CK_FUNCTIONS& functions = list.functions;
    functions.C_Initialize = initialize;
    functions.C_Finalize = finalize;
    functions.C_GetInfo = getInfo;
    functions.C_GetSlotList = getSlotList;
    functions.C_GetSlotInfo = getSlotInfo;
    functions.C_GetSessionInfo = getSessionInfo;
    functions.C_GetTokenInfo = getTokenInfo;
    functions.C_OpenSession = openSession;
    functions.C_CloseSession = closeSession;
    functions.C_Logout = logout;
    functions.C_Login = login;
    functions.C_SetPIN = setPin;
    functions.C_CreateObject = createObject;
    functions.C_SetAttributeValue = setAttributeValue;
    functions.C_DestroyObject = destroyObject;
    functions.C_FindObjectsInit = findObjectsInit;
    functions.C_FindObjects = findObjects;
    functions.C_FindObjectsFinal = findObjectsFinal;
    functions.C_GetAttributeValue = getAttributeValue;
    functions.C_SignInit = signInit;
    functions.C_Sign = sign;
    functions.C_VerifyInit = verifyInit;
    functions.C_Verify = verify;
    return list;
}

CK_FUNCTION_LIST s_list = makeList();

}  // namespace

extern "C" __attribute__((visibility("default"))) CK_RV C_GetFunctionList(CK_FUNCTION_LIST** list) {
    *list = &s_list;
    return CKR_OK;
}
