// The Cryptoki types and entry points of PKCS #11 v2.40 that the library and its tests use.
//
// CK_ULONG is unsigned long on both targets: 32 bits on Windows, 64 on Linux. The layout headers of
// platform/ pack the structures on Windows and leave their natural alignment on Linux.
#pragma once

#include <cstddef>

using CK_BYTE = unsigned char;
using CK_BBOOL = unsigned char;
using CK_UTF8CHAR = unsigned char;
using CK_CHAR = unsigned char;
using CK_ULONG = unsigned long;
using CK_FLAGS = CK_ULONG;
using CK_RV = CK_ULONG;
using CK_SLOT_ID = CK_ULONG;
using CK_SESSION_HANDLE = CK_ULONG;
using CK_OBJECT_HANDLE = CK_ULONG;
using CK_OBJECT_CLASS = CK_ULONG;
using CK_KEY_TYPE = CK_ULONG;
using CK_CERTIFICATE_TYPE = CK_ULONG;
using CK_ATTRIBUTE_TYPE = CK_ULONG;
using CK_MECHANISM_TYPE = CK_ULONG;
using CK_USER_TYPE = CK_ULONG;
using CK_STATE = CK_ULONG;
using CK_NOTIFICATION = CK_ULONG;
using CK_NOTIFY = CK_RV (*)(CK_SESSION_HANDLE session, CK_NOTIFICATION event, void* application);

inline constexpr CK_BBOOL CK_TRUE = 1;
inline constexpr CK_BBOOL CK_FALSE = 0;
inline constexpr CK_ULONG CK_UNAVAILABLE_INFORMATION = ~CK_ULONG{0};

inline constexpr CK_FLAGS CKF_TOKEN_PRESENT = 0x1;
inline constexpr CK_FLAGS CKF_RW_SESSION = 0x2;
inline constexpr CK_FLAGS CKF_SERIAL_SESSION = 0x4;

inline constexpr CK_USER_TYPE CKU_SO = 0;
inline constexpr CK_USER_TYPE CKU_USER = 1;

inline constexpr CK_OBJECT_CLASS CKO_DATA = 0;
inline constexpr CK_OBJECT_CLASS CKO_CERTIFICATE = 1;
inline constexpr CK_OBJECT_CLASS CKO_PUBLIC_KEY = 2;
inline constexpr CK_OBJECT_CLASS CKO_PRIVATE_KEY = 3;

inline constexpr CK_KEY_TYPE CKK_RSA = 0;
inline constexpr CK_CERTIFICATE_TYPE CKC_X_509 = 0;
inline constexpr CK_MECHANISM_TYPE CKM_SHA1_RSA_PKCS = 0x6;

inline constexpr CK_ATTRIBUTE_TYPE CKA_CLASS = 0x0;
inline constexpr CK_ATTRIBUTE_TYPE CKA_TOKEN = 0x1;
inline constexpr CK_ATTRIBUTE_TYPE CKA_LABEL = 0x3;
inline constexpr CK_ATTRIBUTE_TYPE CKA_VALUE = 0x11;
inline constexpr CK_ATTRIBUTE_TYPE CKA_CERTIFICATE_TYPE = 0x80;
inline constexpr CK_ATTRIBUTE_TYPE CKA_KEY_TYPE = 0x100;
inline constexpr CK_ATTRIBUTE_TYPE CKA_ID = 0x102;

