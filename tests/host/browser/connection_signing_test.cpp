// Connections: signatures.
#include "tests/host/browser/connection_test.h"
#include "tests/host/crypto/samples.h"

namespace zr::test {
namespace {

/// With a certificate that is readable, and a key whose signatures are not by it.
class SigningConnectionTest : public ConnectionTest {
protected:
    SigningConnectionTest() {
        module.addCertificate("a", sample(kRsaCertificate));
        module.addKey(CKO_PRIVATE_KEY, "a");
        module.addKey(CKO_PUBLIC_KEY, "a");
    }
    std::uint64_t openLoggedIn() {
        const std::uint64_t token = openToken();
        prompt().answer(PromptEnd::kAnswered, "1234");
        EXPECT_EQ("ok", login(token));
        return token;
    }
};

TEST_F(SigningConnectionTest, ShowsWhatIsSigned) {
    const std::uint64_t token = openLoggedIn();
    const std::uint64_t certificate = openCertificate(token);
    prompt().answer(PromptEnd::kCancelled);
    EXPECT_EQ("cancelled", page().codeOf(token, "SignData", {bytes("hello"), object(certificate)}));
    const host::Confirmation shown = prompt().confirmations().at(0);
    EXPECT_EQ(kSite, shown.origin);
    EXPECT_EQ("hello", shown.text);
    using Line = std::pair<std::string, std::string>;
    EXPECT_EQ(Line("Token", "Label"), shown.lines.at(1));
    EXPECT_EQ(Line("Algorithm", "rsa-sha1"), shown.lines.at(3));
    EXPECT_EQ(Line("Size", "5 bytes"), shown.lines.at(4));
    EXPECT_EQ(Line("SHA-256", "2cf24dba5fb0a30e26e83b2ac5b9e29e1b161e5c1fa7425e73043362938b9824"),
              shown.lines.at(5));
    EXPECT_EQ("Certificate", shown.lines.at(0).first);
    EXPECT_NE(std::string::npos, shown.lines.at(0).second.find("CN="));
    EXPECT_EQ(0u, module.count("C_SignInit"));
}

TEST_F(SigningConnectionTest, DoesNotShowBytesAsText) {
    const std::uint64_t token = openLoggedIn();
    const std::uint64_t certificate = openCertificate(token);
    prompt().answer(PromptEnd::kCancelled);
    page().call(token, "sign", {bytes("a\x1B[2J"), object(certificate), "rsa-sha512"});
    EXPECT_EQ("", prompt().confirmations().at(0).text);
    EXPECT_EQ("rsa-sha512", prompt().confirmations().at(0).lines.at(3).second);
}

TEST_F(SigningConnectionTest, SignsOnlyAfterALoginOfThePage) {
    const std::uint64_t token = openToken();
    const std::uint64_t certificate = openCertificate(token);
    const json arguments = {bytes("x"), object(certificate)};
    EXPECT_EQ("not-logged-in", page().codeOf(token, "SignData", arguments, true));
    EXPECT_EQ("not-logged-in", page().codeOf(token, "sign", arguments, true));
    prompt().answer(PromptEnd::kAnswered, "1234");
    login(token);
    page().call(token, "logout");
    EXPECT_EQ("not-logged-in", page().codeOf(token, "SignData", arguments, true));
    EXPECT_EQ("not-logged-in", page().codeOf(token, "sign", arguments, true));
    EXPECT_EQ(0u, module.count("C_SignInit"));
}

TEST_F(SigningConnectionTest, ChecksArgumentsBeforeThePrompt) {
    const std::uint64_t token = openLoggedIn();
    const std::uint64_t certificate = openCertificate(token);
    EXPECT_EQ("arguments",
              page().codeOf(token, "sign", {bytes("x"), object(certificate), "rot13"}, true));
    EXPECT_EQ("arguments", page().codeOf(token, "sign", {bytes("x"), object(token)}, true));
    EXPECT_EQ("arguments", page().codeOf(token, "sign", {bytes("x")}, true));
    EXPECT_EQ("arguments", page().codeOf(token, "SignData", {"x", object(certificate)}, true));
    EXPECT_EQ(1u, prompt().opened());
}

TEST_F(SigningConnectionTest, DoesNotReturnASignatureByAnotherKey) {
    const std::uint64_t token = openLoggedIn();
    const std::uint64_t certificate = openCertificate(token);
    prompt().answer(PromptEnd::kAnswered);
    const json reply = page().call(token, "SignData", {bytes("x"), object(certificate)}, true);
    EXPECT_EQ("refused", PageFrames::outcomeOf(reply));
    EXPECT_EQ("the signature is not by the key in the certificate",
              reply.at("error").at("message"));
    EXPECT_EQ(1u, module.count("C_SignInit"));
    // The answer of the user has a line, whatever follows.
    connection().finish();
    const std::vector<std::string> lines = audit();
    const auto confirmed = std::ranges::find(lines, "SignData confirmed");
    ASSERT_NE(lines.end(), confirmed);
    EXPECT_EQ("SignData refused", *std::next(confirmed));
}

TEST_F(SigningConnectionTest, DoesNotSignUnreadableCertificates) {
    module.addCertificate("b", "not a certificate");
    const std::uint64_t token = openLoggedIn();
    const std::uint64_t certificate =
        page().valueOf(token, "certificates").at(1).value("object", std::uint64_t{0});
    EXPECT_EQ("refused", page().codeOf(token, "SignData", {bytes("x"), object(certificate)}, true));
    EXPECT_EQ(1u, prompt().opened());
}

TEST_F(SigningConnectionTest, DoesNotSignWhenTheInputEndsWithTheAnswer) {
    const std::uint64_t token = openLoggedIn();
    const std::uint64_t certificate = openCertificate(token);
    prompt().answerAfterAbort();
    page().ask(token, "SignData", {bytes("x"), object(certificate)}, true);
    prompt().awaitOpened(2);
    EXPECT_EQ(0, connection().finish());
    EXPECT_EQ(1u, prompt().confirmations().size());
    EXPECT_EQ(0u, module.count("C_SignInit"));
}

}  // namespace
}  // namespace zr::test
