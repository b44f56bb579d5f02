// The stateful module: what it forgets, what its tokens keep, which calls it reports.
#include "tests/support/stateful/stateful.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <utility>

#include "platform/kernel.h"
#include "tests/support/stateful/signature.h"
#include "tests/support/temp_dir.h"

namespace zr::test {
namespace {

using Lines = std::vector<std::string>;

/// A module that the test itself loads and calls.
class StatefulModuleTest : public testing::Test {
protected:
    StatefulModuleTest() { load(); }

    void load() {
        m_library = LoadLibraryA(std::filesystem::absolute(module.path()).string().c_str());
        const auto getList =
            reinterpret_cast<CK_RV (*)(CK_FUNCTION_LIST**)>(reinterpret_cast<void*>(
                m_library ? GetProcAddress(m_library, "C_GetFunctionList") : nullptr));
        CK_FUNCTION_LIST* list = nullptr;
        ASSERT_TRUE(getList);
        ASSERT_EQ(CKR_OK, getList(&list));
        calls = list->functions;
        EXPECT_EQ(CKR_OK, calls.C_Initialize(nullptr));
    }
    void unload() {
        EXPECT_EQ(CKR_OK, calls.C_Finalize(nullptr));
        FreeLibrary(m_library);
    }
    CK_SESSION_HANDLE open(CK_ULONG token) {
        CK_SESSION_HANDLE session = 0;
        EXPECT_EQ(CKR_OK, calls.C_OpenSession(kFirstSlot + token, CKF_SERIAL_SESSION, nullptr,
                                              nullptr, &session));
        return session;
    }
    CK_RV login(CK_SESSION_HANDLE session, std::string pin) {
        return calls.C_Login(session, CKU_USER, reinterpret_cast<CK_UTF8CHAR*>(pin.data()),
                             static_cast<CK_ULONG>(pin.size()));
    }
    CK_RV makeFile(CK_SESSION_HANDLE session) {
        CK_OBJECT_CLASS objectClass = CKO_DATA;
        char label = '3';
        CK_ATTRIBUTE attributes[] = {{CKA_CLASS, &objectClass, sizeof objectClass},
                                     {CKA_LABEL, &label, 1}};
        CK_OBJECT_HANDLE object = 0;
        return calls.C_CreateObject(session, attributes, 2, &object);
    }

