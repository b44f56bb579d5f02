// A token that is pulled while it is used: each operation then fails as documented, objects are
// released as usual, and the module unloads.
#include "tests/support/fixtures/soft_token.h"

namespace zr::test {
namespace {

class PulledTokenTest : public SoftTokenTest {
protected:
    ~PulledTokenTest() override {
        EXPECT_EQ(0u, token.release()->Release());
        EXPECT_HR(S_OK, provider->Unload());
    }

    void expectNoFile(const char* name) const {
        ComRef<IKeyFile> file;
        EXPECT_HR(E_FAIL, token->OpenFile(Text(name), file.receive()));
        EXPECT_FALSE(file);
        EXPECT_HR(E_FAIL, token->CreateFile(Text(name), 0, 0, 0, 0, file.receive()));
        EXPECT_FALSE(file);
        VARIANT exists = poisoned();
        EXPECT_HR(E_FAIL, token->FileExists(Text(name), &exists));
        EXPECT_EQ(VT_I4, exists.vt);
        EXPECT_EQ(0, exists.lVal);
        EXPECT_HR(E_FAIL, token->DeleteFile(Text(name)));
    }
};

TEST_F(PulledTokenTest, OperationsAfterTheTokenIsPulledFail) {
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

TEST_F(PulledTokenTest, SignDataAfterTheTokenIsPulledFails) {
    ASSERT_HR(S_OK, token->VerifyPIN(Text("1234"), 0));
    ComRef<IKeyCertificate> certificate = openCertificate();
    const PulledToken pulled;
    VARIANT result = poisoned();
    EXPECT_HR(E_FAIL, token->SignData(nullptr, ByteArray("x"), certificate.get(), &result));
    EXPECT_HR(E_FAIL, token->GetCertData(certificate.get(), &result));
    EXPECT_EQ(VT_UI1, result.vt);
    expectNoFile("9");
    ComRef<IKeyContainer> container;
    EXPECT_HR(E_FAIL,
              token->OpenContainer(Variant::fromText(Text("container1")), container.receive()));
    EXPECT_FALSE(container);
}

TEST_F(PulledTokenTest, ReadAfterTheTokenIsPulledReturnsTheLoadedContents) {
    ASSERT_HR(S_OK, token->VerifyPIN(Text("1234"), 0));
    const std::string content = readTokenFile("content.bin");
    ComRef<IKeyFile> file;
    ASSERT_HR(S_OK, token->OpenFile(Text("101"), file.receive()));
    const PulledToken pulled;
    ByteArray data;
    EXPECT_HR(S_OK, file->Read(256, data.receive()));
    EXPECT_EQ(content, data.bytes());
    EXPECT_HR(E_FAIL, file->Flush());
    EXPECT_HR(S_OK, file->Close());
}

TEST_F(PulledTokenTest, OpenKeyAfterTheTokenIsPulledFindsNoToken) {
    const PulledToken pulled;
    ComRef<ITokenProvider> other = makeProvider();
    EXPECT_HR(S_OK, load(other));
    EXPECT_FALSE(openToken(other));
}

}  // namespace
}  // namespace zr::test
