// The modules behind the objects: what a failed Load leaves, several providers and tokens in one
// process, and a module that calls back into the host.
#include <filesystem>

#include "tests/host/objects/object_calls.h"
#include "tests/support/stateful/stateful.h"

namespace zr::test {
namespace {

using host::ObjectRef;

const std::vector<host::Value> kPin = {text("1234")};

class ObjectModulesTest : public ModuleTest {
protected:
    ObjectModulesTest() { module.addData("6", "content"); }

    /// A provider with the recording module.
    std::shared_ptr<host::ProviderObject> load() {
        auto provider = makeProviderObject();
        call(provider, "Load", {text(module.path())});
        return provider;
    }
    static ObjectRef openToken(const ObjectRef& provider) {
        return open(provider, "OpenKey", {0.0});
    }
    static std::string failedLoad(const ObjectRef& provider, const std::string& path) {
        return problemOf(provider, "Load", {text(path)});
    }
    /// Calls an extension, which calls the module.
    static void expectExtensions(const ObjectRef& token, const std::string& pin = "1234") {
        call(token, "VerifyPIN", {text(pin)});
        EXPECT_NO_THROW(call(token, "writeFile", {text("7"), host::toBytes("written")}));
    }
    /// Calls back once, from within a function.
    void closeDuring(const char* function, ObjectRef& object) {
        module->callBack(
            function,
            [](void* argument) { call(*static_cast<const ObjectRef*>(argument), "Close"); },
            &object);
    }
    void unloadDuring(const char* function, ObjectRef& provider) {
        module->callBack(
            function,
            [](void* argument) { call(*static_cast<const ObjectRef*>(argument), "Unload"); },
            &provider);
    }
    Lines endCalls() { return callsOf(module, {"C_Logout", "C_CloseSession", "C_Finalize"}); }

