// The bridge between a Windows caller and a module with the native layout.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/bridge/calls.h"
#include "tests/support/recording/recording.h"

extern "C" [[gnu::ms_abi]] zr::bridge::windows::Ulong C_GetFunctionList(
    zr::bridge::windows::FunctionList** list);

namespace zr::bridge {
namespace {

using windows::Attribute;
using windows::kUnavailable;

/// Entry points as a Windows program calls them, by their index in the list.
enum Place {
    kInitializeAt = 0,
    kInfoAt = 2,
    kSlotListAt = 4,
    kTokenInfoAt = 6,
    kOpenSessionAt = 12,
    kLoginAt = 18,
    kCreateAt = 20,
    kReadAt = 24,
    kFindInitAt = 26,
    kFindAt = 27,
    kFindFinalAt = 28,
    kSignInitAt = 42,
    kSignAt = 43,
    kSeedRandomAt = 63,
    kSlotEventAt = 67
};

class BridgeTest : public testing::Test {
protected:
    BridgeTest() {
        EXPECT_EQ(CKR_OK, C_GetFunctionList(&m_list));
        EXPECT_EQ(CKR_OK, (call<void*>(kInitializeAt, nullptr)));
        EXPECT_EQ(CKR_OK, (call<Handle, Ulong, void*, void*, Handle*>(kOpenSessionAt, Handle{10}, 6,
                                                                      nullptr, nullptr, &session)));
        module.takeCalls();
    }

    template <class... Arguments>
    Ulong call(Place place, Arguments... arguments) const {
        using Function = Ulong(__attribute__((ms_abi))*)(Arguments...);
        return reinterpret_cast<Function>(m_list->functions[place])(arguments...);
    }

    Ulong read(Handle object, std::vector<Attribute>* attributes) const {
        return call<Handle, Handle, Attribute*, Ulong>(kReadAt, session, object, attributes->data(),
                                                       static_cast<Ulong>(attributes->size()));
    }

