// A token that goes away in the middle of the work: each operation then fails as documented, what
// was handed out is released as ever, and the module unloads.
#include <filesystem>

#include "tests/token/soft_token.h"

namespace zr::test {
namespace {

/// Takes SoftHSM2's tokens away, and puts them back at the end.
class PulledToken {
public:
    PulledToken() { std::filesystem::rename(tokenFile("tokens"), tokenFile("pulled")); }
    PulledToken(const PulledToken&) = delete;
    PulledToken& operator=(const PulledToken&) = delete;
    ~PulledToken() {
        std::filesystem::remove_all(tokenFile("tokens"));
        std::filesystem::rename(tokenFile("pulled"), tokenFile("tokens"));
    }
};

class PulledTokenTest : public SoftTokenTest {
protected:
    ~PulledTokenTest() override {
        EXPECT_EQ(0u, token->Release());
        token = nullptr;
        EXPECT_HR(S_OK, provider->Unload());
    }

    void expectNoFile(const char* name) const {
        IKeyFile* file = nullptr;
        EXPECT_HR(E_FAIL, token->OpenFile(Text(name), reinterpret_cast<void**>(&file)));
        EXPECT_EQ(nullptr, file);
        EXPECT_HR(E_FAIL,
                  token->CreateFile(Text(name), 0, 0, 0, 0, reinterpret_cast<void**>(&file)));
        EXPECT_EQ(nullptr, file);
        VARIANT exists = poisoned();
        EXPECT_HR(E_FAIL, token->FileExists(Text(name), &exists));
        EXPECT_EQ(VT_I4, exists.vt);
        EXPECT_EQ(0, exists.lVal);
        EXPECT_HR(E_FAIL, token->DeleteFile(Text(name)));
    }
};

TEST_F(PulledTokenTest, AfterItWasOpenedNoLoginAndNoFileSucceeds) {
    const PulledToken pulled;
    BSTR label = nullptr;
    const HRESULT hr = token->GetLabel(&label);
    EXPECT_HR(E_FAIL, hr);
    EXPECT_EQ(nullptr, label);
    VARIANT size = poisoned();
    EXPECT_HR(E_FAIL, token->GetFreeSize(&size));
    EXPECT_EQ(VT_UI1, size.vt);
    EXPECT_HR(E_FAIL, token->VerifyPIN(Text("1234"), 0));
    EXPECT_HR(E_FAIL, token->ModifyPIN(Text("1234"), Text("567890"), 0));
    expectNoFile("9");
    VARIANT names = poisoned();
    EXPECT_HR(S_OK, token->EnumContainer(0, &names));
    EXPECT_EQ(VT_UI1, names.vt);
}

TEST_F(PulledTokenTest, AfterTheLoginNothingIsSigned) {
    ASSERT_HR(S_OK, token->VerifyPIN(Text("1234"), 0));
    IKeyCertificate* certificate = openCertificate();
    const PulledToken pulled;
    VARIANT result = poisoned();
    EXPECT_HR(E_FAIL, token->SignData(nullptr, Bytes("x"), certificate, &result));
    EXPECT_HR(E_FAIL, token->GetCertData(certificate, &result));
    EXPECT_EQ(VT_UI1, result.vt);
    expectNoFile("9");
    IKeyContainer* container = nullptr;
    const Text name("container1");
    EXPECT_HR(E_FAIL, token->OpenContainer(string(name), reinterpret_cast<void**>(&container)));
    EXPECT_EQ(nullptr, container);
    certificate->Release();
}

TEST_F(PulledTokenTest, InTheMiddleOfAFileWhatWasReadIsServedOn) {
    ASSERT_HR(S_OK, token->VerifyPIN(Text("1234"), 0));
    const std::string content = readTokenFile("content.bin");
    IKeyFile* file = nullptr;
    ASSERT_HR(S_OK, token->OpenFile(Text("101"), reinterpret_cast<void**>(&file)));
    const PulledToken pulled;
    VARIANT data;
    VariantInit(&data);
    EXPECT_HR(S_OK, file->Read(256, &data));
    EXPECT_EQ(content, takeBytes(&data));
    EXPECT_HR(E_FAIL, file->Flush());
    EXPECT_HR(S_OK, file->Close());
    file->Release();
}

TEST_F(PulledTokenTest, AnotherCanNotBeOpened) {
    const PulledToken pulled;
    ITokenProvider* other = makeProvider();
    EXPECT_HR(S_OK, load(other));
    EXPECT_EQ(nullptr, openToken(other));
    other->Release();
}

}  // namespace
}  // namespace zr::test