    TempDir folder;
    Stateful module{'a'};
    CK_FUNCTIONS calls = {};

private:
    HMODULE m_library = nullptr;
};

TEST_F(StatefulModuleTest, FreedLibraryIsUnloaded) {
    EXPECT_TRUE(module.isLoaded());
    unload();
    EXPECT_FALSE(module.isLoaded());
}

TEST_F(StatefulModuleTest, UnloadCountsTheReferences) {
    LoadLibraryA(std::filesystem::absolute(module.path()).string().c_str());
    EXPECT_EQ(2u, module.unload());
    EXPECT_FALSE(module.isLoaded());
    EXPECT_EQ(0u, module.unload());
}

TEST_F(StatefulModuleTest, FinalizeNumbersTheSessionsAnew) {
    EXPECT_EQ(1u, open(0));
    EXPECT_EQ(2u, open(1));
    EXPECT_EQ(CKR_OK, calls.C_Finalize(nullptr));
    EXPECT_EQ(CKR_OK, calls.C_Initialize(nullptr));
    EXPECT_EQ(1u, open(1));
    unload();
    load();
    EXPECT_EQ(1u, open(0));
}

TEST_F(StatefulModuleTest, TokensKeepTheirObjectsWhenTheModuleIsUnloaded) {
    EXPECT_EQ(CKR_OK, makeFile(open(1)));
    unload();
    EXPECT_EQ(5u, module.contents(1).size());
    EXPECT_EQ("data 3=", module.contents(1).back());
    EXPECT_EQ(4u, module.contents(0).size());
}

TEST_F(StatefulModuleTest, LoginIsOfOneTokenUntilItsLastSessionIsClosed) {
    const CK_SESSION_HANDLE first = open(0);
    const CK_SESSION_HANDLE second = open(0);
    const CK_SESSION_HANDLE other = open(1);
    EXPECT_EQ(CKR_PIN_INCORRECT, login(first, module.pin(1)));
    EXPECT_EQ(CKR_OK, login(first, module.pin(0)));
    EXPECT_EQ(CKR_USER_ALREADY_LOGGED_IN, login(second, module.pin(0)));
    EXPECT_EQ(CKR_OK, login(other, module.pin(1)));
    EXPECT_EQ(CKR_OK, calls.C_CloseSession(first));
    EXPECT_EQ(CKR_USER_ALREADY_LOGGED_IN, login(second, module.pin(0)));
    EXPECT_EQ(CKR_OK, calls.C_CloseSession(second));
    EXPECT_EQ(CKR_OK, login(open(0), module.pin(0)));
}

TEST_F(StatefulModuleTest, CallOnASessionThatIsNotOpenIsReported) {
    const CK_SESSION_HANDLE session = open(0);
    EXPECT_EQ(CKR_OK, calls.C_CloseSession(session));
    EXPECT_EQ(CKR_SESSION_HANDLE_INVALID, calls.C_Logout(session));
    EXPECT_EQ(Lines{"C_Logout(1): there is no such session"}, module.takeMisuses());
    EXPECT_EQ(CKR_OK, calls.C_Finalize(nullptr));
    EXPECT_EQ(CKR_CRYPTOKI_NOT_INITIALIZED, makeFile(session));
    EXPECT_EQ(Lines{"C_CreateObject(1): the module is not initialised"}, module.takeMisuses());
}

TEST_F(StatefulModuleTest, CallOnASessionOfAnotherIncarnationIsReportedWhereItIsNotAllowed) {
    const CK_SESSION_HANDLE before = open(0);
    EXPECT_EQ(CKR_OK, calls.C_Finalize(nullptr));
    EXPECT_EQ(CKR_OK, calls.C_Initialize(nullptr));
    EXPECT_EQ(before, open(1));
    module.allowOnly(0, 0);
    EXPECT_EQ(CKR_OK, makeFile(before));
    EXPECT_EQ(Lines{"C_CreateObject(1): the caller may not use it now"}, module.takeMisuses());
    module.allowOnly(before, kFirstSlot + 1);
    EXPECT_EQ(CKR_OK, makeFile(before));
    CK_TOKEN_INFO info;
    EXPECT_EQ(CKR_OK, calls.C_GetTokenInfo(kFirstSlot + 1, &info));
    EXPECT_EQ(Lines{}, module.takeMisuses());
    EXPECT_EQ(CKR_OK, calls.C_GetTokenInfo(kFirstSlot, &info));
    EXPECT_EQ(Lines{"C_GetTokenInfo(11): the caller may not use it now"}, module.takeMisuses());
}

TEST_F(StatefulModuleTest, CallDuringWhichTheModuleIsFinalisedReachesNoSession) {
    const CK_SESSION_HANDLE session = open(0);
    bool isFinalized = false;
    module.onCall = [&](const StatefulCall&, bool) {
        if (!std::exchange(isFinalized, true)) {
            calls.C_Finalize(nullptr);
            calls.C_Initialize(nullptr);
            open(1);
        }
    };
    EXPECT_EQ(CKR_CRYPTOKI_NOT_INITIALIZED, makeFile(session));
    EXPECT_EQ(4u, module.contents(0).size());
    EXPECT_EQ(4u, module.contents(1).size());
    EXPECT_EQ(Lines{}, module.takeMisuses());
    module.onCall = nullptr;
}

TEST_F(StatefulModuleTest, FinaliseDuringOpenSessionIsNotReported) {
    bool isFinalized = false;
    module.onCall = [&](const StatefulCall&, bool) {
        if (!std::exchange(isFinalized, true)) {
            calls.C_Finalize(nullptr);
        }
    };
    CK_SESSION_HANDLE session = 0;
    EXPECT_EQ(CKR_CRYPTOKI_NOT_INITIALIZED,
              calls.C_OpenSession(kFirstSlot, CKF_SERIAL_SESSION, nullptr, nullptr, &session));
    module.onCall = nullptr;
    EXPECT_EQ(Lines{}, module.takeMisuses());
}

TEST_F(StatefulModuleTest, FinaliseDuringInitialiseDoesNotMakeItFail) {
    bool isFinalized = false;
    module.onCall = [&](const StatefulCall&, bool) {
        if (!std::exchange(isFinalized, true)) {
            calls.C_Finalize(nullptr);
        }
    };
    EXPECT_EQ(CKR_OK, calls.C_Initialize(nullptr));
    module.onCall = nullptr;
    EXPECT_TRUE(module.isInitialized());
}

TEST_F(StatefulModuleTest, EachModuleHasTokensOfItsOwn) {
    Stateful other('b');
    const HMODULE library = LoadLibraryA(std::filesystem::absolute("b.dll").string().c_str());
    EXPECT_TRUE(other.isLoaded());
    EXPECT_NE(module.contents(0), other.contents(0));
    unload();
    EXPECT_FALSE(module.isLoaded());
    EXPECT_TRUE(other.isLoaded());
    FreeLibrary(library);
    EXPECT_FALSE(other.isLoaded());
}

TEST(StatefulSignatureTest, SignatureDependsOnTokenKeyAndData) {
    const std::string signature = signatureOf("a0", "id", "data");
    EXPECT_EQ(32u, signature.size());
    EXPECT_EQ(signature, signatureOf("a0", "id", "data"));
    EXPECT_NE(signature, signatureOf("a1", "id", "data"));
    EXPECT_NE(signature, signatureOf("a0", "other", "data"));
    EXPECT_NE(signature, signatureOf("a0", "id", "date"));
    EXPECT_NE(signature, signatureOf("a0i", "d", "data"));
}

}  // namespace
}  // namespace zr::test
