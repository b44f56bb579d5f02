// Signing, verifying, digests and the algorithm list.
#include <algorithm>

#include "tests/contract/token.h"
#include "tests/support/log_file.h"

namespace zr::test {
namespace {

class TokenSignTest : public SigningTokenTest {
protected:
    HRESULT sign(const VARIANT& data) {
        return token->SignData(nullptr, data, certificate, &result);
    }

    std::string signature(CK_ULONG length) {
        std::string bytes;
        for (CK_ULONG i = 0; i < length; ++i) {
            bytes += static_cast<char>(i);
        }
        return bytes;
    }
};

TEST_F(TokenSignTest, ASignatureIsMadeInOneCall) {
    EXPECT_HR(S_OK, sign(Bytes("data")));
    EXPECT_EQ((Lines{"C_FindObjectsInit(1, {0x0=3 0x1=1 0x100=0})", "C_FindObjects(1, 1)",
                     "C_GetAttributeValue(1, 2, {0x0 0x102})",
                     "C_GetAttributeValue(1, 2, {0x0=0 0x102[]})", "C_FindObjectsFinal(1)",
                     "C_SignInit(1, 6/0, 2)", "C_Sign(1, [data], 1024)"}),
              module.takeCalls());
    VARTYPE element = VT_EMPTY;
    SafeArrayGetVartype(result.parray, &element);
    EXPECT_EQ(VT_I1, element);
    EXPECT_EQ(signature(256), takeBytes(&result));
}

TEST_F(TokenSignTest, WhateverTheAlgorithmIsCalled) {
    for (const char* name : {"SM3WithSM2", "", "RSA"}) {
        EXPECT_HR(S_OK, token->SignData(Text(name), Bytes("x"), certificate, &result));
        EXPECT_EQ(signature(256), takeBytes(&result));
        EXPECT_EQ(1u, module.count("C_SignInit"));
        module.takeCalls();
    }
}

TEST_F(TokenSignTest, EmptyDataIsTheTokensToDecide) {
    EXPECT_HR(S_OK, sign(Bytes("")));
    EXPECT_EQ("C_Sign(1, [], 1024)", module.takeCalls().back());
    VariantClear(&result);
}

TEST_F(TokenSignTest, WrongArgumentsAreRefused) {
    VARIANT empty;
    VariantInit(&empty);
    VARIANT noArray = empty;
    noArray.vt = VT_ARRAY | VT_UI1;
    noArray.parray = nullptr;
    SAFEARRAYBOUND bounds[2] = {{2, 0}, {2, 0}};
    VARIANT twoDimensions = empty;
    twoDimensions.vt = VT_ARRAY | VT_UI1;
    twoDimensions.parray = SafeArrayCreate(VT_UI1, 2, bounds);
    const Bytes wrongElements("x", VT_I1);
    for (const VARIANT& data :
         {empty, noArray, twoDimensions, static_cast<const VARIANT&>(wrongElements)}) {
        EXPECT_HR(E_INVALIDARG, sign(data));
        EXPECT_HR(E_INVALIDARG, token->VerifyData(data, certificate, nullptr, Bytes("x")));
        EXPECT_HR(E_INVALIDARG, token->VerifyData(Bytes("x"), certificate, nullptr, data));
        EXPECT_HR(E_INVALIDARG, token->DigestData(Text("MD5"), data, &result));
    }
    EXPECT_HR(E_INVALIDARG, token->SignData(nullptr, Bytes("x"), certificate, nullptr));
    EXPECT_HR(E_INVALIDARG, token->SignData(nullptr, Bytes("x"), nullptr, &result));
    EXPECT_HR(E_INVALIDARG, token->VerifyData(Bytes("x"), nullptr, nullptr, Bytes("x")));
    EXPECT_HR(E_INVALIDARG, token->DigestData(Text("MD5"), Bytes("x"), nullptr));
    EXPECT_TRUE(module.takeCalls().empty());
    VariantClear(&twoDimensions);
}

TEST_F(TokenSignTest, WithoutALoginItsOwnCodeIsAnswered) {
    EXPECT_HR(E_FAIL, token->VerifyPIN(Text("wrong"), 0));
    module.takeCalls();
    EXPECT_HR(RPC_E_CANTCALLOUT_INEXTERNALCALL, sign(Bytes("x")));
    EXPECT_HR(RPC_E_CANTCALLOUT_INEXTERNALCALL,
              token->VerifyData(Bytes("x"), certificate, nullptr, Bytes("x")));
    EXPECT_TRUE(module.takeCalls().empty());
}

TEST_F(TokenSignTest, EveryFailingCallFailsTheSignature) {
    for (const char* function :
         {"C_FindObjectsInit", "C_FindObjects", "C_GetAttributeValue", "C_SignInit", "C_Sign"}) {
        module->fail(function, 1, CKR_DEVICE_REMOVED);
        EXPECT_HR(E_FAIL, sign(Bytes("x"))) << function;
        EXPECT_FALSE(module->isSearchOpen());
        EXPECT_EQ(VT_EMPTY, result.vt);
    }
    module->removeObject(privateKey);
    EXPECT_HR(E_FAIL, sign(Bytes("x")));
}

TEST_F(TokenSignTest, AKeyIsNotTakenFromASearchLeftOpen) {
    module.addData("6", "x");
    VARIANT exists;
    EXPECT_HR(S_OK, token->FileExists(Text("7"), &exists));
    EXPECT_HR(E_FAIL, sign(Bytes("x")));
    EXPECT_FALSE(module->isSearchOpen());
    EXPECT_HR(S_OK, sign(Bytes("x")));
    VariantClear(&result);
}

TEST_F(TokenSignTest, SignaturesUpTo1024BytesFit) {
    module->settings().signatureLength = 1024;
    EXPECT_HR(S_OK, sign(Bytes("x")));
    EXPECT_EQ(1024u, takeBytes(&result).size());
    module->settings().signatureLength = 1025;
    EXPECT_HR(E_FAIL, sign(Bytes("x")));
}

TEST_F(TokenSignTest, ASignatureVerifiesWithThePublicKey) {
    EXPECT_HR(S_OK, token->VerifyData(Bytes("data"), certificate, nullptr, Bytes(signature(256))));
    EXPECT_EQ((Lines{"C_FindObjectsInit(1, {0x0=2 0x1=1 0x100=0})", "C_FindObjects(1, 1)",
                     "C_GetAttributeValue(1, 3, {0x0 0x102})",
                     "C_GetAttributeValue(1, 3, {0x0=0 0x102[]})", "C_FindObjectsFinal(1)",
                     "C_VerifyInit(1, 6/0, 3)", "C_Verify(1, [data], 256)"}),
              module.takeCalls());
    EXPECT_HR(E_FAIL,
              token->VerifyData(Bytes(signature(256)), certificate, nullptr, Bytes("data")));
    module->fail("C_VerifyInit", 1, CKR_GENERAL_ERROR);
    EXPECT_HR(E_FAIL,
              token->VerifyData(Bytes("data"), certificate, nullptr, Bytes(signature(256))));
    module->removeObject(publicKey);
    EXPECT_HR(E_FAIL,
              token->VerifyData(Bytes("data"), certificate, nullptr, Bytes(signature(256))));
}

TEST_F(TokenSignTest, AVerificationIgnoresTheAlgorithmsName) {
    for (const char* name : {"SM3WithSM2", "", "RSA"}) {
        EXPECT_HR(S_OK,
                  token->VerifyData(Bytes("data"), certificate, Text(name), Bytes(signature(256))));
        EXPECT_HR(E_FAIL,
                  token->VerifyData(Bytes("data"), certificate, Text(name), Bytes("wrong")));
        const Lines calls = module.takeCalls();
        EXPECT_EQ(2, std::count(calls.begin(), calls.end(), "C_VerifyInit(1, 6/0, 3)"));
    }
}

TEST_F(TokenSignTest, TwoOperationsVerifyNothing) {
    VARIANT empty;
    VariantInit(&empty);
    EXPECT_HR(S_OK, token->VerifyDataByCert(empty, nullptr, empty, nullptr, empty));
    EXPECT_HR(E_FAIL, token->VerifyDataByPubKey(empty, nullptr, empty, nullptr, empty));
    EXPECT_TRUE(module.takeCalls().empty());
}

TEST_F(TokenSignTest, DigestsAreMd5Only) {
    EXPECT_HR(S_OK, token->DigestData(Text("MD5"), Bytes(""), &result));
    EXPECT_EQ(std::string("\xd4\x1d\x8c\xd9\x8f\x00\xb2\x04\xe9\x80\x09\x98\xec\xf8\x42\x7e", 16),
              takeBytes(&result));
    for (const char* name : {"md5", "MD5 ", "SHA1", ""}) {
        EXPECT_HR(E_INVALIDARG, token->DigestData(Text(name), Bytes("x"), &result));
    }
    EXPECT_HR(E_INVALIDARG, token->DigestData(nullptr, Bytes("x"), &result));
    BSTR text = nullptr;
    EXPECT_HR(S_OK, token->GetDigestMethod(&text));
    EXPECT_EQ("MD5", narrow(text));
    SysFreeString(text);
    EXPECT_HR(E_INVALIDARG, token->GetDigestMethod(nullptr));
}

TEST_F(TokenSignTest, TheAlgorithmListIsToldTwice) {
    for (const auto getter : {&IKeyObject::GetSignAlgo, &IKeyObject::GetAlgoList}) {
        BSTR text = nullptr;
        EXPECT_HR(S_OK, (token->*getter)(&text));
        EXPECT_EQ("RSA", narrow(text));
        SysFreeString(text);
        EXPECT_HR(E_INVALIDARG, (token->*getter)(nullptr));
    }
}

TEST_F(TokenSignTest, TheDigestMethodIsNotThatOfTheConfiguration) {
    folder.writeConfig("", "SHA256");
    ITokenProvider* other = makeProvider();
    IKeyObject* opened = nullptr;
    EXPECT_HR(S_OK, other->Load(Text(module.path())));
    EXPECT_HR(S_OK, other->OpenKey(0, reinterpret_cast<void**>(&opened)));
    BSTR text = nullptr;
    EXPECT_HR(S_OK, opened->GetDigestMethod(&text));
    EXPECT_EQ("MD5", narrow(text));
    SysFreeString(text);
    EXPECT_HR(E_INVALIDARG, opened->DigestData(Text("SHA256"), Bytes("x"), &result));
    opened->Release();
    other->Release();
}

TEST_F(TokenSignTest, PublicKeyDataAreThoseOfTheFirstKeyWhoseTypeReadsAsTheName) {
    const auto add = [&](const std::string& type, const std::string& id) {
        module->setAttribute(module.addKey(CKO_PUBLIC_KEY, id), CKA_KEY_TYPE, type.data(),
                             type.size());
    };
    add("ab", "another");
    add(std::string("a\0b", 3), "this one");
    add("a", "a later one");
    module.takeCalls();
    EXPECT_HR(S_OK, token->GetPubKeyData(certificate, &result));
    EXPECT_EQ("this one", takeBytes(&result));
    EXPECT_EQ(3u, module.count("C_FindObjects"));
    // Each key is asked with lengths of zero.
    EXPECT_EQ("C_GetAttributeValue(1, 5, {0x0 0x100 0x102})", module.takeCalls().at(8));
}

TEST_F(TokenSignTest, PublicKeyDataIsFoundForAnEmptyNameOnly) {
    EXPECT_HR(E_FAIL, token->GetPubKeyData(certificate, &result));
    EXPECT_FALSE(module->isSearchOpen());
    EXPECT_HR(E_INVALIDARG, token->GetPubKeyData(nullptr, &result));
    EXPECT_HR(E_INVALIDARG, token->GetPubKeyData(certificate, nullptr));
    module.addCertificate("", "E");
    const Text name("");
    IKeyContainer* container = nullptr;
    IKeyCertificate* unnamed = nullptr;
    EXPECT_HR(S_OK, token->OpenContainer(string(name), reinterpret_cast<void**>(&container)));
    container->GetKeyCert(true, reinterpret_cast<void**>(&unnamed));
    container->Release();
    EXPECT_HR(S_OK, token->GetPubKeyData(unnamed, &result));
    EXPECT_EQ("a", takeBytes(&result));
    unnamed->Release();
}

TEST_F(ModuleTest, APublicKeyLookUpIsLoggedStepByStep) {
    folder.enableLog();
    module.addCertificate("a", "A");
    module.addKey(CKO_PUBLIC_KEY, "a");
    ITokenProvider* provider = makeProvider();
    provider->Load(Text(module.path()));
    IKeyObject* token = nullptr;
    provider->OpenKey(0, reinterpret_cast<void**>(&token));
    IKeyContainer* container = nullptr;
    IKeyCertificate* certificate = nullptr;
    const Text name("a");
    token->OpenContainer(string(name), reinterpret_cast<void**>(&container));
    container->GetKeyCert(true, reinterpret_cast<void**>(&certificate));
    const std::size_t before = readLogLines(folder.home()).size();
    VARIANT result;
    VariantInit(&result);
    token->GetPubKeyData(certificate, &result);
    module->fail("C_GetAttributeValue", 1, 0x30);
    token->GetPubKeyData(certificate, &result);
    token->SignData(nullptr, Bytes("x"), certificate, &result);
    token->SignData(nullptr, result, certificate, &result);
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
    certificate->Release();
    container->Release();
    token->Release();
    provider->Release();
}

TEST_F(TokenSignTest, TheLowerBoundOfAnArrayDoesNotMatter) {
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
    VariantClear(&result);
    VariantClear(&data);
}

TEST_F(TokenSignTest, ALockedArrayIsRead) {
    const Bytes bytes("data");
    const VARIANT& data = bytes;
    SafeArrayLock(data.parray);
    EXPECT_HR(S_OK, sign(data));
    EXPECT_EQ("C_Sign(1, [data], 1024)", module.takeCalls().back());
    VariantClear(&result);
    EXPECT_HR(S_OK, token->DigestData(Text("MD5"), data, &result));
    VariantClear(&result);
    EXPECT_EQ(1u, data.parray->cLocks);
    SafeArrayUnlock(data.parray);
}

TEST_F(TokenSignTest, SixtyFourMebibytesAreDigested) {
    const Bytes data(std::string(64 << 20, '\0'));
    EXPECT_HR(S_OK, token->DigestData(Text("MD5"), data, &result));
    EXPECT_EQ("\x7f\x61\x4d\xa9\x32\x9c\xd3\xae\xbf\x59\xb9\x1a\xad\xc3\x0b\xf0",
              takeBytes(&result));
}

TEST_F(SigningTokenTest, AnArrayThatCannotBeReadIsNotTakenForAnEmptyOne) {
    const Bytes locked("data to sign");
    const VARIANT& variant = locked;
    variant.parray->cLocks = 0xFFFF;
    EXPECT_HR(E_FAIL, token->SignData(nullptr, variant, certificate, &result));
    EXPECT_HR(E_FAIL, token->VerifyData(variant, certificate, nullptr, Bytes("x")));
    EXPECT_HR(E_FAIL, token->VerifyData(Bytes("x"), certificate, nullptr, variant));
    EXPECT_HR(E_FAIL, token->DigestData(Text("MD5"), variant, &result));
    EXPECT_EQ(0u, module.count("C_SignInit"));
    EXPECT_EQ(0u, module.count("C_VerifyInit"));
    variant.parray->cLocks = 0;
}

}  // namespace
}  // namespace zr::test
