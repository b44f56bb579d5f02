// One round of the whole work with a token.
#include "tests/soak/soak_work.h"

#include <dlfcn.h>

#include <cstring>
#include <stdexcept>

#include "tests/contract/token.h"

namespace zr::test {
namespace {

void require(HRESULT hr, const char* step) {
    if (hr != S_OK) {
        throw std::runtime_error(std::string(step) + " answers " +
                                 std::to_string(static_cast<ULONG>(hr)));
    }
}

template <class Interface>
void** receive(Interface** out) {
    return reinterpret_cast<void**>(out);
}

/// A result that is given back.
struct Value {
    VARIANT variant = {};
    ~Value() { VariantClear(&variant); }
};

using TextGetter = HRESULT (STDMETHODCALLTYPE IKeyObject::*)(BSTR*);

std::string text(IKeyObject* token, TextGetter getter) {
    BSTR out = nullptr;
    require((token->*getter)(&out), "a text of the token");
    const std::string result = narrow(out);
    SysFreeString(out);
    return result;
}

void createFile(IKeyObject* token) {
    IKeyFile* file = nullptr;
    require(token->CreateFile(Text("3"), 0, 0, 0, 0, receive(&file)), "CreateFile");
    require(file->Close(), "Close");
    file->Release();
}

void changePin(IKeyObject* token) {
    require(token->VerifyPIN(Text("1234"), 0), "VerifyPIN");
    require(token->ModifyPIN(Text("1234"), Text("567890"), 0), "ModifyPIN");
    require(token->ModifyPIN(Text("567890"), Text("1234"), 0), "ModifyPIN");
}

void useFile(IKeyObject* token) {
    createFile(token);
    Value exists;
    require(token->FileExists(Text("4"), &exists.variant), "FileExists");
    Value count;  // its walk ends the search that FileExists left open
    require(token->GetContainerCount(&count.variant), "GetContainerCount");
    IKeyFile* file = nullptr;
    require(token->OpenFile(Text("4"), receive(&file)), "OpenFile");
    Value size;
    require(file->GetSize(&size.variant), "GetSize");
    require(file->Seek(0, 2), "Seek");
    Value data;
    require(file->Read(0, &data.variant), "Read");
    file->Flush();  // SoftHSM2 refuses it
    require(file->Close(), "Close");
    file->Release();
}

void callByName(IDispatch* object, const char* name, std::vector<VARIANT> arguments) {
    Value result;
    require(invoke(object, idOf(object, name), std::move(arguments), &result.variant), name);
}

void useContainer(IKeyObject* token) {
    Value names;
    require(token->EnumContainer(0, &names.variant), "EnumContainer");
    const Text name("container1");
    IKeyContainer* container = nullptr;
    require(token->OpenContainer(string(name), receive(&container)), "OpenContainer");
    IKeyCertificate* certificate = nullptr;
    require(container->GetKeyCert(true, receive(&certificate)), "GetKeyCert");
    Value certificateData;
    require(token->GetCertData(certificate, &certificateData.variant), "GetCertData");
    callByName(certificate, "GetCertID", {});
    const Bytes data("data to sign");
    Value signature;
    require(token->SignData(nullptr, data, certificate, &signature.variant), "SignData");
    require(token->VerifyData(data, certificate, nullptr, signature.variant), "VerifyData");
    Value digest;
    require(token->DigestData(Text("MD5"), data, &digest.variant), "DigestData");
    certificate->Release();
    container->Release();
}

}  // namespace

SoakWork::SoakWork(const std::string& module)
    : m_module(module), m_path(relativePath(module.c_str())) {}

SoakWork::~SoakWork() {
    finishDeleting();
}

/// Loads the module once in the library and once past it, to look at what the library leaves.
ITokenProvider* SoakWork::load() {
    ITokenProvider* provider = makeProvider();
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

/// The library is the last to let the module go, as in a host.
void SoakWork::unload(ITokenProvider* provider) const {
    dlclose(m_handle);
    require(provider->Unload(), "Unload");
    provider->Release();
}

/// Opens the token by its label: SoftHSM2 shows an empty slot beside it.
IKeyObject* SoakWork::open(ITokenProvider* provider) const {
    INT count = 0;
    require(provider->GetKeyCount(&count), "GetKeyCount");
    for (LONG i = 0; i < count; ++i) {
        IKeyObject* token = nullptr;
        require(provider->OpenKey(i, receive(&token)), "OpenKey");
        if (text(token, &IKeyObject::GetLabel) == "ZRKey Test") {
            return token;
        }
        token->Release();
    }
    throw std::runtime_error("no token");
}

CK_SLOT_ID SoakWork::slot() const {
    CK_SLOT_ID slots[2] = {};
    CK_ULONG count = 2;
    m_functions->C_GetSlotList(CK_TRUE, slots, &count);
    return slots[0];
}

/// Handles count up from the load of the module, and SoftHSM2 does not tell its sessions: each that
/// could be one is asked.
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
    ITokenProvider* provider = load();
    IKeyObject* token = open(provider);
    for (const TextGetter getter : {&IKeyObject::GetSerialNumber, &IKeyObject::GetManufacturerID,
                                    &IKeyObject::GetModelID, &IKeyObject::GetSignAlgo}) {
        text(token, getter);
    }
    callByName(provider, "GetKeyCount", {});
    callByName(token, "GetFreeSize", {});
    changePin(token);
    const Text pin("1234");
    callByName(token, "VerifyPIN", {string(pin), number(0)});
    useFile(token);
    deleteObject("3");
    useContainer(token);
    token->Release();
    const CK_ULONG open = sessions();
    unload(provider);
    return open;
}

CK_ULONG SoakWork::deleteByLibrary() {
    if (!m_deleting) {
        m_deleting = load();
    }
    IKeyObject* token = open(m_deleting);
    require(token->VerifyPIN(Text("1234"), 0), "VerifyPIN");
    createFile(token);
    require(token->DeleteFile(Text("4")), "DeleteFile");
    token->Release();
    return sessions();
}

void SoakWork::finishDeleting() {
    if (m_deleting) {
        unload(m_deleting);
        m_deleting = nullptr;
    }
}

}  // namespace zr::test
