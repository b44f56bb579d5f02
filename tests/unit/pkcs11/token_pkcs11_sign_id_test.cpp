// Which key signs and verifies: the key whose CKA_ID has the bytes of the certificate's CKA_ID,
// also when these bytes are not UTF-8.
#include <algorithm>
#include <string>
#include <vector>

#include "model/key_certificate.h"
#include "tests/support/fixtures/token.h"

namespace zr::test {
namespace {

/// A certificate object of a host.
class HostCertificate : public KeyCertificate {
public:
    explicit HostCertificate(const OLECHAR* id) : KeyCertificate(nullptr), m_id(id) {}

    HRESULT STDMETHODCALLTYPE GetCertID(BSTR* id) override {
        ++idRequests;
        *id = SysAllocString(m_id);
        return S_OK;
    }

    int idRequests = 0;

private:
    const OLECHAR* m_id;
};

class TokenSignIdTest : public LoggedInTokenTest {
protected:
    TokenSignIdTest() {
        // All four read as the same text.
        for (const std::string id : {"\xEF\xBF\xBD", "\xFE", "\xFF", "\x80"}) {
            module.addCertificate(id, id);
            privateKeys.push_back(module.addKey(CKO_PRIVATE_KEY, id));
            publicKeys.push_back(module.addKey(CKO_PUBLIC_KEY, id));
        }
    }

    ComRef<IKeyCertificate> openCertificate(LONG index) {
        return test::openCertificate(token.get(), Variant::fromNumber(index));
    }

    /// The call that starts an operation with a key.
    static std::string begin(const char* function, CK_OBJECT_HANDLE key) {
        return std::string(function) + "(1, 6/0, " + std::to_string(key) + ")";
    }

    bool signsWith(CK_OBJECT_HANDLE key, IKeyCertificate* certificate) {
        module.takeCalls();
        Variant result;
        EXPECT_HR(S_OK, token->SignData(nullptr, ByteArray("data"), certificate, result.receive()));
        const Lines calls = module.takeCalls();
        return std::count(calls.begin(), calls.end(), begin("C_SignInit", key)) == 1;
    }

    bool verifiesWith(CK_OBJECT_HANDLE key, IKeyCertificate* certificate) {
        module.takeCalls();
        token->VerifyData(ByteArray("data"), certificate, nullptr, ByteArray("signature"));
        const Lines calls = module.takeCalls();
        return std::count(calls.begin(), calls.end(), begin("C_VerifyInit", key)) == 1;
    }

    std::vector<CK_OBJECT_HANDLE> privateKeys;
    std::vector<CK_OBJECT_HANDLE> publicKeys;
};

TEST_F(TokenSignIdTest, SignDataAndVerifyDataUseTheKeyWithTheBytesOfTheId) {
    for (std::size_t i = 0; i < privateKeys.size(); ++i) {
        ComRef<IKeyCertificate> certificate = openCertificate(static_cast<LONG>(i));
        EXPECT_TRUE(signsWith(privateKeys[i], certificate.get())) << i;
        EXPECT_TRUE(verifiesWith(publicKeys[i], certificate.get())) << i;
        EXPECT_EQ(0u, certificate.release()->Release());
    }
}

TEST_F(TokenSignIdTest, SignDataWithAnIdThatHoldsAZeroByteUsesTheKeyWithTheBytesBeforeIt) {
    module.addCertificate(std::string("\xF1\0x", 3), "E");
    const CK_OBJECT_HANDLE key = module.addKey(CKO_PRIVATE_KEY, std::string("\xF1\0y", 3));
    ComRef<IKeyCertificate> certificate = openCertificate(4);
    EXPECT_TRUE(signsWith(key, certificate.get()));
    EXPECT_EQ(0u, certificate.release()->Release());
}

TEST_F(TokenSignIdTest, GetCertIDOfABinaryIdReportsReplacementCharacters) {
    ComRef<IKeyCertificate> certificate = openCertificate(1);
    Text id;
    EXPECT_HR(S_OK, certificate->GetCertID(id.receive()));
    ASSERT_EQ(1u, SysStringLen(id));
    EXPECT_EQ(0xFFFD, id.get()[0]);
    EXPECT_EQ(0u, certificate.release()->Release());
}

TEST_F(TokenSignIdTest, SignDataWithACertificateOfTheHostUsesTheKeyWithTheTextItReports) {
    const OLECHAR id[] = {0xFFFD, 0};
    HostCertificate certificate(id);
    EXPECT_TRUE(signsWith(privateKeys[0], &certificate));
    EXPECT_EQ(1, certificate.idRequests);
    EXPECT_TRUE(verifiesWith(publicKeys[0], &certificate));
    EXPECT_EQ(2, certificate.idRequests);
}

}  // namespace
}  // namespace zr::test
