// docs/habits.md: containers, certificates and signatures.
#include "tests/support/fixtures/soft_token.h"

namespace zr::test {
namespace {

class ContainerHabit : public LoggedInSoftTokenTest {
protected:
    ByteArray sign(BSTR algorithm) const {
        ByteArray signature;
        EXPECT_HR(S_OK, token->SignData(algorithm, ByteArray("data"), certificate.get(),
                                        signature.receive()));
        return signature;
    }
    static VARTYPE elementType(const VARIANT& variant) {
        VARTYPE type = VT_EMPTY;
        EXPECT_EQ(VT_ARRAY | VT_UI1, variant.vt);
        EXPECT_HR(S_OK, SafeArrayGetVartype(variant.parray, &type));
        return type;
    }

    ComRef<IKeyCertificate> certificate = openCertificate();
};

using ByteArraysCarryTwoTypes = ContainerHabit;
using SignaturesAreSHA1WhateverTheName = ContainerHabit;
using VerifyDataNeedsALogin = ContainerHabit;
using AListingThatFailsIsShort = ContainerHabit;
using GetPubKeyDataFindsNoKey = ContainerHabit;
using SizesMayBeUnknown = ContainerHabit;

TEST_F(ByteArraysCarryTwoTypes, SignaturesAndFilesAreSigned) {
    EXPECT_EQ(VT_I1, elementType(sign(nullptr).get()));
    ComRef<IKeyFile> file;
    ASSERT_HR(S_OK, token->OpenFile(Text("7"), file.receive()));
    ByteArray contents;
    EXPECT_HR(S_OK, file->Read(8, contents.receive()));
    EXPECT_EQ(VT_I1, elementType(contents.get()));
}

TEST_F(ByteArraysCarryTwoTypes, DigestsAndCertificatesAreNot) {
    ByteArray digest;
    EXPECT_HR(S_OK, token->DigestData(Text("MD5"), ByteArray("data"), digest.receive()));
    EXPECT_EQ(VT_UI1, elementType(digest.get()));
    ByteArray bytes;
    EXPECT_HR(S_OK, certificate->GetCertData(bytes.receive()));
    EXPECT_EQ(VT_UI1, elementType(bytes.get()));
}

TEST_F(ByteArraysCarryTwoTypes, DataInAVariantOfSignedBytesIsRefused) {
    const ByteArray signature = sign(nullptr);
    EXPECT_HR(S_OK, token->VerifyData(ByteArray("data"), certificate.get(), nullptr, signature));
    VARIANT retagged = signature.get();
    retagged.vt = VT_ARRAY | VT_I1;
    EXPECT_HR(E_INVALIDARG,
              token->VerifyData(ByteArray("data"), certificate.get(), nullptr, retagged));
}

TEST_F(SignaturesAreSHA1WhateverTheName, EveryNameGivesTheSameSignature) {
    const auto signature = sign(nullptr).bytes();
    EXPECT_EQ(signature, sign(Text("SHA256WithRSA")).bytes());
    EXPECT_EQ(signature, sign(Text("")).bytes());
}

TEST_F(SignaturesAreSHA1WhateverTheName, DigestDataTakesMd5InCapitalsOnly) {
    for (const char* name : {"md5", "SHA1", "SHA-256", ""}) {
        ByteArray digest;
        EXPECT_HR(E_INVALIDARG, token->DigestData(Text(name), ByteArray("data"), digest.receive()))
            << name;
    }
}

TEST_F(VerifyDataNeedsALogin, ARightSignatureIsRefusedWithoutIt) {
    const ByteArray signature = sign(nullptr);
    const ByteArray data("data");
    const ComRef<IKeyObject> second = openToken(provider);
    EXPECT_HR(RPC_E_CANTCALLOUT_INEXTERNALCALL,
              second->VerifyData(data, certificate.get(), nullptr, signature));
    ASSERT_HR(S_OK, second->VerifyPIN(Text("1234"), 0));
    EXPECT_HR(S_OK, second->VerifyData(data, certificate.get(), nullptr, signature));
    EXPECT_HR(E_FAIL, second->VerifyData(data, certificate.get(), nullptr, ByteArray("forged")));
    const PulledToken pulled;
    EXPECT_HR(E_FAIL, second->VerifyData(data, certificate.get(), nullptr, signature));
}

TEST_F(AListingThatFailsIsShort, APulledTokenHasNoContainers) {
    const PulledToken pulled;
    Variant count;
    EXPECT_HR(S_OK, token->GetContainerCount(count.receive()));
    EXPECT_EQ(0, count.toNumber());
    Variant names;
    EXPECT_HR(S_OK, token->EnumContainer(0, names.receive()));
    EXPECT_EQ(VT_EMPTY, names.type());
    Text label;
    EXPECT_HR(E_FAIL, token->GetLabel(label.receive()));
}

TEST_F(GetPubKeyDataFindsNoKey, ACertificateWithAnIdFails) {
    ByteArray key;
    EXPECT_HR(E_FAIL, token->GetPubKeyData(certificate.get(), key.receive()));
}

TEST_F(SizesMayBeUnknown, SoftHsmReportsNone) {
    for (const auto getter : {&IKeyObject::GetTotalSize, &IKeyObject::GetFreeSize}) {
        Variant size;
        EXPECT_HR(S_OK, (token.get()->*getter)(size.receive()));
        EXPECT_EQ(0xFFFFFFFF, size.toNumber());
    }
}

}  // namespace
}  // namespace zr::test
