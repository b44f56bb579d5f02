// Signing, verifying, digests and the algorithm list.
#include <algorithm>

#include "tests/support/fixtures/token.h"
#include "tests/support/log_file.h"

namespace zr::test {
namespace {

class TokenSignTest : public SigningTokenTest {
protected:
    HRESULT sign(const VARIANT& data) {
        return token->SignData(nullptr, data, certificate.get(), result.receive());
    }

    std::string signature(CK_ULONG length) {
        std::string bytes;
        for (CK_ULONG i = 0; i < length; ++i) {
            bytes += static_cast<char>(i);
        }
        return bytes;
    }
};

TEST_F(TokenSignTest, SignDataSignsInOneCall) {
    EXPECT_HR(S_OK, sign(ByteArray("data")));
    EXPECT_EQ((Lines{"C_FindObjectsInit(1, {0x0=3 0x1=1 0x100=0})", "C_FindObjects(1, 1)",
                     "C_GetAttributeValue(1, 2, {0x0 0x102})",
                     "C_GetAttributeValue(1, 2, {0x0=0 0x102[]})", "C_FindObjectsFinal(1)",
                     "C_SignInit(1, 6/0, 2)", "C_Sign(1, [data], 1024)"}),
              module.takeCalls());
    VARTYPE element = VT_EMPTY;
    SafeArrayGetVartype(result.get().parray, &element);
    EXPECT_EQ(VT_I1, element);
    EXPECT_EQ(signature(256), result.bytes());
}

TEST_F(TokenSignTest, SignDataIgnoresTheAlgorithmName) {
    for (const char* name : {"SM3WithSM2", "", "RSA"}) {
        EXPECT_HR(S_OK,
                  token->SignData(Text(name), ByteArray("x"), certificate.get(), result.receive()));
        EXPECT_EQ(signature(256), result.bytes());
        EXPECT_EQ(1u, module.count("C_SignInit"));
        module.takeCalls();
    }
}

TEST_F(TokenSignTest, SignDataOfEmptyDataReachesTheToken) {
    EXPECT_HR(S_OK, sign(ByteArray("")));
    EXPECT_EQ("C_Sign(1, [], 1024)", module.takeCalls().back());
}

TEST_F(TokenSignTest, OperationsWithWrongArgumentsAreRefusedWithoutACall) {
    VARIANT empty = {};
    VARIANT noArray = empty;
    noArray.vt = VT_ARRAY | VT_UI1;
    noArray.parray = nullptr;
    SAFEARRAYBOUND bounds[2] = {{2, 0}, {2, 0}};
    VARIANT twoDimensions = empty;
    twoDimensions.vt = VT_ARRAY | VT_UI1;
    twoDimensions.parray = SafeArrayCreate(VT_UI1, 2, bounds);
    const Variant signedElements = Variant::fromArray(VT_I1, SafeArrayCreate(VT_I1, 1, bounds));
    for (const VARIANT& data : {empty, noArray, twoDimensions, signedElements.get()}) {
        EXPECT_HR(E_INVALIDARG, sign(data));
        EXPECT_HR(E_INVALIDARG,
                  token->VerifyData(data, certificate.get(), nullptr, ByteArray("x")));
        EXPECT_HR(E_INVALIDARG,
                  token->VerifyData(ByteArray("x"), certificate.get(), nullptr, data));
        EXPECT_HR(E_INVALIDARG, token->DigestData(Text("MD5"), data, result.receive()));
    }
    EXPECT_HR(E_INVALIDARG, token->SignData(nullptr, ByteArray("x"), certificate.get(), nullptr));
    EXPECT_HR(E_INVALIDARG, token->SignData(nullptr, ByteArray("x"), nullptr, result.receive()));
    EXPECT_HR(E_INVALIDARG, token->VerifyData(ByteArray("x"), nullptr, nullptr, ByteArray("x")));
    EXPECT_HR(E_INVALIDARG, token->DigestData(Text("MD5"), ByteArray("x"), nullptr));
    EXPECT_TRUE(module.takeCalls().empty());
    VariantClear(&twoDimensions);
}

TEST_F(TokenSignTest, SignDataAndVerifyDataWithoutALoginReturnCantCallOut) {
    EXPECT_HR(E_FAIL, token->VerifyPIN(Text("wrong"), 0));
    module.takeCalls();
    EXPECT_HR(RPC_E_CANTCALLOUT_INEXTERNALCALL, sign(ByteArray("x")));
    EXPECT_HR(RPC_E_CANTCALLOUT_INEXTERNALCALL,
              token->VerifyData(ByteArray("x"), certificate.get(), nullptr, ByteArray("x")));
    EXPECT_TRUE(module.takeCalls().empty());
}

TEST_F(TokenSignTest, SignDataAfterAFailedCallFails) {
    for (const char* function :
         {"C_FindObjectsInit", "C_FindObjects", "C_GetAttributeValue", "C_SignInit", "C_Sign"}) {
        module->fail(function, 1, CKR_DEVICE_REMOVED);
        EXPECT_HR(E_FAIL, sign(ByteArray("x"))) << function;
        EXPECT_FALSE(module->isSearchOpen());
        EXPECT_EQ(VT_EMPTY, result.get().vt);
    }
    module->removeObject(privateKey);
    EXPECT_HR(E_FAIL, sign(ByteArray("x")));
}

TEST_F(TokenSignTest, SignDataWithAnOpenSearchFailsAndClosesIt) {
    module.addData("6", "x");
    VARIANT exists;
    EXPECT_HR(S_OK, token->FileExists(Text("7"), &exists));
    EXPECT_HR(E_FAIL, sign(ByteArray("x")));
    EXPECT_FALSE(module->isSearchOpen());
    EXPECT_HR(S_OK, sign(ByteArray("x")));
}

TEST_F(TokenSignTest, SignDataWithASignatureLongerThan1024BytesFails) {
    module->settings().signatureLength = 1024;
    EXPECT_HR(S_OK, sign(ByteArray("x")));
    EXPECT_EQ(1024u, result.bytes()->size());
    module->settings().signatureLength = 1025;
    EXPECT_HR(E_FAIL, sign(ByteArray("x")));
}

TEST_F(TokenSignTest, VerifyDataVerifiesWithThePublicKey) {
    EXPECT_HR(S_OK, token->VerifyData(ByteArray("data"), certificate.get(), nullptr,
                                      ByteArray(signature(256))));
    EXPECT_EQ((Lines{"C_FindObjectsInit(1, {0x0=2 0x1=1 0x100=0})", "C_FindObjects(1, 1)",
                     "C_GetAttributeValue(1, 3, {0x0 0x102})",
                     "C_GetAttributeValue(1, 3, {0x0=0 0x102[]})", "C_FindObjectsFinal(1)",
                     "C_VerifyInit(1, 6/0, 3)", "C_Verify(1, [data], 256)"}),
              module.takeCalls());
    EXPECT_HR(E_FAIL, token->VerifyData(ByteArray(signature(256)), certificate.get(), nullptr,
                                        ByteArray("data")));
    module->fail("C_VerifyInit", 1, CKR_GENERAL_ERROR);
    EXPECT_HR(E_FAIL, token->VerifyData(ByteArray("data"), certificate.get(), nullptr,
                                        ByteArray(signature(256))));
    module->removeObject(publicKey);
    EXPECT_HR(E_FAIL, token->VerifyData(ByteArray("data"), certificate.get(), nullptr,
                                        ByteArray(signature(256))));
}

TEST_F(TokenSignTest, VerifyDataIgnoresTheAlgorithmName) {
    for (const char* name : {"SM3WithSM2", "", "RSA"}) {
        EXPECT_HR(S_OK, token->VerifyData(ByteArray("data"), certificate.get(), Text(name),
                                          ByteArray(signature(256))));
        EXPECT_HR(E_FAIL, token->VerifyData(ByteArray("data"), certificate.get(), Text(name),
                                            ByteArray("wrong")));
        const Lines calls = module.takeCalls();
        EXPECT_EQ(2, std::count(calls.begin(), calls.end(), "C_VerifyInit(1, 6/0, 3)"));
    }
}

TEST_F(TokenSignTest, VerifyDataByCertAndByPubKeyVerifyNothing) {
    VARIANT empty = {};
    EXPECT_HR(S_OK, token->VerifyDataByCert(empty, nullptr, empty, nullptr, empty));
    EXPECT_HR(E_FAIL, token->VerifyDataByPubKey(empty, nullptr, empty, nullptr, empty));
    EXPECT_TRUE(module.takeCalls().empty());
}

TEST_F(TokenSignTest, DigestDataAcceptsMd5Only) {
    EXPECT_HR(S_OK, token->DigestData(Text("MD5"), ByteArray(""), result.receive()));
    EXPECT_EQ(std::string("\xd4\x1d\x8c\xd9\x8f\x00\xb2\x04\xe9\x80\x09\x98\xec\xf8\x42\x7e", 16),
              result.bytes());
    for (const char* name : {"md5", "MD5 ", "SHA1", ""}) {
        EXPECT_HR(E_INVALIDARG, token->DigestData(Text(name), ByteArray("x"), result.receive()));
    }
    EXPECT_HR(E_INVALIDARG, token->DigestData(nullptr, ByteArray("x"), result.receive()));
    Text text;
    EXPECT_HR(S_OK, token->GetDigestMethod(text.receive()));
    EXPECT_EQ("MD5", narrow(text));
    EXPECT_HR(E_INVALIDARG, token->GetDigestMethod(nullptr));
}

TEST_F(TokenSignTest, GetSignAlgoAndGetAlgoListReturnTheSameList) {
    for (const auto getter : {&IKeyObject::GetSignAlgo, &IKeyObject::GetAlgoList}) {
        Text text;
        EXPECT_HR(S_OK, (token.get()->*getter)(text.receive()));
        EXPECT_EQ("RSA", narrow(text));
        EXPECT_HR(E_INVALIDARG, (token.get()->*getter)(nullptr));
    }
}

TEST_F(TokenSignTest, GetDigestMethodIgnoresTheConfiguration) {
    folder.writeConfig("", "SHA256");
    ComRef<ITokenProvider> other = makeProvider();
    ComRef<IKeyObject> opened;
    EXPECT_HR(S_OK, other->Load(Text(module.path())));
    EXPECT_HR(S_OK, other->OpenKey(0, opened.receive()));
    Text text;
    EXPECT_HR(S_OK, opened->GetDigestMethod(text.receive()));
    EXPECT_EQ("MD5", narrow(text));
    EXPECT_HR(E_INVALIDARG, opened->DigestData(Text("SHA256"), ByteArray("x"), result.receive()));
}

TEST_F(TokenSignTest, GetPubKeyDataReturnsTheFirstKeyWhoseTypeReadsAsTheName) {
    const auto add = [&](const std::string& type, const std::string& id) {
        module->setAttribute(module.addKey(CKO_PUBLIC_KEY, id), CKA_KEY_TYPE, type.data(),
                             type.size());
    };
    add("ab", "another");
    add(std::string("a\0b", 3), "this one");
    add("a", "a later one");
    module.takeCalls();
    EXPECT_HR(S_OK, token->GetPubKeyData(certificate.get(), result.receive()));
    EXPECT_EQ("this one", result.bytes());
    EXPECT_EQ(3u, module.count("C_FindObjects"));
    // Each key is read with lengths of zero.
    EXPECT_EQ("C_GetAttributeValue(1, 5, {0x0 0x100 0x102})", module.takeCalls().at(8));
}

TEST_F(TokenSignTest, GetPubKeyDataSucceedsForAnEmptyNameOnly) {
    EXPECT_HR(E_FAIL, token->GetPubKeyData(certificate.get(), result.receive()));
    EXPECT_FALSE(module->isSearchOpen());
    EXPECT_HR(E_INVALIDARG, token->GetPubKeyData(nullptr, result.receive()));
    EXPECT_HR(E_INVALIDARG, token->GetPubKeyData(certificate.get(), nullptr));
    module.addCertificate("", "E");
    const auto unnamed = openCertificate(token.get(), Variant::fromText(Text("")));
    EXPECT_HR(S_OK, token->GetPubKeyData(unnamed.get(), result.receive()));
    EXPECT_EQ("a", result.bytes());
}

TEST_F(ModuleTest, GetPubKeyDataAndSignDataLogEachStep) {
    folder.enableLog();
    module.addCertificate("a", "A");
    module.addKey(CKO_PUBLIC_KEY, "a");
    ComRef<ITokenProvider> provider = makeProvider();
    provider->Load(Text(module.path()));
    ComRef<IKeyObject> token;
    provider->OpenKey(0, token.receive());
    const auto certificate = openCertificate(token.get(), Variant::fromText(Text("a")));
    const std::size_t before = readLogLines(folder.home()).size();
    Variant result;
    token->GetPubKeyData(certificate.get(), result.receive());
    module->fail("C_GetAttributeValue", 1, 0x30);
    token->GetPubKeyData(certificate.get(), result.receive());
    token->SignData(nullptr, ByteArray("x"), certificate.get(), result.receive());
    token->SignData(nullptr, result, certificate.get(), result.receive());
    Lines lines = readLogLines(folder.home());
    lines.erase(lines.begin(), lines.begin() + static_cast<std::ptrdiff_t>(before));
    EXPECT_EQ((Lines{
                  "[GetPubKeyData] Begin",
                  "[GetPubKeyData] C_GetAttributeValue 1 success",
                  "[GetPubKeyData] Error: ulRetCount != 1",
                  "[GetPubKeyData] Error: pbtPubKeyData == NULL",
                  "[GetPubKeyData] Begin",
                  "[GetPubKeyData] Error: C_GetAttributeValue fail 1 ckrv=[0x30]",
                  "[GetPubKeyData] Error: pbtPubKeyData == NULL",
                  "[SignData] Begin",
                  "[SignData] KeyObject_pkcs11::SignData..................",
                  "[SignData] Error: m_bLogin is FALSE ",
                  "[SignData] Begin",
                  "[SignData] KeyObject_pkcs11::SignData..................",
                  "[SignData] Error: parameter error ",
              }),
              lines);
}

TEST_F(TokenSignTest, SignDataIgnoresTheLowerBound) {
    SAFEARRAYBOUND bound = {4, 5};
    VARIANT data = {};
    data.vt = VT_ARRAY | VT_UI1;
    data.parray = SafeArrayCreate(VT_UI1, 1, &bound);
    void* elements = nullptr;
    SafeArrayAccessData(data.parray, &elements);
    std::copy_n("data", 4, static_cast<char*>(elements));
    SafeArrayUnaccessData(data.parray);
    EXPECT_HR(S_OK, sign(data));
    EXPECT_EQ("C_Sign(1, [data], 1024)", module.takeCalls().back());
    VariantClear(&data);
}

TEST_F(TokenSignTest, SignDataAndDigestDataOfALockedArraySucceedAndKeepTheLock) {
    const ByteArray bytes("data");
    const VARIANT& data = bytes;
    SafeArrayLock(data.parray);
    EXPECT_HR(S_OK, sign(data));
    EXPECT_EQ("C_Sign(1, [data], 1024)", module.takeCalls().back());
    EXPECT_HR(S_OK, token->DigestData(Text("MD5"), data, result.receive()));
    EXPECT_EQ(1u, data.parray->cLocks);
    SafeArrayUnlock(data.parray);
}

TEST_F(TokenSignTest, DigestDataOf64MiBUsesAllBytes) {
    const ByteArray data(std::string(64 << 20, '\0'));
    EXPECT_HR(S_OK, token->DigestData(Text("MD5"), data, result.receive()));
    EXPECT_EQ("\x7f\x61\x4d\xa9\x32\x9c\xd3\xae\xbf\x59\xb9\x1a\xad\xc3\x0b\xf0", result.bytes());
}

TEST_F(SigningTokenTest, OperationsOnAnUnreadableArrayFail) {
    const ByteArray locked("data to sign");
    const VARIANT& variant = locked;
    variant.parray->cLocks = 0xFFFF;
    EXPECT_HR(E_FAIL, token->SignData(nullptr, variant, certificate.get(), result.receive()));
    EXPECT_HR(E_FAIL, token->VerifyData(variant, certificate.get(), nullptr, ByteArray("x")));
    EXPECT_HR(E_FAIL, token->VerifyData(ByteArray("x"), certificate.get(), nullptr, variant));
    EXPECT_HR(E_FAIL, token->DigestData(Text("MD5"), variant, result.receive()));
    EXPECT_EQ(0u, module.count("C_SignInit"));
    EXPECT_EQ(0u, module.count("C_VerifyInit"));
    variant.parray->cLocks = 0;
}

}  // namespace
}  // namespace zr::test
