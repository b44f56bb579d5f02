// One full session with a token.
#include "tests/soak/soak_work.h"

#include <dlfcn.h>

#include <cstring>
#include <stdexcept>

#include "tests/support/fixtures/token.h"

namespace zr::test {
namespace {

void require(HRESULT hr, const char* step) {
    if (hr != S_OK) {
        throw std::runtime_error(std::string(step) + " returned " +
                                 std::to_string(static_cast<ULONG>(hr)));
    }
}

using TextGetter = HRESULT (STDMETHODCALLTYPE IKeyObject::*)(BSTR*);

std::string text(IKeyObject* token, TextGetter getter) {
    Text out;
    require((token->*getter)(out.receive()), "a text of the token");
    return narrow(out);
}

void createFile(IKeyObject* token) {
    ComRef<IKeyFile> file;
    require(token->CreateFile(Text("3"), 0, 0, 0, 0, file.receive()), "CreateFile");
    require(file->Close(), "Close");
}

void changePin(IKeyObject* token) {
    require(token->VerifyPIN(Text("1234"), 0), "VerifyPIN");
    require(token->ModifyPIN(Text("1234"), Text("567890"), 0), "ModifyPIN");
    require(token->ModifyPIN(Text("567890"), Text("1234"), 0), "ModifyPIN");
}

void useFile(IKeyObject* token) {
    createFile(token);
    Variant exists;
    require(token->FileExists(Text("4"), exists.receive()), "FileExists");
    Variant count;  // ends the search that FileExists left open
    require(token->GetContainerCount(count.receive()), "GetContainerCount");
    ComRef<IKeyFile> file;
    require(token->OpenFile(Text("4"), file.receive()), "OpenFile");
    Variant size;
    require(file->GetSize(size.receive()), "GetSize");
    require(file->Seek(0, 2), "Seek");
    Variant data;
    require(file->Read(0, data.receive()), "Read");
    file->Flush();  // SoftHSM2 refuses it
    require(file->Close(), "Close");
}

void callByName(IDispatch* object, const char* name, std::vector<VARIANT> arguments) {
    Variant result;
    require(invoke(object, idOf(object, name), std::move(arguments), result.receive()), name);
}

void useContainer(IKeyObject* token) {
    Variant names;
    require(token->EnumContainer(0, names.receive()), "EnumContainer");
    ComRef<IKeyContainer> container;
    require(token->OpenContainer(Variant::fromText(Text("container1")), container.receive()),
            "OpenContainer");
    ComRef<IKeyCertificate> certificate;
    require(container->GetKeyCert(true, certificate.receive()), "GetKeyCert");
    Variant certificateData;
    require(token->GetCertData(certificate.get(), certificateData.receive()), "GetCertData");
    callByName(certificate.get(), "GetCertID", {});
    const ByteArray data("data to sign");
    Variant signature;
    require(token->SignData(nullptr, data, certificate.get(), signature.receive()), "SignData");
    require(token->VerifyData(data, certificate.get(), nullptr, signature), "VerifyData");
    Variant digest;
    require(token->DigestData(Text("MD5"), data, digest.receive()), "DigestData");
}

}  // namespace

SoakWork::SoakWork(const std::string& module)
    : m_module(module), m_path(relativePath(module.c_str())) {}

SoakWork::~SoakWork() {
    finishDeleting();
}

/// Loads the module in the library and a second time directly, to inspect what the library leaves.
ComRef<ITokenProvider> SoakWork::load() {
    ComRef<ITokenProvider> provider = makeProvider();
    require(provider->Load(Text(m_path)), "Load");
    m_handle = dlopen(m_module.c_str(), RTLD_NOW);
    const auto getList = reinterpret_cast<decltype(CK_FUNCTIONS::C_GetFunctionList)>(
        m_handle ? dlsym(m_handle, "C_GetFunctionList") : nullptr);
    CK_FUNCTION_LIST* list = nullptr;
    if (!getList || getList(&list) != CKR_OK) {
        throw std::runtime_error("no module " + m_module);
    }
    m_functions = &list->functions;
    return provider;
}

/// The library is the last to free the module, as in a host.
void SoakWork::unload(ComRef<ITokenProvider> provider) const {
    dlclose(m_handle);
    require(provider->Unload(), "Unload");
}

/// Opens the token by its label: SoftHSM2 also has an empty slot.
ComRef<IKeyObject> SoakWork::open(const ComRef<ITokenProvider>& provider) const {
    INT count = 0;
    require(provider->GetKeyCount(&count), "GetKeyCount");
    for (LONG i = 0; i < count; ++i) {
        ComRef<IKeyObject> token;
        require(provider->OpenKey(i, token.receive()), "OpenKey");
        if (text(token.get(), &IKeyObject::GetLabel) == "ZRKey Test") {
            return token;
        }
    }
    throw std::runtime_error("no token");
}

CK_SLOT_ID SoakWork::slot() const {
    CK_SLOT_ID slots[2] = {};
    CK_ULONG count = 2;
    m_functions->C_GetSlotList(CK_TRUE, slots, &count);
    return slots[0];
}

/// SoftHSM2 does not list its sessions. It numbers them from 1 after loading, so every number up
/// to that of a new session is tried.
CK_ULONG SoakWork::sessions() const {
    CK_SESSION_HANDLE newest = 0;
    if (m_functions->C_OpenSession(slot(), CKF_SERIAL_SESSION, nullptr, nullptr, &newest) !=
        CKR_OK) {
        throw std::runtime_error("C_OpenSession");
    }
    CK_ULONG open = 0;
    for (CK_SESSION_HANDLE session = 1; session < newest; ++session) {
        CK_SESSION_INFO info = {};
        open += m_functions->C_GetSessionInfo(session, &info) == CKR_OK ? 1 : 0;
    }
    m_functions->C_CloseSession(newest);
    return open;
}

void SoakWork::deleteObject(const std::string& label) const {
    CK_SESSION_HANDLE session = 0;
    m_functions->C_OpenSession(slot(), CKF_SERIAL_SESSION | CKF_RW_SESSION, nullptr, nullptr,
                               &session);
    CK_ATTRIBUTE wanted = {CKA_LABEL, const_cast<char*>(label.data()),
                           static_cast<CK_ULONG>(label.size())};
    CK_OBJECT_HANDLE object = 0;
    CK_ULONG count = 0;
    m_functions->C_FindObjectsInit(session, &wanted, 1);
    m_functions->C_FindObjects(session, &object, 1, &count);
    m_functions->C_FindObjectsFinal(session);
    const CK_RV rv = m_functions->C_DestroyObject(session, object);
    m_functions->C_CloseSession(session);
    if (rv != CKR_OK) {
        throw std::runtime_error("C_DestroyObject");
    }
}

CK_ULONG SoakWork::round() {
    ComRef<ITokenProvider> provider = load();
    ComRef<IKeyObject> token = open(provider);
    for (const TextGetter getter : {&IKeyObject::GetSerialNumber, &IKeyObject::GetManufacturerID,
                                    &IKeyObject::GetModelID, &IKeyObject::GetSignAlgo}) {
        text(token.get(), getter);
    }
    callByName(provider.get(), "GetKeyCount", {});
    callByName(token.get(), "GetFreeSize", {});
    changePin(token.get());
    const Text pin("1234");
    callByName(token.get(), "VerifyPIN", {string(pin), number(0)});
    useFile(token.get());
    deleteObject("3");
    useContainer(token.get());
    token.reset();
    const CK_ULONG open = sessions();
    unload(std::move(provider));
    return open;
}

CK_ULONG SoakWork::deleteByLibrary() {
    if (!m_deleting) {
        m_deleting = load();
    }
    ComRef<IKeyObject> token = open(m_deleting);
    require(token->VerifyPIN(Text("1234"), 0), "VerifyPIN");
    createFile(token.get());
    require(token->DeleteFile(Text("4")), "DeleteFile");
    token.reset();
    return sessions();
}

void SoakWork::finishDeleting() {
    if (m_deleting) {
        unload(std::move(m_deleting));
    }
}

}  // namespace zr::test
