// The operations on containers, certificates and files, and the calls by name.
#include "tests/soak/held_objects.h"

namespace zr::test {
namespace {

std::vector<Operation> containerMembers() {
    return {
        {"container Close", S_OK, [](HeldObjects& objects) { return objects.container->Close(); }},
        {"container GetType", S_OK,
         [](HeldObjects& objects) {
             Text type;
             return objects.container->GetType(type.receive());
         }},
        {"container ImportCertificate", E_NOTIMPL,
         [](HeldObjects& objects) {
             return objects.container->ImportCertificate(true, objects.data);
         }},
        {"container ExportCertificate", E_NOTIMPL,
         [](HeldObjects& objects) {
             Variant certificate;
             return objects.container->ExportCertificate(true, certificate.receive());
         }},
        {"container GenKeyPair", E_NOTIMPL,
         [](HeldObjects& objects) {
             Variant result;
             return objects.container->GenKeyPair(result.receive());
         }},
        {"container GetKeyCert, Release", S_OK,
         [](HeldObjects& objects) {
             ComRef<IKeyCertificate> certificate;
             return objects.container->GetKeyCert(true, certificate.receive());
         }},
        {"certificate GetCertData", S_OK,
         [](HeldObjects& objects) {
             Variant data;
             return objects.certificate->GetCertData(data.receive());
         }},
        {"certificate GetCertID", S_OK,
         [](HeldObjects& objects) {
             Text id;
             return objects.certificate->GetCertID(id.receive());
         }},
    };
}

/// Opens a file of its own: a closed one has no contents to read or write.
HRESULT closeFile(HeldObjects& objects) {
    ComRef<IKeyFile> file;
    require(S_OK, objects.token->OpenFile(Text("7"), file.receive()), "OpenFile");
    return file->Close();
}

std::vector<Operation> fileMembers() {
    return {
        {"file Close", S_OK, closeFile},
        {"file Flush", S_OK, [](HeldObjects& objects) { return objects.file->Flush(); }},
        {"file Write", E_INVALIDARG,
         [](HeldObjects& objects) { return objects.file->Write(objects.data); }},
        {"file Seek, Read", S_OK,
         [](HeldObjects& objects) {
             Variant data;
             require(S_OK, objects.file->Seek(0, 2), "Seek");
             return objects.file->Read(sizeof(unsigned long), data.receive());
         }},
        {"file Read beyond the end", E_FAIL,
         [](HeldObjects& objects) {
             Variant data;
             return objects.file->Read(1000, data.receive());
         }},
        {"file GetSize", S_OK,
         [](HeldObjects& objects) {
             Variant size;
             return objects.file->GetSize(size.receive());
         }},
    };
}

using Select = IDispatch* (*)(HeldObjects& objects);

IDispatch* provider(HeldObjects& objects) {
    return objects.provider.get();
}

IDispatch* token(HeldObjects& objects) {
    return objects.token.get();
}

IDispatch* container(HeldObjects& objects) {
    return objects.container.get();
}

IDispatch* certificate(HeldObjects& objects) {
    return objects.certificate.get();
}

/// One text and a number are enough for every member: more arguments than it takes are ignored.
Operation byName(const char* name, Select select, HRESULT expected = S_OK, bool hasText = true) {
    return {std::string(name) + " by name", expected, [=](HeldObjects& objects) {
                IDispatch* const object = select(objects);
                const Text text("1234");
                std::vector<VARIANT> arguments;
                if (hasText) {
                    arguments = {string(text), number(0)};
                }
                Variant result;
                return invoke(object, idOf(object, name), std::move(arguments), result.receive());
            }};
}

std::vector<Operation> callsByName() {
    std::vector<Operation> all = {
        byName("GetKeyCount", provider, S_OK, false),
        {"OpenKey by name", S_OK,
         [](HeldObjects& objects) {
             Variant result;
             return invoke(provider(objects), idOf(provider(objects), "OpenKey"), {number(0)},
                           result.receive());
         }},
        byName("GetKeyCert", container),
        byName("GetCertID", certificate, S_OK, false),
        byName("GetCertData", certificate, S_OK, false),
        byName("VerifyPIN", token),
        {"UnlockPIN by name", S_OK,
         [](HeldObjects& objects) {
             const Text pin("1234");
             Variant result;
             return invoke(token(objects), idOf(token(objects), "UnlockPIN"),
                           {string(pin), string(pin)}, result.receive());
         }},
        byName("FileExists", token, E_FAIL),
    };
    for (const char* name : {"GetSerialNumber", "GetLabel", "GetManufacturerID", "GetModelID",
                             "GetTotalSize", "GetFreeSize", "GetDigestMethod", "GetSignAlgo"}) {
        all.push_back(byName(name, token, S_OK, false));
    }
    for (const char* name :
         {"GetMaxRetryCount", "GetRemainRetryCount", "IsDefaultPIN", "Lock", "Unlock"}) {
        all.push_back(byName(name, token, E_NOTIMPL));
    }
    for (const char* name :
         {"SetLabel", "ModifyPIN", "CreateFile", "OpenFile", "EnumFiles", "DeleteFile",
          "DigestData", "CreateContainer", "GetContainerCount", "OpenContainer", "DeleteContainer",
          "EnumContainer", "SignData", "VerifyData"}) {
        all.push_back(byName(name, token, E_FAIL));
    }
    return all;
}

}  // namespace

std::vector<Operation> objectOperations() {
    std::vector<Operation> all = containerMembers();
    const std::vector<Operation> files = fileMembers();
    all.insert(all.end(), files.begin(), files.end());
    return all;
}

std::vector<Operation> allOperations() {
    std::vector<Operation> all = providerOperations();
    for (const auto& part : {tokenOperations(), objectOperations(), callsByName()}) {
        all.insert(all.end(), part.begin(), part.end());
    }
    return all;
}

}  // namespace zr::test