    static constexpr const char* kFailed = "Load failed: E_FAIL (0x80004005)";
};

TEST_F(ObjectModulesTest, ExtensionsUseTheEarlierModuleAfterAMissingFile) {
    const ObjectRef provider = load();
    EXPECT_EQ(kFailed, failedLoad(provider, "missing.so"));
    expectExtensions(openToken(provider));
    EXPECT_EQ(Lines{"C_Initialize(null)"}, callsOf(module, {"C_Initialize"}));
}

TEST_F(ObjectModulesTest, ExtensionsUseTheEarlierModuleAfterARefusedPath) {
    const Stateful other('a');
    const ObjectRef provider = load();
    std::string path;
    while (path.size() < 260) {
        path.append("./");
    }
    EXPECT_EQ(kFailed, failedLoad(provider, path + other.path()));
    expectExtensions(openToken(provider));
    EXPECT_EQ(0u, other.callCount());
}

TEST_F(ObjectModulesTest, ExtensionsUseAModuleLoadedWithoutConfiguration) {
    Stateful other('a');
    const ObjectRef provider = load();
    std::filesystem::remove("config.xml");
    EXPECT_EQ(kFailed, failedLoad(provider, other.path()));
    const ObjectRef token = openToken(provider);
    expectExtensions(token, other.pin(0));
    EXPECT_EQ(7.0, std::get<double>(call(open(token, "OpenFile", {text("7")}), "GetSize")));
    call(token, "Close");
    call(provider, "Unload");
    EXPECT_EQ(Lines(), other.takeMisuses());
}

TEST_F(ObjectModulesTest, ModuleThatDoesNotStartLeavesTheTokensOfTheEarlierOne) {
    const ObjectRef provider = load();
    const ObjectRef token = openToken(provider);
    EXPECT_EQ("Load failed: E_OUTOFMEMORY (0x8007000E)", failedLoad(provider, module.noListPath()));
    EXPECT_THROW(openToken(provider), host::CallError);
    call(provider, "Unload");
    expectExtensions(token);
}

TEST_F(ObjectModulesTest, UnloadEndsTheModuleForOtherProviders) {
    const ObjectRef first = load();
    const auto second = load();
    const ObjectRef token = openToken(second);
    call(first, "Unload");
    EXPECT_FALSE(second->calls()->get());
    module.takeCalls();
    EXPECT_THROW(call(token, "GetLabel"), host::CallError);
    EXPECT_THROW(call(token, "VerifyPIN", kPin), host::CallError);
    EXPECT_EQ(Lines(), module.takeCalls());
}

TEST_F(ObjectModulesTest, ModuleThatHasEndedIsNotStartedAgain) {
    const ObjectRef first = load();
    const ObjectRef second = makeProviderObject();
    std::filesystem::remove("config.xml");
    EXPECT_EQ(kFailed, failedLoad(second, module.path()));
    const ObjectRef token = openToken(second);
    call(first, "Unload");
    module->fail("C_GetInfo", 0, CKR_CRYPTOKI_NOT_INITIALIZED);
    module.takeCalls();
    EXPECT_THROW(call(token, "VerifyPIN", kPin), host::CallError);
    EXPECT_THROW(call(token, "writeFile", {text("7"), host::toBytes("a")}), host::CallError);
    EXPECT_EQ(Lines(), module.takeCalls());
}

TEST_F(ObjectModulesTest, ModuleEndsWithTheLastProviderAndTokenOfAllProviders) {
    const ObjectRef first = load();
    const ObjectRef ownToken = openToken(first);
    const ObjectRef second = load();
    const ObjectRef token = openToken(second);
    module.takeCalls();
    call(first, "Close");
    EXPECT_NO_THROW(call(ownToken, "GetLabel"));
    call(ownToken, "Close");
    EXPECT_EQ(Lines{"C_CloseSession(1)"}, endCalls());
    EXPECT_NO_THROW(call(token, "GetLabel"));
    call(second, "Close");
    EXPECT_EQ(Lines(), endCalls());
    call(token, "Close");
    // Each of the two providers finalises it when it is released.
    EXPECT_EQ((Lines{"C_CloseSession(2)", "C_Finalize(null)", "C_Finalize(null)"}), endCalls());
}

TEST_F(ObjectModulesTest, ReplacingAProviderInALoopDoesNotEndTheModule) {
    ObjectRef provider;
    ObjectRef token;
    for (int round = 0; round < 3; ++round) {
        provider = load();
        token = openToken(provider);
        EXPECT_NO_THROW(call(token, "VerifyPIN", kPin));
        EXPECT_NO_THROW(call(token, "GetLabel"));
    }
}

TEST_F(ObjectModulesTest, ClosedProviderHasNoCalls) {
    const auto provider = load();
    EXPECT_TRUE(provider->calls());
    call(provider, "Close");
    EXPECT_FALSE(provider->calls());
}

TEST_F(ObjectModulesTest, CertificateOfAnotherTokenWithTheSameNameDoesNotSign) {
    const Stateful other('a');
    module.addCertificate("id", "certificate of the recording module");
    const ObjectRef token = openToken(load());
    call(token, "VerifyPIN", kPin);
    const ObjectRef otherProvider = makeProviderObject();
    call(otherProvider, "Load", {text(other.path())});
    const ObjectRef container = open(openToken(otherProvider), "OpenContainer", {text("id")});
    EXPECT_EQ("sign: argument 2 is not on this token",
              problemOf(token, "sign", {host::toBytes("data"), open(container, "GetKeyCert")}));
}

TEST_F(ObjectModulesTest, TokenThatIsClosedDuringItsLoginLogsOutAfterIt) {
    const ObjectRef provider = load();
    ObjectRef token = openToken(provider);
    closeDuring("C_Login", token);
    call(token, "VerifyPIN", kPin);
    EXPECT_TRUE(token->isClosed());
    EXPECT_EQ((Lines{"C_Login(1, 1, 1234)", "C_Logout(1)", "C_CloseSession(1)"}),
              callsOf(module, {"C_Login", "C_Logout", "C_CloseSession"}));
}

TEST_F(ObjectModulesTest, TokenMayBeClosedDuringACallOfItsExtensions) {
    for (const char* function : {"C_GetSlotList", "C_OpenSession", "C_SetAttributeValue"}) {
        // The last reference: its release ends the module.
        ObjectRef token = openToken(load());
        closeDuring(function, token);
        problemOf(token, "writeFile", {text("7"), host::toBytes("a")});
        EXPECT_TRUE(token->isClosed()) << function;
        EXPECT_EQ(0u, module->openSessions()) << function;
    }
}

TEST_F(ObjectModulesTest, ModuleMayBeUnloadedDuringACallOfAnExtension) {
    for (const char* function : {"C_GetSlotList", "C_OpenSession", "C_SetAttributeValue"}) {
        ObjectRef provider = load();
        const ObjectRef token = openToken(provider);
        unloadDuring(function, provider);
        problemOf(token, "writeFile", {text("7"), host::toBytes("a")});
        EXPECT_THROW(call(token, "GetLabel"), host::CallError) << function;
    }
}

TEST_F(ObjectModulesTest, ProviderMayBeClosedDuringItsCalls) {
    ObjectRef provider = load();
    closeDuring("C_OpenSession", provider);
    const ObjectRef token = openToken(provider);
    EXPECT_TRUE(provider->isClosed());
    EXPECT_NO_THROW(call(token, "GetLabel"));
    ObjectRef loading = makeProviderObject();
    closeDuring("C_Initialize", loading);
    call(loading, "Load", {text(module.path())});
    EXPECT_TRUE(loading->isClosed());
}

}  // namespace
}  // namespace zr::test
