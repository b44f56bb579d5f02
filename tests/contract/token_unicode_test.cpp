// Texts beyond ASCII: UTF-8 on the token and in the configuration, UTF-16 for the host.
#include <cstring>

#include "tests/support/fixtures/token.h"

namespace zr::test {
namespace {

using Wide = std::basic_string<OLECHAR>;

// One character each of two, three and four bytes.
constexpr const char* kUtf8 = "\xc3\xa4\xe2\x82\xac\xf0\x9f\x94\x91";
const Wide kWide = OLESTR("\u00e4\u20ac\U0001F511");

Wide wide(BSTR text) {
    return text ? Wide(text, SysStringLen(text)) : Wide(OLESTR("(null)"));
}

template <std::size_t Size>
void fill(CK_BYTE (&field)[Size]) {
    std::memset(field, ' ', Size);
    std::memcpy(field, kUtf8, std::strlen(kUtf8));
}

/// A token with a container whose name is not ASCII.
class TokenUnicodeTest : public LoggedInTokenTest {
protected:
    TokenUnicodeTest() { module.addCertificate(kUtf8, "data"); }

    ComRef<IKeyContainer> open() {
        ComRef<IKeyContainer> container;
        EXPECT_HR(S_OK, token->OpenContainer(string(name), container.receive()));
        return container;
    }

    ComRef<IKeyCertificate> openCertificate() {
        return test::openCertificate(token.get(), string(name));
    }

    const Text name{kWide.c_str()};
};

TEST_F(TokenUnicodeTest, TextGettersReadTheTokenAsUtf8) {
    auto& info = module->settings().tokenInfo;
    fill(info.serialNumber);
    fill(info.label);
    fill(info.manufacturerID);
    fill(info.model);
    for (const auto getter : {&IKeyObject::GetSerialNumber, &IKeyObject::GetLabel,
                              &IKeyObject::GetManufacturerID, &IKeyObject::GetModelID}) {
        Text text;
        EXPECT_HR(S_OK, (token.get()->*getter)(text.receive()));
        EXPECT_EQ(kWide, wide(text));
    }
}

TEST_F(TokenUnicodeTest, EnumContainerReadsNamesAsUtf8) {
    Variant names;
    EXPECT_HR(S_OK, token->EnumContainer(0, names.receive()));
    ASSERT_EQ(VT_ARRAY | VT_BSTR, names.type());
    void* data = nullptr;
    SafeArrayAccessData(names.get().parray, &data);
    const BSTR listed = static_cast<BSTR*>(data)[0];
    EXPECT_EQ(kWide, wide(listed));
    SafeArrayUnaccessData(names.get().parray);
}

TEST_F(TokenUnicodeTest, OpenContainerFindsANameByItsUtf8) {
    ComRef<IKeyContainer> container = open();
    ASSERT_TRUE(container);
}

TEST_F(TokenUnicodeTest, GetTypeReadsTheTypeAsUtf8) {
    module->setAttribute(1, CKA_CERTIFICATE_TYPE, kUtf8, std::strlen(kUtf8));
    ComRef<IKeyContainer> container = open();
    Text type;
    EXPECT_HR(S_OK, container->GetType(type.receive()));
    EXPECT_EQ(kWide, wide(type));
}

TEST_F(TokenUnicodeTest, GetCertIdAndGetCertDataReadTheIdAsUtf8) {
    ComRef<IKeyCertificate> certificate = openCertificate();
    Text id;
    EXPECT_HR(S_OK, certificate->GetCertID(id.receive()));
    EXPECT_EQ(kWide, wide(id));
    ByteArray data;
    EXPECT_HR(S_OK, certificate->GetCertData(data.receive()));
    EXPECT_EQ("data", data.bytes());
}

TEST_F(TokenUnicodeTest, SignDataFindsTheKeyByTheUtf8OfTheCertificateId) {
    const CK_OBJECT_HANDLE key = module.addKey(CKO_PRIVATE_KEY, kUtf8);
    module.addKey(CKO_PUBLIC_KEY, kUtf8);
    ComRef<IKeyCertificate> certificate = openCertificate();
    Variant signature;
    module.takeCalls();
    EXPECT_HR(S_OK,
              token->SignData(nullptr, ByteArray("data"), certificate.get(), signature.receive()));
    const Lines calls = module.takeCalls();
    ASSERT_LE(2u, calls.size());
    EXPECT_EQ("C_SignInit(1, 6/0, " + std::to_string(key) + ")", calls[calls.size() - 2]);
    EXPECT_HR(S_OK, token->VerifyData(ByteArray("data"), certificate.get(), nullptr, signature));
}

TEST_F(TokenUnicodeTest, ListGettersReadTheConfigurationAsUtf8) {
    folder.writeConfig(kUtf8, "");
    ComRef<ITokenProvider> other = makeProvider();
    ComRef<IKeyObject> opened;
    EXPECT_HR(S_OK, other->Load(Text(module.path())));
    EXPECT_HR(S_OK, other->OpenKey(0, opened.receive()));
    for (const auto getter : {&IKeyObject::GetSignAlgo, &IKeyObject::GetAlgoList}) {
        Text list;
        EXPECT_HR(S_OK, (opened.get()->*getter)(list.receive()));
        EXPECT_EQ(kWide, wide(list));
    }
}

}  // namespace
}  // namespace zr::test
