// One object of each class, and the operations on a provider.
#include "tests/soak/held_objects.h"

#include <cstdio>
#include <filesystem>
#include <stdexcept>

namespace zr::test {

void require(HRESULT expected, HRESULT hr, const std::string& step) {
    if (hr != expected) {
        char text[64];
        std::snprintf(text, sizeof text, ": 0x%08X instead of 0x%08X", static_cast<unsigned>(hr),
                      static_cast<unsigned>(expected));
        throw std::runtime_error(step + text);
    }
}

ModuleCopy::ModuleCopy(const std::string& name) {
    const std::filesystem::path source(ZR_INSTANT_MODULE);
    m_path = name + source.extension().string();
    std::filesystem::copy_file(source, m_path);
    require(S_OK, zrkey::createProvider(m_keeper), "createProvider");
    require(S_OK, m_keeper->Load(Text(m_path)), "Load");
}

HeldObjects::HeldObjects(const std::string& module) {
    require(S_OK, zrkey::createProvider(provider), "createProvider");
    require(S_OK, provider->Load(Text(module)), "Load");
    require(S_OK, provider->OpenKey(0, token.receive()), "OpenKey");
    require(S_OK, token->VerifyPIN(Text("1234"), 0), "VerifyPIN");
    require(S_OK, token->OpenContainer(Variant::fromNumber(0), container.receive()),
            "OpenContainer");
    require(S_OK, container->GetKeyCert(true, certificate.receive()), "GetKeyCert");
    require(S_OK, token->OpenFile(Text("7"), file.receive()), "OpenFile");
}

namespace {

HRESULT loadAndUnload(HeldObjects& objects) {
    ComRef<ITokenProvider> provider;
    require(S_OK, zrkey::createProvider(provider), "createProvider");
    require(S_OK, provider->Load(Text(objects.otherModule)), "Load");
    return provider->Unload();
}

/// The other way to end a module: by the last reference.
HRESULT loadAndRelease(HeldObjects& objects) {
    ComRef<ITokenProvider> provider;
    require(S_OK, zrkey::createProvider(provider), "createProvider");
    return provider->Load(Text(objects.otherModule));
}

HRESULT loadByName(HeldObjects& objects) {
    ComRef<ITokenProvider> provider;
    require(S_OK, zrkey::createProvider(provider), "createProvider");
    const Text path(objects.otherModule);
    Variant result;
    require(S_OK,
            invoke(provider.get(), idOf(provider.get(), "Load"), {string(path)}, result.receive()),
            "Load");
    return invoke(provider.get(), idOf(provider.get(), "Unload"), {}, result.receive());
}

HRESULT queryErrorInfo(HeldObjects& objects) {
    ComRef<ISupportErrorInfo> face;
    return objects.provider->QueryInterface(IID_ISupportErrorInfo, face.receive());
}

HRESULT findMissingName(HeldObjects& objects) {
    const Text name("NoSuchMember");
    LPOLESTR names = name.get();
    DISPID id = 0;
    return objects.provider->GetIDsOfNames(IID_NULL, &names, 1, 0, &id);
}

}  // namespace

std::vector<Operation> providerOperations() {
    return {
        {"ZCLGetClassObject, CreateInstance", S_OK,
         [](HeldObjects&) {
             ComRef<ITokenProvider> provider;
             return zrkey::createProvider(provider);
         }},
        {"Load, Unload", S_OK, loadAndUnload},
        {"Load, Release", S_OK, loadAndRelease},
        {"Load, Unload by name", S_OK, loadByName},
        {"OpenKey, Release", S_OK,
         [](HeldObjects& objects) {
             ComRef<IKeyObject> token;
             return objects.provider->OpenKey(0, token.receive());
         }},
        {"OpenKey of no slot", E_FAIL,
         [](HeldObjects& objects) {
             ComRef<IKeyObject> token;
             return objects.provider->OpenKey(7, token.receive());
         }},
        {"GetName", S_OK,
         [](HeldObjects& objects) {
             Text name;
             return objects.provider->GetName(name.receive());
         }},
        {"GetKeyCount", S_OK,
         [](HeldObjects& objects) {
             INT count = 0;
             return objects.provider->GetKeyCount(&count);
         }},
        {"GetKeySN", S_OK,
         [](HeldObjects& objects) {
             Text serial;
             return objects.provider->GetKeySN(0, serial.receive());
         }},
        {"LoadFinish", E_NOTIMPL,
         [](HeldObjects& objects) {
             INT done = 0;
             return objects.provider->LoadFinish(&done);
         }},
        {"QueryInterface, Release", S_OK, queryErrorInfo},
        {"QueryInterface of another", E_NOTIMPL,
         [](HeldObjects& objects) {
             void* none = nullptr;
             return objects.token->QueryInterface(IID_IDispatch, &none);
         }},
        {"AddRef, Release", S_OK,
         [](HeldObjects& objects) {
             objects.provider->AddRef();
             return objects.provider->Release() > 0 ? S_OK : E_FAIL;
         }},
        {"GetTypeInfoCount", E_NOTIMPL,
         [](HeldObjects& objects) {
             UINT count = 0;
             return objects.provider->GetTypeInfoCount(&count);
         }},
        {"GetTypeInfo", E_NOTIMPL,
         [](HeldObjects& objects) {
             ITypeInfo* info = nullptr;
             return objects.provider->GetTypeInfo(0, 0, &info);
         }},
        {"GetIDsOfNames of no member", E_FAIL, findMissingName},
    };
}

}  // namespace zr::test
