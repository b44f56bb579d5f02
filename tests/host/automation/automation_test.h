// Fixtures for zrkeycom.dll: a folder with a configuration and the recording module, a provider, a
// token with a container and its certificate.
#pragma once

#include <objbase.h>

#include <map>

#include "tests/host/automation/automation_client.h"
#include "tests/support/fixtures/token.h"

namespace zr::test {

/// A single-threaded apartment, as scripts have it.
class Apartment {
public:
    explicit Apartment(DWORD kind = COINIT_APARTMENTTHREADED) { CoInitializeEx(nullptr, kind); }
    ~Apartment() { CoUninitialize(); }
    Apartment(const Apartment&) = delete;
    Apartment& operator=(const Apartment&) = delete;
};

class AutomationTest : public testing::Test {
protected:
    AutomationTest() { folder.writeConfig(); }

    Apartment apartment;
    TempDir folder;
    Recording module;
    ComRef<IDispatch> provider = makeAutomationProvider();
};

class LoadedAutomationTest : public AutomationTest {
protected:
    LoadedAutomationTest() { EXPECT_ANSWER("B:true", call(provider, "Load", text(module.path()))); }
};

class AutomationTokenTest : public LoadedAutomationTest {
protected:
    AutomationTokenTest() {
        module.addCertificate("a", "A");
        module.addKey(CKO_PRIVATE_KEY, "a");
        module.addKey(CKO_PUBLIC_KEY, "a");
        module.addData("7", "content");
        token = call(provider, "OpenKey", integer(0)).value.toObject();
        EXPECT_ANSWER("B:true", call(token, "VerifyPIN", text("1234")));
        container = call(token, "OpenContainer", text("a")).value.toObject();
        certificate = call(container, "GetKeyCert").value.toObject();
        module.takeCalls();
    }

    ComRef<IDispatch> token;
    ComRef<IDispatch> container;
    ComRef<IDispatch> certificate;
};

/// One object of each class, by the name of its interface.
using AutomationObjects = std::map<std::string, ComRef<IDispatch>>;

class AutomationObjectsTest : public AutomationTest {
protected:
    /// New objects on a module in its first state, for a test that ends some of them.
    AutomationObjects makeObjects() {
        module->reset();
        module.addCertificate("a", "A");
        module.addKey(CKO_PRIVATE_KEY, "a");
        module.addKey(CKO_PUBLIC_KEY, "a");
        module.addData("7", "content");
        AutomationObjects made;
        auto& opener = made["IZRTokenProvider"] = makeAutomationProvider();
        EXPECT_ANSWER("B:true", call(opener, "Load", text(module.path())));
        auto& opened = made["IZRToken"] = call(opener, "OpenKey", integer(0)).value.toObject();
        EXPECT_ANSWER("B:true", call(opened, "VerifyPIN", text("1234")));
        auto& first = made["IZRContainer"] =
            call(opened, "OpenContainer", text("a")).value.toObject();
        made["IZRCertificate"] = call(first, "GetKeyCert").value.toObject();
        made["IZRFile"] = call(opened, "OpenFile", text("8")).value.toObject();
        made["IZRCollection"] = call(opened, "certificates").value.toObject();
        module.takeCalls();
        return made;
    }
};

}  // namespace zr::test
