// The Cryptoki types as a Windows host sees them: packed on bytes, CK_ULONG of 32 bits. They stand
// beside the native ones in one translation.
#pragma once

#include <cstdint>

#include "pkcs11/cryptoki.h"

#define ZR_WINDOWS_CALL __attribute__((ms_abi))

namespace windows {

using Ulong = std::uint32_t;

inline constexpr Ulong kUnavailable = ~Ulong{0};

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
    Ulong
        numbers[11];  ///< flags, session counts, PIN lengths and memory sizes, in Cryptoki's order
    CK_VERSION hardwareVersion;
    CK_VERSION firmwareVersion;
    CK_CHAR utcTime[16];
};

struct SessionInfo {
    Ulong slotID;
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

struct FunctionList {
    CK_VERSION version;
    void* functions[68];
};

#pragma pack(pop)

static_assert(sizeof(TokenInfo) == 160 && sizeof(Attribute) == 16 && sizeof(Mechanism) == 16);
static_assert(sizeof(FunctionList) == 2 + 68 * 8);

}  // namespace windows
