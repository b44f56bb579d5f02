// Objects of the backend whose parent is of a class outside the backend: they ignore the parent.
#include "pkcs11/certificate_pkcs11.h"
#include "pkcs11/container_pkcs11.h"
#include "pkcs11/file_pkcs11.h"
#include "pkcs11/token_pkcs11.h"
#include "tests/support/fixtures/bare_token.h"
#include "tests/support/fixtures/token_log.h"

namespace zr::test {
namespace {

/// A token of another backend, whose provider writes a log.
class ForeignParentsTest : public ModuleTest {
protected:
    ForeignParentsTest() {
        folder.enableLog();
        provider = makeObject<TokenProvider>();
        token = makeObject<BareToken>(provider.get());
    }

    /// The lines that were logged after the first ones.
    Lines linesAfter(std::size_t before) const {
        Lines lines = readLogLines(folder.home());
        lines.erase(lines.begin(), lines.begin() + static_cast<Lines::difference_type>(before));
        return lines;
    }

    const ConsoleCapture quiet;
    ComRef<TokenProvider> provider;
    ComRef<BareToken> token;
};

TEST_F(ForeignParentsTest, TokenBelowAForeignProviderHasNoProvider) {
    const auto orphan = makeObject<KeyObject_pkcs11>(provider.get());
    ASSERT_EQ(nullptr, orphan->GetTokenProvider());
    BSTR label = nullptr;
    EXPECT_HR(E_FAIL, orphan->GetLabel(&label));
    EXPECT_HR(E_FAIL, orphan->VerifyPIN(Text("1234"), 0));
}

TEST_F(ForeignParentsTest, FileBelowAForeignTokenHasNoToken) {
    const auto file = makeObject<KeyFile_pkcs11>(token.get());
    ASSERT_EQ(nullptr, file->GetKeyObject());
    EXPECT_FALSE(file->CreateFile(Text("7")));
    EXPECT_HR(E_FAIL, file->Flush());
}

TEST_F(ForeignParentsTest, OpenFileBelowAForeignTokenFailsInTheFirstStep) {
    const auto file = makeObject<KeyFile_pkcs11>(token.get());
    const std::size_t before = readLogLines(folder.home()).size();
    EXPECT_FALSE(file->OpenFile(Text("7")));
    EXPECT_EQ(begunOnly("OpenFile", {"[OpenFile] OpenFile Fail ... 1"}), linesAfter(before));
}

TEST_F(ForeignParentsTest, ContainerBelowAForeignTokenHasNoToken) {
    const auto container = makeObject<KeyContainer_pkcs11>(token.get());
    ASSERT_EQ(nullptr, container->GetKeyObject());
    EXPECT_FALSE(container->OpenContainer(Variant::fromNumber(0)));
}

TEST_F(ForeignParentsTest, CertificateBelowAForeignContainerHasNoContainer) {
    const auto container = makeObject<KeyContainer>(token.get());
    const auto certificate = makeObject<KeyCertificate_pkcs11>(container.get());
    ASSERT_EQ(nullptr, certificate->GetKeyContainer());
    BSTR id = nullptr;
    EXPECT_HR(E_FAIL, certificate->GetCertID(&id));
    EXPECT_EQ(nullptr, id);
    VARIANT data = poisoned();
    EXPECT_HR(E_FAIL, certificate->GetCertData(&data));
    EXPECT_EQ(VT_UI1, data.vt);
}

TEST_F(ForeignParentsTest, CertificateBelowAContainerOfAForeignTokenHasNoData) {
    const auto container = makeObject<KeyContainer_pkcs11>(token.get());
    const auto certificate = makeObject<KeyCertificate_pkcs11>(container.get());
    EXPECT_EQ(container.get(), certificate->GetKeyContainer());
    VARIANT data = poisoned();
    EXPECT_HR(E_FAIL, certificate->GetCertData(&data));
}

}  // namespace
}  // namespace zr::test
