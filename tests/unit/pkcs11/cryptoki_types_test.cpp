// The numbers and layouts of Cryptoki, written again from PKCS #11 v2.40.
#include "pkcs11/cryptoki_types.h"

#include <gtest/gtest.h>

#include <utility>

namespace zr::test {
namespace {

constexpr bool kIsPacked = sizeof(CK_ULONG) == 4;

/// The size or offset on Windows, where structures are packed, or on Linux.
constexpr std::size_t layout(std::size_t packed, std::size_t natural) {
    return kIsPacked ? packed : natural;
}

TEST(CryptokiTest, ConstantsHaveTheDocumentedValues) {
    const std::pair<unsigned long, CK_ULONG> numbers[] = {
        {1, CK_TRUE},
        {0, CK_FALSE},
        {1, CKF_TOKEN_PRESENT},
        {2, CKF_RW_SESSION},
        {4, CKF_SERIAL_SESSION},
        {0, CKU_SO},
        {1, CKU_USER},
        {0, CKO_DATA},
        {1, CKO_CERTIFICATE},
        {2, CKO_PUBLIC_KEY},
        {3, CKO_PRIVATE_KEY},
        {0, CKK_RSA},
        {0, CKC_X_509},
        {6, CKM_SHA1_RSA_PKCS},
        {0, CKA_CLASS},
        {1, CKA_TOKEN},
        {3, CKA_LABEL},
        {17, CKA_VALUE},
        {128, CKA_CERTIFICATE_TYPE},
        {256, CKA_KEY_TYPE},
        {258, CKA_ID},
        {0, CKR_OK},
        {2, CKR_HOST_MEMORY},
        {3, CKR_SLOT_ID_INVALID},
        {5, CKR_GENERAL_ERROR},
        {6, CKR_FUNCTION_FAILED},
        {7, CKR_ARGUMENTS_BAD},
        {16, CKR_ATTRIBUTE_READ_ONLY},
        {17, CKR_ATTRIBUTE_SENSITIVE},
        {18, CKR_ATTRIBUTE_TYPE_INVALID},
        {50, CKR_DEVICE_REMOVED},
        {84, CKR_FUNCTION_NOT_SUPPORTED},
        {130, CKR_OBJECT_HANDLE_INVALID},
        {144, CKR_OPERATION_ACTIVE},
        {145, CKR_OPERATION_NOT_INITIALIZED},
        {160, CKR_PIN_INCORRECT},
        {161, CKR_PIN_INVALID},
        {162, CKR_PIN_LEN_RANGE},
        {164, CKR_PIN_LOCKED},
        {179, CKR_SESSION_HANDLE_INVALID},
        {192, CKR_SIGNATURE_INVALID},
        {193, CKR_SIGNATURE_LEN_RANGE},
        {224, CKR_TOKEN_NOT_PRESENT},
        {256, CKR_USER_ALREADY_LOGGED_IN},
        {257, CKR_USER_NOT_LOGGED_IN},
        {336, CKR_BUFFER_TOO_SMALL},
        {400, CKR_CRYPTOKI_NOT_INITIALIZED},
        {401, CKR_CRYPTOKI_ALREADY_INITIALIZED},
    };
    int row = 0;
    for (const auto& [expected, number] : numbers) {
        EXPECT_EQ(expected, number) << "row " << row;
        ++row;
    }
    EXPECT_EQ(0u, CK_UNAVAILABLE_INFORMATION + 1);
}

TEST(CryptokiTest, StructuresHaveTheDocumentedLayout) {
    EXPECT_EQ(2u, sizeof(CK_VERSION));
    EXPECT_EQ(layout(72, 88), sizeof(CK_INFO));
    EXPECT_EQ(layout(34, 40), offsetof(CK_INFO, flags));
    EXPECT_EQ(layout(38, 48), offsetof(CK_INFO, libraryDescription));
    EXPECT_EQ(layout(70, 80), offsetof(CK_INFO, libraryVersion));
    EXPECT_EQ(layout(104, 112), sizeof(CK_SLOT_INFO));
    EXPECT_EQ(64u, offsetof(CK_SLOT_INFO, manufacturerID));
    EXPECT_EQ(96u, offsetof(CK_SLOT_INFO, flags));
    EXPECT_EQ(layout(100, 104), offsetof(CK_SLOT_INFO, hardwareVersion));
    EXPECT_EQ(layout(102, 106), offsetof(CK_SLOT_INFO, firmwareVersion));
    EXPECT_EQ(layout(16, 32), sizeof(CK_SESSION_INFO));
    EXPECT_EQ(0u, offsetof(CK_SESSION_INFO, slotID));
    EXPECT_EQ(sizeof(CK_ULONG), offsetof(CK_SESSION_INFO, state));
    EXPECT_EQ(2 * sizeof(CK_ULONG), offsetof(CK_SESSION_INFO, flags));
    EXPECT_EQ(3 * sizeof(CK_ULONG), offsetof(CK_SESSION_INFO, ulDeviceError));
    EXPECT_EQ(layout(16, 24), sizeof(CK_ATTRIBUTE));
    EXPECT_EQ(layout(4, 8), offsetof(CK_ATTRIBUTE, pValue));
    EXPECT_EQ(layout(12, 16), offsetof(CK_ATTRIBUTE, ulValueLen));
    EXPECT_EQ(layout(16, 24), sizeof(CK_MECHANISM));
    EXPECT_EQ(layout(4, 8), offsetof(CK_MECHANISM, pParameter));
    EXPECT_EQ(layout(12, 16), offsetof(CK_MECHANISM, ulParameterLen));
    EXPECT_EQ(3 * sizeof(CK_ULONG), sizeof(CK_MECHANISM_INFO));
    EXPECT_EQ(sizeof(CK_ULONG), offsetof(CK_MECHANISM_INFO, ulMaxKeySize));
    EXPECT_EQ(2 * sizeof(CK_ULONG), offsetof(CK_MECHANISM_INFO, flags));
}

TEST(CryptokiTest, TokenInfoHasTheDocumentedLayout) {
    EXPECT_EQ(layout(160, 208), sizeof(CK_TOKEN_INFO));
    EXPECT_EQ(32u, offsetof(CK_TOKEN_INFO, manufacturerID));
    EXPECT_EQ(64u, offsetof(CK_TOKEN_INFO, model));
    EXPECT_EQ(80u, offsetof(CK_TOKEN_INFO, serialNumber));
    const std::size_t numbers[] = {
        offsetof(CK_TOKEN_INFO, flags),
        offsetof(CK_TOKEN_INFO, ulMaxSessionCount),
        offsetof(CK_TOKEN_INFO, ulSessionCount),
        offsetof(CK_TOKEN_INFO, ulMaxRwSessionCount),
        offsetof(CK_TOKEN_INFO, ulRwSessionCount),
        offsetof(CK_TOKEN_INFO, ulMaxPinLen),
        offsetof(CK_TOKEN_INFO, ulMinPinLen),
        offsetof(CK_TOKEN_INFO, ulTotalPublicMemory),
        offsetof(CK_TOKEN_INFO, ulFreePublicMemory),
        offsetof(CK_TOKEN_INFO, ulTotalPrivateMemory),
        offsetof(CK_TOKEN_INFO, ulFreePrivateMemory),
        offsetof(CK_TOKEN_INFO, hardwareVersion),
    };
    std::size_t expected = 96;
    for (const std::size_t offset : numbers) {
        EXPECT_EQ(expected, offset);
        expected += sizeof(CK_ULONG);
    }
    EXPECT_EQ(layout(142, 186), offsetof(CK_TOKEN_INFO, firmwareVersion));
    EXPECT_EQ(layout(144, 188), offsetof(CK_TOKEN_INFO, utcTime));
}

TEST(CryptokiTest, FunctionListHasTheDocumentedOrder) {
    using F = CK_FUNCTIONS;
    const std::pair<std::size_t, std::size_t> places[] = {
        {0, offsetof(F, C_Initialize)},
        {1, offsetof(F, C_Finalize)},
        {2, offsetof(F, C_GetInfo)},
        {3, offsetof(F, C_GetFunctionList)},
        {4, offsetof(F, C_GetSlotList)},
        {5, offsetof(F, C_GetSlotInfo)},
        {6, offsetof(F, C_GetTokenInfo)},
        {7, offsetof(F, C_GetMechanismList)},
        {8, offsetof(F, C_GetMechanismInfo)},
        {9, offsetof(F, C_InitToken)},
        {10, offsetof(F, C_InitPIN)},
        {11, offsetof(F, C_SetPIN)},
        {12, offsetof(F, C_OpenSession)},
        {13, offsetof(F, C_CloseSession)},
        {14, offsetof(F, C_CloseAllSessions)},
        {15, offsetof(F, C_GetSessionInfo)},
        {18, offsetof(F, C_Login)},
        {19, offsetof(F, C_Logout)},
        {20, offsetof(F, C_CreateObject)},
        {22, offsetof(F, C_DestroyObject)},
        {24, offsetof(F, C_GetAttributeValue)},
        {25, offsetof(F, C_SetAttributeValue)},
        {26, offsetof(F, C_FindObjectsInit)},
        {27, offsetof(F, C_FindObjects)},
        {28, offsetof(F, C_FindObjectsFinal)},
        {42, offsetof(F, C_SignInit)},
        {43, offsetof(F, C_Sign)},
        {48, offsetof(F, C_VerifyInit)},
        {49, offsetof(F, C_Verify)},
        {67, offsetof(F, C_WaitForSlotEvent)},
    };
    for (const auto& [index, offset] : places) {
        EXPECT_EQ(index * sizeof(void*), offset);
    }
    EXPECT_EQ(layout(2, 8), offsetof(CK_FUNCTION_LIST, functions));
}

}  // namespace
}  // namespace zr::test
