// The operations of the abstract classes without a backend.
#include <cstring>

#include "model/key_certificate.h"
#include "model/key_container.h"
#include "model/key_file.h"
#include "model/token_provider.h"
#include "tests/support/fixtures/bare_token.h"
#include "tests/support/fixtures/token.h"

namespace zr::test {

namespace {

class BaseOperationsTest : public testing::Test {
protected:
    template <class Object>
    static Object* held(Object* object) {
        object->AddRef();
        return object;
    }

    BSTR text = nullptr;
    VARIANT variant = {};
    void* out = nullptr;
};

TEST_F(BaseOperationsTest, ProviderOperationsAreNotImplemented) {
    TokenProvider* provider = held(new TokenProvider);
    INT number = 7;
    EXPECT_HR(E_NOTIMPL, provider->Load(nullptr));
    EXPECT_HR(E_NOTIMPL, provider->Unload());
    EXPECT_HR(E_NOTIMPL, provider->OpenKey(0, &out));
    EXPECT_HR(E_NOTIMPL, provider->GetName(&text));
    EXPECT_HR(E_NOTIMPL, provider->GetKeyCount(&number));
    EXPECT_HR(E_NOTIMPL, provider->GetKeySN(0, &text));
    EXPECT_HR(E_NOTIMPL, provider->LoadFinish(&number));
    EXPECT_EQ(7, number);
    EXPECT_EQ(0u, provider->Release());
}

TEST_F(BaseOperationsTest, TokenOperationsAreNotImplemented) {
    BareToken* token = held(new BareToken(nullptr));
    EXPECT_EQ(nullptr, token->GetParent());
    for (const HRESULT hr : {token->GetSerialNumber(&text),
                             token->SetLabel(&text, &variant),
                             token->GetLabel(&text),
                             token->GetManufacturerID(&text),
                             token->GetModelID(&text),
                             token->GetTotalSize(&variant),
                             token->GetFreeSize(&variant),
                             token->ModifyPIN(nullptr, nullptr, 0),
                             token->GetMaxRetryCount(0, &variant),
                             token->GetRemainRetryCount(0, &variant),
                             token->IsDefaultPIN(0, &variant),
                             token->VerifyPIN(nullptr, 0),
                             token->UnlockPIN(nullptr, nullptr),
                             token->Lock(&variant),
                             token->Unlock(&variant),
                             token->CreateFile(nullptr, 0, 0, 0, 0, &out),
                             token->FileExists(nullptr, &variant),
                             token->OpenFile(nullptr, &out),
                             token->EnumFiles(&variant),
                             token->DeleteFile(nullptr),
                             token->GetDigestMethod(&text),
                             token->CreateContainer(nullptr, &out),
                             token->GetContainerCount(&variant),
                             token->OpenContainer(variant, &out),
                             token->DeleteContainer(variant),
                             token->GetCertData(nullptr, &variant),
                             token->GetPubKeyData(nullptr, &variant),
                             token->VerifyData(variant, nullptr, nullptr, variant),
                             token->GetSignAlgo(&text),
                             token->GetZRHardApiInfo(&out, &text),
                             token->CloseKey(),
                             token->DigestData(variant, nullptr, &variant),
                             token->EnumContainer(&variant)}) {
        EXPECT_HR(E_NOTIMPL, hr);
    }
    EXPECT_EQ(VT_EMPTY, variant.vt);
    EXPECT_EQ(0u, token->Release());
}

TEST_F(BaseOperationsTest, FileOperationsAreNotImplemented) {
    KeyFile* file = held(new KeyFile(nullptr));
    EXPECT_EQ(nullptr, file->GetLog());
    EXPECT_HR(E_NOTIMPL, file->Close());
    EXPECT_HR(E_NOTIMPL, file->Flush());
    EXPECT_HR(E_NOTIMPL, file->Write(variant));
    EXPECT_HR(E_NOTIMPL, file->Read(0, &variant));
    EXPECT_HR(E_NOTIMPL, file->GetSize(&variant));
    EXPECT_HR(E_NOTIMPL, file->Seek(0, 0));
    EXPECT_EQ(0, file->GetSelfGetDispatchInfoCount());
    EXPECT_EQ(0u, file->Release());
}

TEST_F(BaseOperationsTest, GetIDsOfNamesOfAFileFindsNothing) {
    const ConsoleCapture quiet;
    KeyFile* file = held(new KeyFile(nullptr));
    for (const char* name : {"Read", "Close", "GetKeyCert", ""}) {
        std::basic_string<OLECHAR> wide(name, name + std::strlen(name));
        LPOLESTR names = wide.data();
        DISPID id = 7;
        EXPECT_HR(E_FAIL, file->GetIDsOfNames(IID_NULL, &names, 1, 0, &id)) << name;
        EXPECT_EQ(7, id) << name;
    }
    EXPECT_EQ(0u, file->Release());
}

TEST_F(BaseOperationsTest, AddRefOfAFileWithoutAProviderCountsWithoutALog) {
    BareToken* token = held(new BareToken(nullptr));
    EXPECT_EQ(nullptr, token->GetLog());
    KeyFile* file = held(new KeyFile(token));
    EXPECT_EQ(nullptr, file->GetLog());
    EXPECT_EQ(2u, file->AddRef());
    EXPECT_EQ(1u, file->Release());
    EXPECT_EQ(0u, file->Release());
    EXPECT_EQ(0u, token->Release());
}

TEST_F(BaseOperationsTest, ContainerOperationsAreNotImplemented) {
    KeyContainer* container = held(new KeyContainer(nullptr));
    EXPECT_HR(E_NOTIMPL, container->Close());
    EXPECT_HR(E_NOTIMPL, container->GetType(&text));
    EXPECT_HR(E_NOTIMPL, container->ImportCertificate(true, variant));
    EXPECT_HR(E_NOTIMPL, container->ExportCertificate(true, &variant));
    EXPECT_HR(E_NOTIMPL, container->GenKeyPair(&variant));
    EXPECT_HR(E_NOTIMPL, container->GetKeyCert(true, &out));
    EXPECT_EQ(0, container->GetSelfGetDispatchInfoCount());
    EXPECT_EQ(0u, container->Release());
}

TEST_F(BaseOperationsTest, CertificateOperationsAndAdaptersAreNotImplemented) {
    KeyCertificate* certificate = held(new KeyCertificate(nullptr));
    EXPECT_HR(E_NOTIMPL, certificate->GetCertData(&variant));
    EXPECT_HR(E_NOTIMPL, certificate->GetCertID(&text));
    EXPECT_HR(E_NOTIMPL, certificate->_GetCertData(nullptr, &variant));
    EXPECT_HR(E_NOTIMPL, certificate->_GetCertID(nullptr, &variant));
    EXPECT_EQ(VT_EMPTY, variant.vt);
    EXPECT_EQ(0u, certificate->Release());
}

TEST_F(BaseOperationsTest, ReleaseOfAParentWithChildrenKeepsItAlive) {
    TokenProvider* provider = held(new TokenProvider);
    BareToken* token = held(new BareToken(provider));
    KeyFile* file = held(new KeyFile(token));
    KeyContainer* container = held(new KeyContainer(token));
    KeyCertificate* certificate = held(new KeyCertificate(container));
    EXPECT_EQ(1u, provider->Release());
    EXPECT_EQ(2u, token->Release());
    EXPECT_EQ(1u, container->Release());
    EXPECT_EQ(0u, file->Release());
    EXPECT_EQ(container, certificate->GetParent());
    EXPECT_EQ(token, container->GetParent());
    EXPECT_EQ(provider, token->GetParent());
    EXPECT_EQ(0u, certificate->Release());
}

}  // namespace
}  // namespace zr::test