    test::Recording module;
    Handle session{};

private:
    windows::FunctionList* m_list = nullptr;
};

TEST_F(BridgeTest, GetTokenInfoPacksTheInfoAndReportsLargeNumbersAsUnavailable) {
    CK_TOKEN_INFO& native = module->settings().tokenInfo;
    native.ulTotalPublicMemory = 0x100000000;
    native.ulFreePublicMemory = 0xFFFFFFFE;
    native.ulTotalPrivateMemory = CK_UNAVAILABLE_INFORMATION;
    std::memset(native.utcTime, 'T', sizeof native.utcTime);
    windows::TokenInfo info = {};
    EXPECT_EQ(CKR_OK, (call<Handle, windows::TokenInfo*>(kTokenInfoAt, Handle{10}, &info)));
    EXPECT_EQ(0, std::memcmp(native.label, info.label, sizeof info.label));
    EXPECT_EQ(kUnavailable, info.ulTotalPublicMemory);
    EXPECT_EQ(0xFFFFFFFEu, info.ulFreePublicMemory);
    EXPECT_EQ(kUnavailable, info.ulTotalPrivateMemory);
    EXPECT_EQ('T', info.utcTime[15]);
}

TEST_F(BridgeTest, FailedGetTokenInfoLeavesTheInfo) {
    module->fail("C_GetTokenInfo", 0, CKR_DEVICE_REMOVED);
    windows::TokenInfo info = {};
    info.flags = 77;
    EXPECT_EQ(CKR_DEVICE_REMOVED,
              (call<Handle, windows::TokenInfo*>(kTokenInfoAt, Handle{10}, &info)));
    EXPECT_EQ(77u, info.flags);
}

TEST_F(BridgeTest, GetSlotListCountsAndListsTheSlots) {
    module->settings().slotCount = 2;
    module->settings().slotCountWhenListed = 2;
    Ulong count = 0;
    EXPECT_EQ(CKR_OK, (call<CK_BBOOL, Handle*, Ulong*>(kSlotListAt, CK_TRUE, nullptr, &count)));
    ASSERT_EQ(2u, count);
    Handle slots[3] = {Handle{9}, Handle{9}, Handle{9}};
    EXPECT_EQ(CKR_OK, (call<CK_BBOOL, Handle*, Ulong*>(kSlotListAt, CK_TRUE, slots, &count)));
    EXPECT_EQ(Handle{10}, slots[0]);
    EXPECT_EQ(Handle{11}, slots[1]);
    EXPECT_EQ(Handle{9}, slots[2]);
}

TEST_F(BridgeTest, GetAttributeValueReturnsNumbersInTheWidthOfWindows) {
    const auto key = toWindows(module.addKey(CKO_PRIVATE_KEY, "id"));
    Ulong objectClass = 77;
    char id[4] = {};
    std::vector<Attribute> asked = {{CKA_CLASS, nullptr, 0}, {CKA_ID, nullptr, 0}};
    EXPECT_EQ(CKR_OK, read(key, &asked));
    EXPECT_EQ(4u, asked[0].ulValueLen);
    EXPECT_EQ(2u, asked[1].ulValueLen);
    asked = {{CKA_CLASS, &objectClass, 4}, {CKA_ID, id, 4}};
    EXPECT_EQ(CKR_OK, read(key, &asked));
    EXPECT_EQ(CKO_PRIVATE_KEY, objectClass);
    EXPECT_EQ(4u, asked[0].ulValueLen);
    EXPECT_STREQ("id", id);
    EXPECT_EQ(2u, asked[1].ulValueLen);
}

TEST_F(BridgeTest, GetAttributeValueWithASmallBufferLeavesIt) {
    const auto key = toWindows(module.addKey(CKO_PRIVATE_KEY, "id"));
    for (const Ulong length : {0u, 3u}) {
        char bytes[8] = "1234567";
        std::vector<Attribute> asked = {{CKA_CLASS, bytes, length}};
        read(key, &asked);
        EXPECT_STREQ("1234567", bytes);
    }
}

TEST_F(BridgeTest, GetAttributeValueOfAnAbsentAttributeReturnsAnUnavailableLength) {
    const auto key = toWindows(module.addKey(CKO_PRIVATE_KEY, "id"));
    std::vector<Attribute> asked = {{CKA_LABEL, nullptr, 0}, {CKA_CERTIFICATE_TYPE, nullptr, 0}};
    EXPECT_NE(CKR_OK, read(key, &asked));
    EXPECT_EQ(kUnavailable, asked[0].ulValueLen);
    EXPECT_EQ(kUnavailable, asked[1].ulValueLen);
}

TEST_F(BridgeTest, GetAttributeValueOfATemplateIsRefused) {
    const auto key = toWindows(module.addKey(CKO_PRIVATE_KEY, "id"));
    std::vector<Attribute> asked = {{0x40000211, nullptr, 0}};
    EXPECT_EQ(CKR_ATTRIBUTE_TYPE_INVALID, read(key, &asked));
    EXPECT_TRUE(module.takeCalls().empty());
}

TEST_F(BridgeTest, GetAttributeValueWithAHugeLengthReturnsHostMemory) {
    const auto key = toWindows(module.addKey(CKO_PRIVATE_KEY, "id"));
    Ulong objectClass = 77;
    for (const Ulong length : {0xFFFFFFFEu, (256u << 20) + 1}) {
        std::vector<Attribute> asked = {{CKA_CLASS, &objectClass, length}};
        EXPECT_EQ(CKR_HOST_MEMORY, read(key, &asked));
        EXPECT_EQ(length, asked[0].ulValueLen);
        EXPECT_EQ(77u, objectClass);
    }
    EXPECT_TRUE(module.takeCalls().empty());
}

TEST_F(BridgeTest, FindObjectsFindsACreatedObject) {
    Ulong objectClass = CKO_DATA;
    CK_BBOOL isOnToken = CK_TRUE;
    char label[] = "seven";
    Attribute made[] = {{CKA_CLASS, &objectClass, 4},
                        {CKA_TOKEN, &isOnToken, 1},
                        {CKA_LABEL, label, 5},
                        {CKA_VALUE, nullptr, 0}};
    Handle object{};
    EXPECT_EQ(CKR_OK,
              (call<Handle, Attribute*, Ulong, Handle*>(kCreateAt, session, made, 4, &object)));
    const CK_ULONG native = CKO_DATA;
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(&native), sizeof native),
              module.read(toNative(object), CKA_CLASS));
    EXPECT_EQ("seven", module.read(toNative(object), CKA_LABEL));
    module.addKey(CKO_PRIVATE_KEY, "other");
    EXPECT_EQ(CKR_OK, (call<Handle, Attribute*, Ulong>(kFindInitAt, session, made, 2)));
    Handle found[2] = {};
    Ulong count = 0;
    EXPECT_EQ(CKR_OK, (call<Handle, Handle*, Ulong, Ulong*>(kFindAt, session, found, 1, &count)));
    EXPECT_EQ(1u, count);
    EXPECT_EQ(object, found[0]);
    EXPECT_EQ(CKR_OK, (call<Handle, Handle*, Ulong, Ulong*>(kFindAt, session, found, 1, &count)));
    EXPECT_EQ(0u, count);
    EXPECT_EQ(CKR_OK, (call<Handle>(kFindFinalAt, session)));
}