inline constexpr CK_RV CKR_OK = 0x0;
inline constexpr CK_RV CKR_HOST_MEMORY = 0x2;
inline constexpr CK_RV CKR_SLOT_ID_INVALID = 0x3;
inline constexpr CK_RV CKR_GENERAL_ERROR = 0x5;
inline constexpr CK_RV CKR_FUNCTION_FAILED = 0x6;
inline constexpr CK_RV CKR_ARGUMENTS_BAD = 0x7;
inline constexpr CK_RV CKR_ATTRIBUTE_READ_ONLY = 0x10;
inline constexpr CK_RV CKR_ATTRIBUTE_SENSITIVE = 0x11;
inline constexpr CK_RV CKR_ATTRIBUTE_TYPE_INVALID = 0x12;
inline constexpr CK_RV CKR_DEVICE_REMOVED = 0x32;
inline constexpr CK_RV CKR_FUNCTION_NOT_SUPPORTED = 0x54;
inline constexpr CK_RV CKR_OBJECT_HANDLE_INVALID = 0x82;
inline constexpr CK_RV CKR_OPERATION_ACTIVE = 0x90;
inline constexpr CK_RV CKR_OPERATION_NOT_INITIALIZED = 0x91;
inline constexpr CK_RV CKR_PIN_INCORRECT = 0xA0;
inline constexpr CK_RV CKR_PIN_INVALID = 0xA1;
inline constexpr CK_RV CKR_PIN_LEN_RANGE = 0xA2;
inline constexpr CK_RV CKR_PIN_LOCKED = 0xA4;
inline constexpr CK_RV CKR_SESSION_HANDLE_INVALID = 0xB3;
inline constexpr CK_RV CKR_SIGNATURE_INVALID = 0xC0;
inline constexpr CK_RV CKR_SIGNATURE_LEN_RANGE = 0xC1;
inline constexpr CK_RV CKR_TOKEN_NOT_PRESENT = 0xE0;
inline constexpr CK_RV CKR_USER_ALREADY_LOGGED_IN = 0x100;
inline constexpr CK_RV CKR_USER_NOT_LOGGED_IN = 0x101;
inline constexpr CK_RV CKR_BUFFER_TOO_SMALL = 0x150;
inline constexpr CK_RV CKR_CRYPTOKI_NOT_INITIALIZED = 0x190;
inline constexpr CK_RV CKR_CRYPTOKI_ALREADY_INITIALIZED = 0x191;

#include "platform/cryptoki_layout_begin.h"

struct CK_VERSION {
    CK_BYTE major;
    CK_BYTE minor;
};

struct CK_INFO {
    CK_VERSION cryptokiVersion;
    CK_UTF8CHAR manufacturerID[32];
    CK_FLAGS flags;
    CK_UTF8CHAR libraryDescription[32];
    CK_VERSION libraryVersion;
};

struct CK_SLOT_INFO {
    CK_UTF8CHAR slotDescription[64];
    CK_UTF8CHAR manufacturerID[32];
    CK_FLAGS flags;
    CK_VERSION hardwareVersion;
    CK_VERSION firmwareVersion;
};

struct CK_TOKEN_INFO {
    CK_UTF8CHAR label[32];
    CK_UTF8CHAR manufacturerID[32];
    CK_UTF8CHAR model[16];
    CK_CHAR serialNumber[16];
    CK_FLAGS flags;
    CK_ULONG ulMaxSessionCount;
    CK_ULONG ulSessionCount;
    CK_ULONG ulMaxRwSessionCount;
    CK_ULONG ulRwSessionCount;
    CK_ULONG ulMaxPinLen;
    CK_ULONG ulMinPinLen;
    CK_ULONG ulTotalPublicMemory;
    CK_ULONG ulFreePublicMemory;
    CK_ULONG ulTotalPrivateMemory;
    CK_ULONG ulFreePrivateMemory;
    CK_VERSION hardwareVersion;
    CK_VERSION firmwareVersion;
    CK_CHAR utcTime[16];
};

struct CK_SESSION_INFO {
    CK_SLOT_ID slotID;
    CK_STATE state;
    CK_FLAGS flags;
    CK_ULONG ulDeviceError;
};

struct CK_ATTRIBUTE {
    CK_ATTRIBUTE_TYPE type;
    void* pValue;
    CK_ULONG ulValueLen;
};

struct CK_MECHANISM {
    CK_MECHANISM_TYPE mechanism;
    void* pParameter;
    CK_ULONG ulParameterLen;
};

struct CK_MECHANISM_INFO {
    CK_ULONG ulMinKeySize;
    CK_ULONG ulMaxKeySize;
    CK_FLAGS flags;
};

struct CK_FUNCTION_LIST;

