// The main job on a real token: information, login, PINs, files, certificates, signatures.
#include <cstdlib>
#include <fstream>
#include <iterator>

#include "tests/contract/library.h"
#include "tests/support/hresult.h"
#include "tests/support/temp_dir.h"

namespace zr::test {
namespace {

std::string tokenFolder() {
    const char* folder = std::getenv("ZRKEY_TOKEN_FOLDER");
    return folder ? folder : ".";
}

std::string readFile(const std::string& name) {
    std::ifstream file(tokenFolder() + "/" + name, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

std::string narrow(BSTR text) {
    const std::string result(text, text + SysStringLen(text));
    SysFreeString(text);
    return result;
}

VARIANT bytesVariant(const std::string& bytes) {
    VARIANT variant;
    VariantInit(&variant);
    SAFEARRAYBOUND bound = {static_cast<ULONG>(bytes.size()), 0};
    variant.vt = VT_ARRAY | VT_UI1;
    variant.parray = SafeArrayCreate(VT_UI1, 1, &bound);
    void* data = nullptr;
    SafeArrayAccessData(variant.parray, &data);
    std::copy(bytes.begin(), bytes.end(), static_cast<char*>(data));
    SafeArrayUnaccessData(variant.parray);
    return variant;
}

std::string takeBytes(VARIANT* variant) {
    EXPECT_EQ(VT_ARRAY | VT_UI1, variant->vt);
    void* data = nullptr;
    SafeArrayAccessData(variant->parray, &data);
    const auto* begin = static_cast<const char*>(data);
    const std::string bytes(begin, begin + variant->parray->rgsabound[0].cElements);
    SafeArrayUnaccessData(variant->parray);
    VariantClear(variant);
    return bytes;
}

class SoftTokenTest : public testing::Test {
protected:
    SoftTokenTest() {
        folder.writeConfig();
        EXPECT_HR(S_OK, provider->Load(Text(relativePath(ZR_TOKEN_MODULE))));
        INT count = 0;
        EXPECT_HR(S_OK, provider->GetKeyCount(&count));
        // The token, and the slot for another one that SoftHSM2 always shows.
        EXPECT_EQ(2, count);
        for (LONG i = 0; i < count && !token; ++i) {
            IKeyObject* candidate = nullptr;
            provider->OpenKey(i, reinterpret_cast<void**>(&candidate));
            BSTR label = nullptr;
            if (candidate && candidate->GetLabel(&label) == S_OK &&
                narrow(label) == "ZRKey Test") {
                token = candidate;
            } else if (candidate) {
                candidate->Release();
            }
        }
    }
    ~SoftTokenTest() override {
        if (token) {
            token->Release();
        }
        provider->Release();
    }

    /// The certificate of the container, with one reference.
    IKeyCertificate* openCertificate() {
        const Text name("container1");
        IKeyContainer* container = nullptr;
        IKeyCertificate* certificate = nullptr;
        EXPECT_HR(S_OK, token->OpenContainer(string(name), reinterpret_cast<void**>(&container)));
        EXPECT_HR(S_OK, container->GetKeyCert(true, reinterpret_cast<void**>(&certificate)));
        container->Release();
        return certificate;
    }

    TempDir folder;
    ITokenProvider* provider = makeProvider();
    IKeyObject* token = nullptr;
};

TEST_F(SoftTokenTest, ItTellsAboutItself) {
    ASSERT_TRUE(token);
    BSTR text = nullptr;
    EXPECT_HR(S_OK, token->GetManufacturerID(&text));
    EXPECT_EQ("SoftHSM project", narrow(text));
    EXPECT_HR(S_OK, token->GetModelID(&text));
    EXPECT_EQ("SoftHSM v2", narrow(text));
    EXPECT_HR(S_OK, token->GetSerialNumber(&text));
    EXPECT_EQ(16u, narrow(text).size());
    VARIANT size;
    VariantInit(&size);
    EXPECT_HR(S_OK, token->GetTotalSize(&size));
    EXPECT_EQ(VT_UI4, size.vt);
    EXPECT_EQ(0xFFFFFFFFu, size.ulVal);
}

TEST_F(SoftTokenTest, LoginsAreRefusedAndAccepted) {
    ASSERT_TRUE(token);
    EXPECT_HR(E_FAIL, token->VerifyPIN(Text("9999"), 0));
    EXPECT_HR(S_OK, token->VerifyPIN(Text("1234"), 0));
    EXPECT_HR(S_OK, token->VerifyPIN(Text("1234"), 0));
}

TEST_F(SoftTokenTest, TheSecurityOfficerLogsInWhenTheUserIsNot) {
    ASSERT_TRUE(token);
    EXPECT_HR(E_FAIL, token->VerifyPIN(Text("1234"), 1));
    EXPECT_HR(S_OK, token->VerifyPIN(Text("87654321"), 1));
    // SoftHSM2 lets nobody else in then.
    EXPECT_HR(E_FAIL, token->VerifyPIN(Text("1234"), 0));
}

TEST_F(SoftTokenTest, ThePinIsChangedAndChangedBack) {
    ASSERT_TRUE(token);
    EXPECT_HR(S_OK, token->ModifyPIN(Text("1234"), Text("567890"), 0));
    EXPECT_HR(E_FAIL, token->VerifyPIN(Text("1234"), 0));
    EXPECT_HR(S_OK, token->VerifyPIN(Text("567890"), 0));
    EXPECT_HR(S_OK, token->ModifyPIN(Text("567890"), Text("1234"), 0));
    EXPECT_HR(E_FAIL, token->ModifyPIN(Text("567890"), Text("1234"), 0));
}

TEST_F(SoftTokenTest, ItsOneContainerIsListedAndOpened) {
    ASSERT_TRUE(token);
    VARIANT result;
    VariantInit(&result);
    EXPECT_HR(S_OK, token->GetContainerCount(&result));
    EXPECT_EQ(VT_UI4, result.vt);
    EXPECT_EQ(1u, result.ulVal);
    EXPECT_HR(S_OK, token->EnumContainer(0, &result));
    ASSERT_EQ(VT_ARRAY | VT_BSTR, result.vt);
    EXPECT_EQ(1u, result.parray->rgsabound[0].cElements);
    VariantClear(&result);
    IKeyCertificate* certificate = openCertificate();
    ASSERT_TRUE(certificate);
    BSTR id = nullptr;
    EXPECT_HR(S_OK, certificate->GetCertID(&id));
    EXPECT_EQ("container1", narrow(id));
    EXPECT_HR(S_OK, certificate->GetCertData(&result));
    EXPECT_EQ(readFile("certificate.der"), takeBytes(&result));
    certificate->Release();
}

TEST_F(SoftTokenTest, ASignatureVerifiesUntilTheDataChanges) {
    ASSERT_TRUE(token);
    IKeyCertificate* certificate = openCertificate();
    ASSERT_TRUE(certificate);
    VARIANT data = bytesVariant("signed by the token");
    VARIANT other = bytesVariant("signed by the Token");
    VARIANT result;
    VariantInit(&result);
    EXPECT_HR(RPC_E_CANTCALLOUT_INEXTERNALCALL,
              token->SignData(nullptr, data, certificate, &result));
    EXPECT_HR(S_OK, token->VerifyPIN(Text("1234"), 0));
    EXPECT_HR(S_OK, token->SignData(nullptr, data, certificate, &result));
    EXPECT_HR(S_OK, token->VerifyData(data, certificate, nullptr, result));
    EXPECT_HR(E_FAIL, token->VerifyData(other, certificate, nullptr, result));
    const std::string signature = takeBytes(&result);
    EXPECT_EQ(256u, signature.size());
    std::ofstream(tokenFolder() + "/signature.bin", std::ios::binary) << signature;
    VariantClear(&data);
    VariantClear(&other);
    certificate->Release();
}

TEST_F(SoftTokenTest, AFileIsCreatedUnderItsNameAndFoundUnderTheNext) {
    ASSERT_TRUE(token);
    EXPECT_HR(S_OK, token->VerifyPIN(Text("1234"), 0));
    IKeyFile* file = nullptr;
    EXPECT_HR(S_OK,
              token->CreateFile(Text("07"), 0, 0, 0, 0, reinterpret_cast<void**>(&file)));
    file->Release();
    VARIANT exists;
    VariantInit(&exists);
    EXPECT_HR(E_FAIL, token->FileExists(Text("7"), &exists));
    EXPECT_EQ(0, exists.lVal);
    // The label is "07": the look-up of 8 asks for "7".
    EXPECT_HR(E_FAIL, token->FileExists(Text("8"), &exists));
    EXPECT_HR(S_OK, token->CreateFile(Text("3"), 0, 0, 0, 0, reinterpret_cast<void**>(&file)));
    file->Release();
    EXPECT_HR(S_OK, token->OpenFile(Text("4"), reinterpret_cast<void**>(&file)));
    VARIANT size;
    EXPECT_HR(S_OK, file->GetSize(&size));
    EXPECT_EQ(0, size.lVal);
    // SoftHSM2 refuses every later change of a value.
    EXPECT_HR(E_FAIL, file->Flush());
    file->Release();
    EXPECT_HR(S_OK, token->FileExists(Text("4"), &exists));
    EXPECT_EQ(1, exists.lVal);
    // The search stays open on a match, and SoftHSM2 allows one: a container walk closes it.
    EXPECT_HR(E_FAIL, token->FileExists(Text("4"), &exists));
    VARIANT count;
    EXPECT_HR(S_OK, token->GetContainerCount(&count));
    EXPECT_HR(S_OK, token->DeleteFile(Text("4")));
    EXPECT_HR(E_FAIL, token->FileExists(Text("4"), &exists));
    EXPECT_HR(E_FAIL, token->DeleteFile(Text("4")));
}

}  // namespace
}  // namespace zr::test