TEST_F(BridgeTest, SignReturnsTheLengthOfTheSignature) {
    windows::Mechanism mechanism = {CKM_SHA1_RSA_PKCS, nullptr, 0};
    const auto key = toWindows(module.addKey(CKO_PRIVATE_KEY, "id"));
    CK_BYTE pin[] = "1234";
    EXPECT_EQ(CKR_OK, (call<Handle, Ulong, CK_BYTE*, Ulong>(kLoginAt, session, CKU_USER, pin, 4)));
    EXPECT_EQ(CKR_OK,
              (call<Handle, windows::Mechanism*, Handle>(kSignInitAt, session, &mechanism, key)));
    module->settings().signatureLength = 100;
    CK_BYTE data[] = "data";
    CK_BYTE signature[128] = {};
    Ulong length = sizeof signature;
    EXPECT_EQ(CKR_OK, (call<Handle, CK_BYTE*, Ulong, CK_BYTE*, Ulong*>(kSignAt, session, data, 4,
                                                                       signature, &length)));
    EXPECT_EQ(100u, length);
}

TEST(BridgeHandleTest, LargeHandlesConvertBackUnchanged) {
    const CK_ULONG large[] = {0x80000000, 0xFFFFFFFF, 0x100000000, 0x123456789ABCDEF0};
    for (const CK_ULONG native : large) {
        const Handle handle = toWindows(native);
        EXPECT_EQ(native, toNative(handle));
        EXPECT_EQ(handle, toWindows(native));
    }
    EXPECT_NE(toWindows(large[2]), toWindows(large[3]));
    EXPECT_EQ(Handle{0x7FFFFFFF}, toWindows(0x7FFFFFFF));
    EXPECT_EQ(0u, toNative(Handle{0}));
}

TEST(BridgeHandleTest, UnknownLargeHandleConvertsToNoHandle) {
    EXPECT_EQ(~CK_ULONG{0}, toNative(Handle{0xFFFFFFF0}));
}

TEST_F(BridgeTest, FunctionMissingFromTheModuleReturnsNotSupported) {
    CK_BYTE seed[] = "seed";
    EXPECT_EQ(CKR_FUNCTION_NOT_SUPPORTED,
              (call<Handle, CK_BYTE*, Ulong>(kSeedRandomAt, session, seed, 4)));
}

TEST_F(BridgeTest, GetInfoPacksTheInfo) {
    windows::Info info = {};
    EXPECT_EQ(CKR_OK, call<windows::Info*>(kInfoAt, &info));
    EXPECT_EQ(40, info.cryptokiVersion.minor);
    EXPECT_EQ(0, std::memcmp("Module Maker", info.manufacturerID, 12));
    EXPECT_EQ(0, std::memcmp("Recording Module", info.libraryDescription, 16));
    EXPECT_EQ(2, info.libraryVersion.minor);
}

TEST_F(BridgeTest, SlotEventNamesItsSlot) {
    Handle slot{77};
    EXPECT_EQ(8u, (call<Ulong, Handle*, void*>(kSlotEventAt, 1, &slot, nullptr)));
    EXPECT_EQ(Handle{77}, slot);
    module->settings().eventSlot = 11;
    EXPECT_EQ(CKR_OK, (call<Ulong, Handle*, void*>(kSlotEventAt, 1, &slot, nullptr)));
    EXPECT_EQ(Handle{11}, slot);
}

TEST_F(BridgeTest, ParametersOfRsaPssBecomeWider) {
    Ulong numbers[] = {0x250, 2, 32};
    for (const auto& [mechanism, lengths] :
         {std::pair{0x43u, "67/24 set"}, std::pair{0x6u, "6/12 set"}}) {
        windows::Mechanism method = {mechanism, numbers, sizeof numbers};
        module.takeCalls();
        EXPECT_EQ(CKR_OK, (call<Handle, windows::Mechanism*, Handle>(kSignInitAt, session, &method,
                                                                     Handle{1})));
        EXPECT_EQ(std::vector<std::string>{std::string("C_SignInit(1, ") + lengths + ", 1)"},
                  module.takeCalls());
    }
}

TEST_F(BridgeTest, GetSlotListWithAHugeCountAllocatesTheSlotsOnly) {
    Handle slots[4];
    Ulong count = 0xFFFFFFFF;
    EXPECT_EQ(CKR_OK, (call<CK_BBOOL, Handle*, Ulong*>(kSlotListAt, CK_TRUE, slots, &count)));
    EXPECT_EQ(1u, count);
    EXPECT_EQ(Handle{10}, slots[0]);
}

}  // namespace
}  // namespace zr::bridge
