// The Cryptoki types in the layout of Windows: packed on bytes, CK_ULONG of 32 bits.
#pragma once

#include <cstddef>
#include <cstdint>

#include "pkcs11/cryptoki_types.h"

namespace zr::bridge::windows {

using Ulong = std::uint32_t;

/// A slot, session or object: an opaque number.
enum class Handle : Ulong {};

inline constexpr Ulong kUnavailable = 0xFFFFFFFF;

#pragma pack(push, 1)

struct Info {
    CK_VERSION cryptokiVersion;
    CK_UTF8CHAR manufacturerID[32];
    Ulong flags;
    CK_UTF8CHAR libraryDescription[32];
    CK_VERSION libraryVersion;
};

struct SlotInfo {
    CK_UTF8CHAR slotDescription[64];
    CK_UTF8CHAR manufacturerID[32];
    Ulong flags;
    CK_VERSION hardwareVersion;
    CK_VERSION firmwareVersion;
};

struct TokenInfo {
    CK_UTF8CHAR label[32];
    CK_UTF8CHAR manufacturerID[32];
    CK_UTF8CHAR model[16];
    CK_CHAR serialNumber[16];
    Ulong flags;
    Ulong ulMaxSessionCount;
    Ulong ulSessionCount;
    Ulong ulMaxRwSessionCount;
    Ulong ulRwSessionCount;
    Ulong ulMaxPinLen;
    Ulong ulMinPinLen;
    Ulong ulTotalPublicMemory;
    Ulong ulFreePublicMemory;
    Ulong ulTotalPrivateMemory;
    Ulong ulFreePrivateMemory;
    CK_VERSION hardwareVersion;
    CK_VERSION firmwareVersion;
    CK_CHAR utcTime[16];
};

struct SessionInfo {
    Handle slotID;
    Ulong state;
    Ulong flags;
    Ulong ulDeviceError;
};

struct Attribute {
    Ulong type;
    void* pValue;
    Ulong ulValueLen;
};

struct Mechanism {
    Ulong mechanism;
    void* pParameter;
    Ulong ulParameterLen;
};

struct MechanismInfo {
    Ulong ulMinKeySize;
    Ulong ulMaxKeySize;
    Ulong flags;
};

struct FunctionList {
    CK_VERSION version;
    void* functions[68];
};

#pragma pack(pop)

static_assert(sizeof(Info) == 72);
static_assert(sizeof(SlotInfo) == 104);
static_assert(sizeof(TokenInfo) == 160);
static_assert(sizeof(SessionInfo) == 16);
static_assert(sizeof(Attribute) == 16);
static_assert(sizeof(Mechanism) == 16);
static_assert(offsetof(FunctionList, functions) == 2);
static_assert(sizeof(CK_FUNCTIONS) == sizeof(FunctionList::functions));

/// A number that does not fit becomes CK_UNAVAILABLE_INFORMATION. The native
/// CK_UNAVAILABLE_INFORMATION is converted correctly by truncation.
constexpr Ulong narrow(CK_ULONG value) {
    return value > kUnavailable ? kUnavailable : static_cast<Ulong>(value);
}

constexpr CK_ULONG widen(Ulong value) {
    return value == kUnavailable ? CK_UNAVAILABLE_INFORMATION : value;
}

}  // namespace zr::bridge::windows
