// Signing and verifying, beside the same Cryptoki calls without the library: the search for the key of
// the certificate's ID, and the operation.
#include <cstdint>
#include <string>

#include "bench/bare_walk.h"
#include "bench/comparison.h"

namespace zr::bench {
namespace {

constexpr const char* kSameCalls = "the same Cryptoki calls, results on the stack";

/// The bytes of a text.
std::string utf8Of(const zrkey::ComRef<IKeyCertificate>& certificate) {
    zrkey::Text id;
    require(SUCCEEDED(certificate->GetCertID(id.receive())), "no ID");
    return id.utf8();
}

CK_OBJECT_HANDLE findKey(const BareModule& bare, CK_OBJECT_CLASS objectClass,
                         const std::string& id) {
    CK_BBOOL isOnToken = CK_TRUE;
    CK_KEY_TYPE type = CKK_RSA;
    CK_ATTRIBUTE search[] = {{CKA_CLASS, &objectClass, sizeof objectClass},
                             {CKA_TOKEN, &isOnToken, sizeof isOnToken},
                             {CKA_KEY_TYPE, &type, sizeof type}};
    CK_OBJECT_HANDLE key = 0;
    walkBare(bare, search, 3, {CKA_CLASS, CKA_ID}, 0,
             [&](CK_OBJECT_HANDLE object, const BareAttributes& read) {
                 const bool isFound = read.equals(1, id.data(), id.size());
                 key = isFound ? object : key;
                 return !isFound;
             });
    return key;
}

/// A signature without the library.
struct BareSignature {
    CK_BYTE bytes[1024];
    CK_ULONG length = sizeof bytes;

    void make(const BareModule& bare, const std::string& id, const std::string& data) {
        CK_MECHANISM mechanism = {CKM_SHA1_RSA_PKCS, nullptr, 0};
        length = sizeof bytes;
        const CK_OBJECT_HANDLE key = findKey(bare, CKO_PRIVATE_KEY, id);
        require(bare.call->C_SignInit(bare.session, &mechanism, key) == CKR_OK &&
                    bare.call->C_Sign(bare.session,
                                      reinterpret_cast<CK_BYTE*>(const_cast<char*>(data.data())),
                                      static_cast<CK_ULONG>(data.size()), bytes, &length) == CKR_OK,
                "no signature");
    }

    void verify(const BareModule& bare, const std::string& id, const std::string& data) {
        CK_MECHANISM mechanism = {CKM_SHA1_RSA_PKCS, nullptr, 0};
        const CK_OBJECT_HANDLE key = findKey(bare, CKO_PUBLIC_KEY, id);
        require(bare.call->C_VerifyInit(bare.session, &mechanism, key) == CKR_OK &&
                    bare.call->C_Verify(
                        bare.session, reinterpret_cast<CK_BYTE*>(const_cast<char*>(data.data())),
                        static_cast<CK_ULONG>(data.size()), bytes, length) == CKR_OK,
                "not verified");
    }
};

void measureSigning(Comparison& comparison, const std::string& module,
                    const zrkey::Variant& container) {
    const OpenToken open(module);
    const BareModule bare(module);
    const auto certificate = open.certificate(container);
    const std::string id = utf8Of(certificate);
    const std::string bytes(32, 'x');
    const zrkey::ByteArray data(bytes);
    zrkey::Text algorithm("SHA1WithRSA");
    comparison.measure(
        [&] {
            zrkey::ByteArray signature;
            require(SUCCEEDED(open.token->SignData(algorithm.get(), data, certificate.get(),
                                                   signature.receive())),
                    "no signature");
        },
        [&] {
            BareSignature signature;
            signature.make(bare, id, bytes);
            keep(&signature);
        });
}

void measureVerifying(Comparison& comparison, const std::string& module,
                      const zrkey::Variant& container) {
    const OpenToken open(module);
    const BareModule bare(module);
    const auto certificate = open.certificate(container);
    const std::string id = utf8Of(certificate);
    const std::string bytes(32, 'x');
    const zrkey::ByteArray data(bytes);
    zrkey::Text algorithm("SHA1WithRSA");
    BareSignature made;
    made.make(bare, id, bytes);
    const zrkey::ByteArray signature(
        std::string_view(reinterpret_cast<char*>(made.bytes), made.length));
    comparison.measure(
        [&] {
            require(SUCCEEDED(open.token->VerifyData(data, certificate.get(), algorithm.get(),
                                                     signature)),
                    "not verified");
        },
        [&] { made.verify(bare, id, bytes); });
}

/// The container of scripts/softtoken. The other certificates of the token have no keys.
zrkey::Variant theOneWithKeys() {
    return zrkey::Variant::fromText(zrkey::Text("container1"));
}

}  // namespace

void signingRows(Bench& bench) {
    bench.row({"token/sign", kSameCalls}, [](Comparison& comparison) {
        measureSigning(comparison, realModule(), theOneWithKeys());
    });
    bench.row({"token/verify", kSameCalls}, [](Comparison& comparison) {
        measureVerifying(comparison, realModule(), theOneWithKeys());
    });
    bench.row({"instant/sign", kSameCalls, Measure::kAddedTime}, [](Comparison& comparison) {
        measureSigning(comparison, instantModule(1), zrkey::Variant::fromNumber(0));
    });
    bench.row({"instant/verify", kSameCalls, Measure::kAddedTime}, [](Comparison& comparison) {
        measureVerifying(comparison, instantModule(1), zrkey::Variant::fromNumber(0));
    });
}

}  // namespace zr::bench