// Formatted by hand: each entry point begins on a new line.
// clang-format off
/// The 68 entry points of Cryptoki 2.x in their standard order, without the leading version.
struct CK_FUNCTIONS {
    CK_RV (*C_Initialize)(void* initArgs);
    CK_RV (*C_Finalize)(void* reserved);
    CK_RV (*C_GetInfo)(CK_INFO* info);
    CK_RV (*C_GetFunctionList)(CK_FUNCTION_LIST** list);
    CK_RV (*C_GetSlotList)(CK_BBOOL tokenPresent, CK_SLOT_ID* slots, CK_ULONG* count);
    CK_RV (*C_GetSlotInfo)(CK_SLOT_ID slot, CK_SLOT_INFO* info);
    CK_RV (*C_GetTokenInfo)(CK_SLOT_ID slot, CK_TOKEN_INFO* info);
    CK_RV (*C_GetMechanismList)(CK_SLOT_ID slot, CK_MECHANISM_TYPE* mechanisms, CK_ULONG* count);
    CK_RV (*C_GetMechanismInfo)(CK_SLOT_ID slot, CK_MECHANISM_TYPE mechanism,
                                CK_MECHANISM_INFO* info);
    CK_RV (*C_InitToken)(CK_SLOT_ID slot, CK_UTF8CHAR* pin, CK_ULONG pinLength, CK_UTF8CHAR* label);
    CK_RV (*C_InitPIN)(CK_SESSION_HANDLE session, CK_UTF8CHAR* pin, CK_ULONG pinLength);
    CK_RV (*C_SetPIN)(CK_SESSION_HANDLE session, CK_UTF8CHAR* oldPin, CK_ULONG oldLength,
                      CK_UTF8CHAR* newPin, CK_ULONG newLength);
    CK_RV (*C_OpenSession)(CK_SLOT_ID slot, CK_FLAGS flags, void* application, CK_NOTIFY notify,
                           CK_SESSION_HANDLE* session);
    CK_RV (*C_CloseSession)(CK_SESSION_HANDLE session);
    CK_RV (*C_CloseAllSessions)(CK_SLOT_ID slot);
    CK_RV (*C_GetSessionInfo)(CK_SESSION_HANDLE session, CK_SESSION_INFO* info);
    CK_RV (*C_GetOperationState)(CK_SESSION_HANDLE session, CK_BYTE* state, CK_ULONG* stateLength);
    CK_RV (*C_SetOperationState)(CK_SESSION_HANDLE session, CK_BYTE* state, CK_ULONG stateLength,
                                 CK_OBJECT_HANDLE encryptionKey,
                                 CK_OBJECT_HANDLE authenticationKey);
    CK_RV (*C_Login)(CK_SESSION_HANDLE session, CK_USER_TYPE userType, CK_UTF8CHAR* pin,
                     CK_ULONG pinLength);
    CK_RV (*C_Logout)(CK_SESSION_HANDLE session);
    CK_RV (*C_CreateObject)(CK_SESSION_HANDLE session, CK_ATTRIBUTE* attributes, CK_ULONG count,
                            CK_OBJECT_HANDLE* object);
    CK_RV (*C_CopyObject)(CK_SESSION_HANDLE session, CK_OBJECT_HANDLE object,
                          CK_ATTRIBUTE* attributes, CK_ULONG count, CK_OBJECT_HANDLE* newObject);
    CK_RV (*C_DestroyObject)(CK_SESSION_HANDLE session, CK_OBJECT_HANDLE object);
    CK_RV (*C_GetObjectSize)(CK_SESSION_HANDLE session, CK_OBJECT_HANDLE object, CK_ULONG* size);
    CK_RV (*C_GetAttributeValue)(CK_SESSION_HANDLE session, CK_OBJECT_HANDLE object,
                                 CK_ATTRIBUTE* attributes, CK_ULONG count);
    CK_RV (*C_SetAttributeValue)(CK_SESSION_HANDLE session, CK_OBJECT_HANDLE object,
                                 CK_ATTRIBUTE* attributes, CK_ULONG count);
    CK_RV (*C_FindObjectsInit)(CK_SESSION_HANDLE session, CK_ATTRIBUTE* attributes, CK_ULONG count);
    CK_RV (*C_FindObjects)(CK_SESSION_HANDLE session, CK_OBJECT_HANDLE* objects, CK_ULONG maximum,
                           CK_ULONG* count);
    CK_RV (*C_FindObjectsFinal)(CK_SESSION_HANDLE session);
    CK_RV (*C_EncryptInit)(CK_SESSION_HANDLE session, CK_MECHANISM* mechanism,
                           CK_OBJECT_HANDLE key);
    CK_RV (*C_Encrypt)(CK_SESSION_HANDLE session, CK_BYTE* data, CK_ULONG dataLength,
                       CK_BYTE* encrypted, CK_ULONG* encryptedLength);
    CK_RV (*C_EncryptUpdate)(CK_SESSION_HANDLE session, CK_BYTE* part, CK_ULONG partLength,
                             CK_BYTE* encrypted, CK_ULONG* encryptedLength);
    CK_RV (*C_EncryptFinal)(CK_SESSION_HANDLE session, CK_BYTE* last, CK_ULONG* lastLength);
    CK_RV (*C_DecryptInit)(CK_SESSION_HANDLE session, CK_MECHANISM* mechanism,
                           CK_OBJECT_HANDLE key);
    CK_RV (*C_Decrypt)(CK_SESSION_HANDLE session, CK_BYTE* encrypted, CK_ULONG encryptedLength,
                       CK_BYTE* data, CK_ULONG* dataLength);
    CK_RV (*C_DecryptUpdate)(CK_SESSION_HANDLE session, CK_BYTE* encrypted,
                             CK_ULONG encryptedLength, CK_BYTE* part, CK_ULONG* partLength);
    CK_RV (*C_DecryptFinal)(CK_SESSION_HANDLE session, CK_BYTE* last, CK_ULONG* lastLength);
    CK_RV (*C_DigestInit)(CK_SESSION_HANDLE session, CK_MECHANISM* mechanism);
    CK_RV (*C_Digest)(CK_SESSION_HANDLE session, CK_BYTE* data, CK_ULONG dataLength,
                      CK_BYTE* digest, CK_ULONG* digestLength);
    CK_RV (*C_DigestUpdate)(CK_SESSION_HANDLE session, CK_BYTE* part, CK_ULONG partLength);
    CK_RV (*C_DigestKey)(CK_SESSION_HANDLE session, CK_OBJECT_HANDLE key);
    CK_RV (*C_DigestFinal)(CK_SESSION_HANDLE session, CK_BYTE* digest, CK_ULONG* digestLength);
    CK_RV (*C_SignInit)(CK_SESSION_HANDLE session, CK_MECHANISM* mechanism, CK_OBJECT_HANDLE key);
    CK_RV (*C_Sign)(CK_SESSION_HANDLE session, CK_BYTE* data, CK_ULONG dataLength,
                    CK_BYTE* signature, CK_ULONG* signatureLength);
    CK_RV (*C_SignUpdate)(CK_SESSION_HANDLE session, CK_BYTE* part, CK_ULONG partLength);
    CK_RV (*C_SignFinal)(CK_SESSION_HANDLE session, CK_BYTE* signature, CK_ULONG* signatureLength);
    CK_RV (*C_SignRecoverInit)(CK_SESSION_HANDLE session, CK_MECHANISM* mechanism,
                               CK_OBJECT_HANDLE key);
    CK_RV (*C_SignRecover)(CK_SESSION_HANDLE session, CK_BYTE* data, CK_ULONG dataLength,
                           CK_BYTE* signature, CK_ULONG* signatureLength);
    CK_RV (*C_VerifyInit)(CK_SESSION_HANDLE session, CK_MECHANISM* mechanism, CK_OBJECT_HANDLE key);
    CK_RV (*C_Verify)(CK_SESSION_HANDLE session, CK_BYTE* data, CK_ULONG dataLength,
                      CK_BYTE* signature, CK_ULONG signatureLength);
    CK_RV (*C_VerifyUpdate)(CK_SESSION_HANDLE session, CK_BYTE* part, CK_ULONG partLength);
    CK_RV (*C_VerifyFinal)(CK_SESSION_HANDLE session, CK_BYTE* signature, CK_ULONG signatureLength);
    CK_RV (*C_VerifyRecoverInit)(CK_SESSION_HANDLE session, CK_MECHANISM* mechanism,
                                 CK_OBJECT_HANDLE key);
    CK_RV (*C_VerifyRecover)(CK_SESSION_HANDLE session, CK_BYTE* signature,
                             CK_ULONG signatureLength, CK_BYTE* data, CK_ULONG* dataLength);
    CK_RV (*C_DigestEncryptUpdate)(CK_SESSION_HANDLE session, CK_BYTE* part, CK_ULONG partLength,
                                   CK_BYTE* encrypted, CK_ULONG* encryptedLength);
    CK_RV (*C_DecryptDigestUpdate)(CK_SESSION_HANDLE session, CK_BYTE* encrypted,
                                   CK_ULONG encryptedLength, CK_BYTE* part, CK_ULONG* partLength);
    CK_RV (*C_SignEncryptUpdate)(CK_SESSION_HANDLE session, CK_BYTE* part, CK_ULONG partLength,
                                 CK_BYTE* encrypted, CK_ULONG* encryptedLength);
    CK_RV (*C_DecryptVerifyUpdate)(CK_SESSION_HANDLE session, CK_BYTE* encrypted,
                                   CK_ULONG encryptedLength, CK_BYTE* part, CK_ULONG* partLength);
    CK_RV (*C_GenerateKey)(CK_SESSION_HANDLE session, CK_MECHANISM* mechanism,
                           CK_ATTRIBUTE* attributes, CK_ULONG count, CK_OBJECT_HANDLE* key);
    CK_RV (*C_GenerateKeyPair)(CK_SESSION_HANDLE session, CK_MECHANISM* mechanism,
                               CK_ATTRIBUTE* publicAttributes, CK_ULONG publicCount,
                               CK_ATTRIBUTE* privateAttributes, CK_ULONG privateCount,
                               CK_OBJECT_HANDLE* publicKey, CK_OBJECT_HANDLE* privateKey);
    CK_RV (*C_WrapKey)(CK_SESSION_HANDLE session, CK_MECHANISM* mechanism,
                       CK_OBJECT_HANDLE wrappingKey, CK_OBJECT_HANDLE key, CK_BYTE* wrapped,
                       CK_ULONG* wrappedLength);
    CK_RV (*C_UnwrapKey)(CK_SESSION_HANDLE session, CK_MECHANISM* mechanism,
                         CK_OBJECT_HANDLE unwrappingKey, CK_BYTE* wrapped, CK_ULONG wrappedLength,
                         CK_ATTRIBUTE* attributes, CK_ULONG count, CK_OBJECT_HANDLE* key);
    CK_RV (*C_DeriveKey)(CK_SESSION_HANDLE session, CK_MECHANISM* mechanism,
                         CK_OBJECT_HANDLE baseKey, CK_ATTRIBUTE* attributes, CK_ULONG count,
                         CK_OBJECT_HANDLE* key);
    CK_RV (*C_SeedRandom)(CK_SESSION_HANDLE session, CK_BYTE* seed, CK_ULONG seedLength);
    CK_RV (*C_GenerateRandom)(CK_SESSION_HANDLE session, CK_BYTE* random, CK_ULONG randomLength);
    CK_RV (*C_GetFunctionStatus)(CK_SESSION_HANDLE session);
    CK_RV (*C_CancelFunction)(CK_SESSION_HANDLE session);
    CK_RV (*C_WaitForSlotEvent)(CK_FLAGS flags, CK_SLOT_ID* slot, void* reserved);
};
// clang-format on

struct CK_FUNCTION_LIST {
    CK_VERSION version;
    CK_FUNCTIONS functions;
};

#include "platform/cryptoki_layout_end.h"

static_assert(sizeof(CK_FUNCTIONS) == 68 * sizeof(void*), "68 entry points and nothing else");
// The first entry point is at byte 2 of a packed list, at byte 8 of a list with natural alignment.
static_assert(offsetof(CK_FUNCTION_LIST, functions) == (sizeof(CK_ULONG) == 4 ? 2 : 8));
static_assert(sizeof(CK_ATTRIBUTE) == (sizeof(CK_ULONG) == 4 ? 16 : 24));
static_assert(sizeof(CK_TOKEN_INFO) == (sizeof(CK_ULONG) == 4 ? 160 : 208));
