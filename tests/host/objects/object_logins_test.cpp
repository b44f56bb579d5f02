// The logins of tokens: what ends them, what the extensions do with them, and what a deleted file
// leaves.
#include "tests/host/objects/object_calls.h"

namespace zr::test {
namespace {

using host::ObjectRef;

class ObjectLoginsTest : public ModuleTest {
protected:
    ObjectLoginsTest() {
        module.addCertificate("a", "A");
        module.addData("6", "content");
    }

    /// A token of a new provider, which only the token keeps.
    ObjectRef openToken() {
        const ObjectRef provider = makeProviderObject();
        call(provider, "Load", {text(module.path())});
        const ObjectRef token = open(provider, "OpenKey", {0.0});
        module.takeCalls();
        return token;
    }
    /// The same, logged in, with a module whose functions are apart from the library's.
    ObjectRef openApart() {
        module->fail("C_GetInfo", 1, CKR_CRYPTOKI_NOT_INITIALIZED);
        const ObjectRef token = openToken();
        call(token, "VerifyPIN", {text("1234")});
        return token;
    }
    /// The logins that an extension makes.
    Lines loginsOf(const ObjectRef& token) {
        module.takeCalls();
        call(token, "writeFile", {text("7"), host::toBytes("a")});
        return callsOf(module, {"C_Login"});
    }

    const Lines kRepeated = {"C_Login(2, 1, 1234)"};
};

TEST_F(ObjectLoginsTest, DeletedFileLeavesNoLogin) {
    ObjectRef token = openToken();
    call(token, "VerifyPIN", {text("1234")});
    EXPECT_TRUE(std::get<bool>(call(token, "DeleteFile", {text("7")})));
    module.takeCalls();
    call(token, "Close");
    EXPECT_EQ((Lines{"C_Logout(1)", "C_CloseSession(1)", "C_Finalize(null)"}), module.takeCalls());
    EXPECT_EQ(0u, module->openSessions());
}

TEST_F(ObjectLoginsTest, DeleteFileDeletesTheOneThatTheLibraryFinds) {
    const CK_OBJECT_HANDLE second = module.addData("6", "second");
    const CK_OBJECT_HANDLE other = module.addData("06", "other");
    const ObjectRef token = openToken();
    const std::size_t before = module->objectCount();
    call(token, "DeleteFile", {text(" 7th")});
    EXPECT_EQ(before - 1, module->objectCount());
    EXPECT_EQ("second", module.read(second, CKA_VALUE));
    call(token, "DeleteFile", {text("7")});
    EXPECT_EQ("other", module.read(other, CKA_VALUE));
    EXPECT_EQ("DeleteFile failed: E_FAIL (0x80004005)",
              problemOf(token, "DeleteFile", {text("7")}));
}

TEST_F(ObjectLoginsTest, RefusedDeletionFailsAsInTheLibrary) {
    const ObjectRef token = openToken();
    for (const CK_RV result : {CKR_USER_NOT_LOGGED_IN, CKR_DEVICE_REMOVED}) {
        module->fail("C_DestroyObject", 1, result);
        const std::string problem = problemOf(token, "DeleteFile", {text("7")});
        EXPECT_TRUE(problem.starts_with(
            "DeleteFile failed: E_FAIL (0x80004005): the module's C_DestroyObject "))
            << problem;
    }
    EXPECT_EQ(1u, module->openSessions());
}

TEST_F(ObjectLoginsTest, DeletionRepeatsTheLoginWhereTheFunctionsAreApart) {
    const ObjectRef token = openApart();
    module.takeCalls();
    call(token, "DeleteFile", {text("7")});
    EXPECT_EQ(kRepeated, callsOf(module, {"C_Login"}));
}

TEST_F(ObjectLoginsTest, RefusedArgumentsLeaveTheLogin) {
    const ObjectRef token = openApart();
    EXPECT_EQ(kRepeated, loginsOf(token));
    EXPECT_THROW(call(token, "VerifyPIN", {text("1234"), 2.0}), host::CallError);
    EXPECT_EQ(kRepeated, loginsOf(token));
    EXPECT_THROW(call(token, "ModifyPIN", {text("1"), text("2")}), host::CallError);
    EXPECT_EQ(kRepeated, loginsOf(token));
}

TEST_F(ObjectLoginsTest, RefusedNewPinLeavesTheLoginWithTheOldOne) {
    const ObjectRef token = openApart();
    module->fail("C_SetPIN", 1, CKR_PIN_INVALID);
    EXPECT_THROW(call(token, "ModifyPIN", {text("1234"), text("5678")}), host::CallError);
    EXPECT_EQ(kRepeated, loginsOf(token));
}

TEST_F(ObjectLoginsTest, RefusedPinEndsTheLogin) {
    const ObjectRef token = openApart();
    EXPECT_THROW(call(token, "VerifyPIN", {text("4321")}), host::CallError);
    EXPECT_EQ(Lines(), loginsOf(token));
    call(token, "VerifyPIN", {text("1234")});
    EXPECT_THROW(call(token, "ModifyPIN", {text("4321"), text("5678")}), host::CallError);
    EXPECT_EQ(Lines(), loginsOf(token));
}

TEST_F(ObjectLoginsTest, SignaturesOfTheLibraryAskForALogin) {
    const ObjectRef token = openToken();
    const ObjectRef container = open(token, "OpenContainer", {0.0});
    const ObjectRef certificate = open(container, "GetKeyCert");
    const std::string cause =
        " failed: RPC_E_CANTCALLOUT_INEXTERNALCALL (0x80010005): log in first";
    EXPECT_EQ("SignData" + cause,
              problemOf(token, "SignData", {host::Null(), host::toBytes("a"), certificate}));
    EXPECT_EQ("VerifyData" + cause,
              problemOf(token, "VerifyData",
                        {host::toBytes("a"), certificate, host::Null(), host::toBytes("b")}));
}

/// Callbacks of the module: the first token whose information is read is another one, the next is ours.
void showOwn(void* argument) {
    (*static_cast<Recording*>(argument))->settings().tokenInfo.serialNumber[0] = '0';
}
void passOther(void* argument) {
    (*static_cast<Recording*>(argument))->callBack("C_GetTokenInfo", showOwn, argument);
}
void showOther(void* argument) {
    Recording& recording = *static_cast<Recording*>(argument);
    recording->settings().tokenInfo.serialNumber[0] = '9';
    recording->callBack("C_GetTokenInfo", passOther, argument);
}

TEST_F(ObjectLoginsTest, ExtensionsFollowATokenToItsNewPlace) {
    const ObjectRef token = openToken();
    // From now on another token is in the first slot, and this one in the second.
    module->settings().slotCount = module->settings().slotCountWhenListed = 2;
    module->callBack("C_GetSlotList", showOther, &module);
    module.takeCalls();
    call(token, "writeFile", {text("7"), host::toBytes("a")});
    EXPECT_EQ((Lines{"C_OpenSession(11, 6, null, null)"}), callsOf(module, {"C_OpenSession"}));
}

}  // namespace
}  // namespace zr::test
