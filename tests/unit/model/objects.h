// Fixture with one object of each scriptable class, over the recording module.
#pragma once

#include "pkcs11/key_certificate.h"
#include "pkcs11/key_container.h"
#include "pkcs11/key_file.h"
#include "pkcs11/key_object.h"
#include "tests/contract/token.h"

namespace zr::test {

class ObjectsTest : public ModuleTest {
protected:
    ObjectsTest() : provider(new TokenProvider_pkcs11) {
        provider->AddRef();
        module.addCertificate("id", "certificate");
        module.addData("6", "contents");
        EXPECT_HR(S_OK, provider->Load(Text(module.path())));
        token = open<KeyObject_pkcs11, IKeyObject>(
            [&](void** out) { return provider->OpenKey(0, out); });
        EXPECT_HR(S_OK, token->VerifyPIN(Text("1234"), 0));
        const Text id("id");
        container = open<KeyContainer_pkcs11, IKeyContainer>(
            [&](void** out) { return token->OpenContainer(string(id), out); });
        certificate = open<KeyCertificate_pkcs11, IKeyCertificate>(
            [&](void** out) { return container->GetKeyCert(true, out); });
        file = open<KeyFile_pkcs11, IKeyFile>(
            [&](void** out) { return token->OpenFile(Text("7"), out); });
        module.takeCalls();
    }

    ~ObjectsTest() override {
        file->Release();
        certificate->Release();
        container->Release();
        token->Release();
        provider->Release();
    }

    template <class Class, class Interface, class Open>
    static Class* open(Open operation) {
        Interface* object = nullptr;
        EXPECT_HR(S_OK, operation(reinterpret_cast<void**>(&object)));
        return static_cast<Class*>(object);
    }

    TokenProvider_pkcs11* provider;
    KeyObject_pkcs11* token;
    KeyContainer_pkcs11* container;
    KeyCertificate_pkcs11* certificate;
    KeyFile_pkcs11* file;
    ConsoleCapture console;
};

}  // namespace zr::test
