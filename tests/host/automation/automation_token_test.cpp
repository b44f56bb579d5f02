// The whole job through zrkeycom.dll on a real token. Windows only, as Automation is.
#include "tests/host/automation/automation_test.h"
#include "tests/support/fixtures/soft_token.h"

namespace zr::test {
namespace {

class AutomationSoftTokenTest : public testing::Test {
protected:
    AutomationSoftTokenTest() {
        folder.writeConfig("SHA1WithRSA", "MD5");
        EXPECT_ANSWER("B:true", call(provider, "Load", text(fromEnvironment("ZRKEY_TEST_MODULE"))));
        const ComRef<IDispatch> list = call(provider, "tokens").value.toObject();
        EXPECT_ANSWER("N:1", read(list, "Count"));
        token = call(list, "Item", integer(0)).value.toObject();
    }

    ComRef<IDispatch> firstCertificate() {
        const ComRef<IDispatch> list = call(token, "certificates").value.toObject();
        return call(list, "Item", integer(0)).value.toObject();
    }

    const Apartment apartment;
    TempDir folder;
    ComRef<IDispatch> provider = makeAutomationProvider();
    ComRef<IDispatch> token;
};

TEST_F(AutomationSoftTokenTest, TokenDescribesItself) {
    EXPECT_ANSWER("S:ZRKey Test", read(token, "Label"));
    EXPECT_ANSWER("S:SHA1WithRSA", read(token, "SignAlgo"));
    EXPECT_ANSWER("L:S:container1 ", call(token, "EnumContainer"));
}

TEST_F(AutomationSoftTokenTest, WrongPinIsAnException) {
    EXPECT_EXCEPTION(E_FAIL, call(token, "VerifyPIN", text("9999")));
    EXPECT_ANSWER("B:true", call(token, "VerifyPIN", text("1234")));
}

TEST_F(AutomationSoftTokenTest, SignatureOfTheTokenIsVerified) {
    EXPECT_ANSWER("B:true", call(token, "VerifyPIN", text("1234")));
    const Variant signer = object(firstCertificate());
    const Variant letter = bytes("a letter");
    for (const char* algorithm : {"rsa-sha1", "rsa-sha256"}) {
        const Answer signature = call(token, "sign", letter, signer, text(algorithm));
        ASSERT_HR(S_OK, signature.result) << signature.description;
        EXPECT_ANSWER("B:true",
                      call(token, "verify", letter, signer, signature.value, text(algorithm)));
        EXPECT_ANSWER("B:false", call(token, "verify", bytes("another"), signer, signature.value,
                                      text(algorithm)));
    }
    const Answer plain = call(token, "SignData", letter, signer);
    EXPECT_ANSWER("B:true", call(token, "VerifyData", letter, signer, plain.value));
    EXPECT_EXCEPTION(E_FAIL, call(token, "VerifyData", bytes("another"), signer, plain.value));
}

TEST_F(AutomationSoftTokenTest, CertificateIsTheOneOnTheToken) {
    const ComRef<IDispatch> certificate = firstCertificate();
    EXPECT_ANSWER("S:CN=ZRKey Test", call(certificate, "subject"));
    const Answer der = call(certificate, "GetCertData");
    EXPECT_EQ(shown(bytes(readTokenFile("certificate.der"))), shown(der.value));
    std::string pem = readTokenFile("certificate.pem");
    EXPECT_ANSWER("S:" + pem, call(certificate, "pem"));
}

TEST_F(AutomationSoftTokenTest, FileIsWrittenReadAndDeleted) {
    EXPECT_ANSWER("B:true", call(token, "VerifyPIN", text("1234")));
    EXPECT_ANSWER("B:true", call(token, "writeFile", text("8"), bytes("content")));
    const ComRef<IDispatch> file = call(token, "OpenFile", text("8")).value.toObject();
    EXPECT_ANSWER("N:7", read(file, "Size"));
    EXPECT_ANSWER("S:content", call(provider, "toText", call(file, "readAll").value));
    EXPECT_ANSWER("B:true", call(file, "Seek", integer(0)));
    EXPECT_ANSWER("X:636f6e", call(file, "Read", integer(3)));
    EXPECT_ANSWER("B:true", call(file, "Close"));
    EXPECT_EXCEPTION(E_UNEXPECTED, call(file, "Read", integer(1)));
    EXPECT_ANSWER("B:true", call(token, "DeleteFile", text("8")));
    EXPECT_EXCEPTION(E_FAIL, call(token, "FileExists", text("8")));
}

TEST_F(AutomationSoftTokenTest, PinOfTheUserIsChangedAndUnblocked) {
    EXPECT_ANSWER("B:true", call(token, "ModifyPIN", text("1234"), text("56789")));
    EXPECT_EXCEPTION(E_FAIL, call(token, "VerifyPIN", text("1234")));
    EXPECT_ANSWER("B:true", call(token, "unblockPIN", text("87654321"), text("1234")));
    token.reset();
    const ComRef<IDispatch> list = call(provider, "tokens").value.toObject();
    token = call(list, "Item", integer(0)).value.toObject();
    EXPECT_ANSWER("B:true", call(token, "VerifyPIN", text("1234")));
}

}  // namespace
}  // namespace zr::test
