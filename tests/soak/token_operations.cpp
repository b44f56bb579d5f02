// The operations on a token.
#include "tests/soak/held_objects.h"

namespace zr::test {
namespace {

using TextGetter = HRESULT (STDMETHODCALLTYPE IKeyObject::*)(BSTR*);
using ValueGetter = HRESULT (STDMETHODCALLTYPE IKeyObject::*)(VARIANT*);
using TypedGetter = HRESULT (STDMETHODCALLTYPE IKeyObject::*)(INT, VARIANT*);

Operation textGetter(const char* name, TextGetter getter, HRESULT expected = S_OK) {
    return {name, expected, [getter](HeldObjects& objects) {
                Text text;
                return (objects.token.get()->*getter)(text.receive());
            }};
}

Operation valueGetter(const char* name, ValueGetter getter, HRESULT expected) {
    return {name, expected, [getter](HeldObjects& objects) {
                Variant value;
                return (objects.token.get()->*getter)(value.receive());
            }};
}

Operation typedGetter(const char* name, TypedGetter getter) {
    return {name, E_NOTIMPL, [getter](HeldObjects& objects) {
                Variant value;
                return (objects.token.get()->*getter)(0, value.receive());
            }};
}

HRESULT createFile(HeldObjects& objects) {
    ComRef<IKeyFile> file;
    return objects.token->CreateFile(Text("3"), 0, 0, 0, 0, file.receive());
}

HRESULT openFile(HeldObjects& objects, const char* name) {
    ComRef<IKeyFile> file;
    return objects.token->OpenFile(Text(name), file.receive());
}

/// With the call that closes the search.
HRESULT fileExists(HeldObjects& objects, const char* name) {
    Variant exists;
    Variant count;
    const HRESULT hr = objects.token->FileExists(Text(name), exists.receive());
    require(S_OK, objects.token->GetContainerCount(count.receive()), "GetContainerCount");
    return hr;
}

HRESULT openContainer(HeldObjects& objects, const VARIANT& which) {
    ComRef<IKeyContainer> container;
    return objects.token->OpenContainer(which, container.receive());
}

/// On a token of its own: the one that it keeps stays in memory.
HRESULT deleteFile(HeldObjects& objects) {
    return objects.token->DeleteFile(Text("7"));
}

HRESULT verifyData(HeldObjects& objects) {
    return objects.token->VerifyData(objects.data, objects.certificate.get(), nullptr,
                                     objects.signature);
}

/// The operations that do nothing or are not implemented.
std::vector<Operation> emptyOperations() {
    return {
        {"SetLabel", E_NOTIMPL,
         [](HeldObjects& objects) {
             const Text label("label");
             BSTR text = label.get();
             Variant result;
             return objects.token->SetLabel(&text, result.receive());
         }},
        typedGetter("GetMaxRetryCount", &IKeyObject::GetMaxRetryCount),
        typedGetter("GetRemainRetryCount", &IKeyObject::GetRemainRetryCount),
        typedGetter("IsDefaultPIN", &IKeyObject::IsDefaultPIN),
        {"UnlockPIN", S_OK,
         [](HeldObjects& objects) { return objects.token->UnlockPIN(Text("1234"), Text("5678")); }},
        valueGetter("Lock", &IKeyObject::Lock, E_NOTIMPL),
        valueGetter("Unlock", &IKeyObject::Unlock, E_NOTIMPL),
        valueGetter("EnumFiles", &IKeyObject::EnumFiles, E_NOTIMPL),
        {"CreateContainer", E_NOTIMPL,
         [](HeldObjects& objects) {
             ComRef<IKeyContainer> container;
             return objects.token->CreateContainer(Text("new"), container.receive());
         }},
        {"DeleteContainer", E_NOTIMPL,
         [](HeldObjects& objects) {
             return objects.token->DeleteContainer(Variant::fromNumber(0));
         }},
        {"VerifyDataByCert", S_OK,
         [](HeldObjects& objects) {
             return objects.token->VerifyDataByCert(objects.data, objects.certificate.get(),
                                                    objects.data, nullptr, objects.signature);
         }},
        {"VerifyDataByPubKey", E_FAIL,
         [](HeldObjects& objects) {
             return objects.token->VerifyDataByPubKey(objects.data, objects.certificate.get(),
                                                      objects.data, nullptr, objects.signature);
         }},
        textGetter("GetKeyObjectClassName", &IKeyObject::GetKeyObjectClassName),
        textGetter("GetCaLibPath", &IKeyObject::GetCaLibPath),
        textGetter("GetCSPName", &IKeyObject::GetCSPName),
        {"GetZRHardApiInfo", E_NOTIMPL,
         [](HeldObjects& objects) {
             void* api = nullptr;
             Text info;
             return objects.token->GetZRHardApiInfo(&api, info.receive());
         }},
    };
}

std::vector<Operation> fileOperations() {
    return {
        {"CreateFile, Release", S_OK, createFile},
        {"FileExists, GetContainerCount", S_OK,
         [](HeldObjects& objects) { return fileExists(objects, "7"); }},
        {"FileExists of none", E_FAIL,
         [](HeldObjects& objects) { return fileExists(objects, "9"); }},
        {"OpenFile, Release", S_OK, [](HeldObjects& objects) { return openFile(objects, "7"); }},
        {"OpenFile of none", E_FAIL, [](HeldObjects& objects) { return openFile(objects, "9"); }},
        {"DeleteFile of none", E_FAIL,
         [](HeldObjects& objects) { return objects.token->DeleteFile(Text("9")); }},
        // Each deletion keeps the file object that it opened, and with it the token.
        {"DeleteFile", S_OK, deleteFile, 256},
    };
}

std::vector<Operation> containerOperations() {
    return {
        valueGetter("GetContainerCount", &IKeyObject::GetContainerCount, S_OK),
        {"EnumContainer", S_OK,
         [](HeldObjects& objects) {
             Variant names;
             return objects.token->EnumContainer(0, names.receive());
         }},
        {"OpenContainer by index, Release", S_OK,
         [](HeldObjects& objects) { return openContainer(objects, Variant::fromNumber(3)); }},
        {"OpenContainer by name, Release", S_OK,
         [](HeldObjects& objects) {
             return openContainer(objects, Variant::fromText(zrkey::Text("00000004")));
         }},
        {"OpenContainer of none", E_FAIL,
         [](HeldObjects& objects) {
             return openContainer(objects, Variant::fromText(zrkey::Text("none")));
         }},
        {"GetCertData of a token", S_OK,
         [](HeldObjects& objects) {
             Variant data;
             return objects.token->GetCertData(objects.certificate.get(), data.receive());
         }},
        // The type of an RSA key reads as the empty text, which no certificate has as its ID.
        {"GetPubKeyData", E_FAIL,
         [](HeldObjects& objects) {
             Variant data;
             return objects.token->GetPubKeyData(objects.certificate.get(), data.receive());
         }},
    };
}

std::vector<Operation> keyOperations() {
    return {
        {"VerifyPIN", S_OK,
         [](HeldObjects& objects) { return objects.token->VerifyPIN(Text("1234"), 0); }},
        {"VerifyPIN of no type", E_INVALIDARG,
         [](HeldObjects& objects) { return objects.token->VerifyPIN(Text("1234"), 9); }},
        {"ModifyPIN", S_OK,
         [](HeldObjects& objects) {
             return objects.token->ModifyPIN(Text("1234"), Text("5678"), 0);
         }},
        {"SignData", S_OK,
         [](HeldObjects& objects) {
             Variant result;
             return objects.token->SignData(nullptr, objects.data, objects.certificate.get(),
                                            result.receive());
         }},
        {"VerifyData", S_OK, verifyData},
        {"DigestData", S_OK,
         [](HeldObjects& objects) {
             Variant digest;
             return objects.token->DigestData(Text("MD5"), objects.data, digest.receive());
         }},
        {"DigestData of no method", E_INVALIDARG,
         [](HeldObjects& objects) {
             Variant digest;
             return objects.token->DigestData(Text("SHA1"), objects.data, digest.receive());
         }},
    };
}

}  // namespace

std::vector<Operation> tokenOperations() {
    std::vector<Operation> all = {
        textGetter("GetSerialNumber", &IKeyObject::GetSerialNumber),
        textGetter("GetLabel", &IKeyObject::GetLabel),
        textGetter("GetManufacturerID", &IKeyObject::GetManufacturerID),
        textGetter("GetModelID", &IKeyObject::GetModelID),
        valueGetter("GetTotalSize", &IKeyObject::GetTotalSize, S_OK),
        valueGetter("GetFreeSize", &IKeyObject::GetFreeSize, S_OK),
        textGetter("GetDigestMethod", &IKeyObject::GetDigestMethod),
        textGetter("GetSignAlgo", &IKeyObject::GetSignAlgo),
        textGetter("GetAlgoList", &IKeyObject::GetAlgoList),
    };
    for (const auto& part :
         {emptyOperations(), keyOperations(), containerOperations(), fileOperations()}) {
        all.insert(all.end(), part.begin(), part.end());
    }
    return all;
}

}  // namespace zr::test
