// Keys of certificates verify the signatures that openssl made, and no others.
#include "host/crypto/public_key.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/host/crypto/samples.h"

namespace zr::host {
namespace {

using test::sample;

struct Signed {
    const char* certificate;
    SignatureAlgorithm algorithm;
    const char* signature;
};

constexpr Signed kSigned[] = {
    {test::kRsaCertificate, SignatureAlgorithm::kRsaSha1, test::kRsaSha1},
    {test::kRsaCertificate, SignatureAlgorithm::kRsaSha256, test::kRsaSha256},
    {test::kRsaCertificate, SignatureAlgorithm::kRsaSha384, test::kRsaSha384},
    {test::kRsaCertificate, SignatureAlgorithm::kRsaSha512, test::kRsaSha512},
    {test::kRsaCertificate, SignatureAlgorithm::kRsaPssSha256, test::kRsaPssSha256},
    {test::kP256Certificate, SignatureAlgorithm::kEcdsaSha256, test::kP256Sha256},
    {test::kP256Certificate, SignatureAlgorithm::kEcdsaSha384, test::kP256Sha384},
    {test::kP384Certificate, SignatureAlgorithm::kEcdsaSha256, test::kP384Sha256},
    {test::kP384Certificate, SignatureAlgorithm::kEcdsaSha384, test::kP384Sha384}};

PublicKey keyOf(const char* certificate) {
    return PublicKey::ofCertificate(sample(certificate)).value();
}

bool isVerified(const Signed& sign, const std::string& data, const std::string& signature) {
    return keyOf(sign.certificate)
        .verify(sign.algorithm, hashOf(hashOf(sign.algorithm), data), signature);
}

TEST(PublicKeyTest, SignaturesOfOpensslAreVerified) {
    for (const Signed& sign : kSigned) {
        EXPECT_TRUE(isVerified(sign, "abc", sample(sign.signature)))
            << static_cast<int>(sign.algorithm);
    }
}

TEST(PublicKeyTest, OtherDataIsNotVerified) {
    for (const Signed& sign : kSigned) {
        EXPECT_FALSE(isVerified(sign, "abd", sample(sign.signature)))
            << static_cast<int>(sign.algorithm);
    }
}

TEST(PublicKeyTest, ChangedSignatureIsNotVerified) {
    for (const Signed& sign : kSigned) {
        std::string signature = sample(sign.signature);
        signature.back() = static_cast<char>(signature.back() ^ 1);
        EXPECT_FALSE(isVerified(sign, "abc", signature)) << static_cast<int>(sign.algorithm);
        EXPECT_FALSE(isVerified(sign, "abc", signature.substr(1)));
        EXPECT_FALSE(isVerified(sign, "abc", ""));
    }
}

TEST(PublicKeyTest, OtherAlgorithmsDoNotVerify) {
    for (const Signed& sign : kSigned) {
        for (const Signed& other : kSigned) {
            const Signed mixed = {sign.certificate, other.algorithm, sign.signature};
            EXPECT_EQ(sign.algorithm == other.algorithm,
                      isVerified(mixed, "abc", sample(sign.signature)))
                << static_cast<int>(sign.algorithm) << static_cast<int>(other.algorithm);
        }
    }
}

TEST(PublicKeyTest, KeyInfoGivesTheSameKey) {
    const auto rsa = PublicKey::ofSubjectPublicKeyInfo(sample(test::kRsaKeyInfo));
    ASSERT_TRUE(rsa);
    EXPECT_EQ("RSA", rsa->type());
    EXPECT_EQ(2048U, rsa->bits());
    EXPECT_TRUE(rsa->verify(SignatureAlgorithm::kRsaSha256, hashOf(HashKind::kSha256, "abc"),
                            sample(test::kRsaSha256)));
    const auto curve = PublicKey::ofSubjectPublicKeyInfo(sample(test::kP256KeyInfo));
    ASSERT_TRUE(curve);
    EXPECT_EQ("EC", curve->type());
    EXPECT_EQ(256U, curve->bits());
    EXPECT_TRUE(curve->verify(SignatureAlgorithm::kEcdsaSha256, hashOf(HashKind::kSha256, "abc"),
                              sample(test::kP256Sha256)));
}

TEST(PublicKeyTest, MalformedBytesAreNoKey) {
    EXPECT_FALSE(PublicKey::ofCertificate("no certificate"));
    EXPECT_FALSE(PublicKey::ofCertificate(sample(test::kRsaKeyInfo)));
    EXPECT_FALSE(PublicKey::ofSubjectPublicKeyInfo(""));
    const std::string whole = sample(test::kP256KeyInfo);
    for (std::size_t size = 0; size < whole.size(); ++size) {
        EXPECT_FALSE(PublicKey::ofSubjectPublicKeyInfo(std::string(whole, 0, size))) << size;
    }
}

TEST(PublicKeyTest, AlgorithmsNameTheirHash) {
    EXPECT_EQ(HashKind::kSha1, hashOf(SignatureAlgorithm::kRsaSha1));
    EXPECT_EQ(HashKind::kSha256, hashOf(SignatureAlgorithm::kRsaPssSha256));
    EXPECT_EQ(HashKind::kSha384, hashOf(SignatureAlgorithm::kEcdsaSha384));
    EXPECT_EQ(HashKind::kSha512, hashOf(SignatureAlgorithm::kRsaSha512));
}

TEST(EcdsaSignatureTest, FormsOfASignatureOfOpensslAreConverted) {
    const std::string der = sample(test::kP256Sha256);
    const std::string raw = ecdsaFromDer(der, 32).value();
    EXPECT_EQ(
        "9e2a80d5ba82075b689637ac3810df6217d7875c37646478b99827c49bc5900b"
        "65f0c8e7a45c20dc38cb8063e19aa25fa53d966b6e63c7f6c8c4eeac1a951b43",
        toHex(raw));
    EXPECT_EQ(der, ecdsaToDer(raw));
}

TEST(EcdsaSignatureTest, LongAndShortNumbersAreConverted) {
    for (const std::size_t size : {1U, 20U, 32U, 48U, 66U}) {
        for (const char first : {'\0', '\x01', '\x7F', '\x80', '\xFF'}) {
            std::string raw(2 * size, '\xA5');
            raw[0] = first;
            raw[size] = first;
            const auto der = ecdsaToDer(raw);
            ASSERT_TRUE(der);
            EXPECT_EQ(raw, ecdsaFromDer(*der, size));
        }
    }
}

TEST(EcdsaSignatureTest, ZeroesAreConverted) {
    EXPECT_EQ(std::string("\x30\x06\x02\x01\x00\x02\x01\x00", 8),
              ecdsaToDer(std::string(64, '\0')));
    EXPECT_EQ(std::string(64, '\0'),
              ecdsaFromDer(std::string("\x30\x06\x02\x01\x00\x02\x01\x00", 8), 32));
}

TEST(EcdsaSignatureTest, RawFormOfAnOddLengthIsMalformed) {
    EXPECT_FALSE(ecdsaToDer(""));
    EXPECT_FALSE(ecdsaToDer("123"));
    EXPECT_FALSE(ecdsaToDer(std::string(2000, '1')));
}

TEST(EcdsaSignatureTest, WhatIsNotDerIsMalformed) {
    using namespace std::string_literals;
    EXPECT_TRUE(ecdsaFromDer("\x30\x06\x02\x01\x01\x02\x01\x02"s, 32));
    const std::string malformed[] = {
        ""s,
        "\x30"s,
        "\x30\x06\x02\x01\x01\x02\x01"s,              // cut off
        "\x30\x06\x02\x01\x01\x02\x01\x02z"s,         // a byte after it
        "\x30\x07\x02\x01\x01\x02\x01\x02z"s,         // a byte within it
        "\x31\x06\x02\x01\x01\x02\x01\x02"s,          // no sequence
        "\x30\x06\x03\x01\x01\x02\x01\x02"s,          // no number
        "\x30\x06\x02\x01\x81\x02\x01\x02"s,          // a negative number
        "\x30\x07\x02\x02\x00\x01\x02\x01\x02"s,      // a zero too many
        "\x30\x81\x06\x02\x01\x01\x02\x01\x02"s,      // a length that is too long
        "\x30\x82\x00\x06\x02\x01\x01\x02\x01\x02"s,  // the same
        "\x30\x05\x02\x00\x02\x01\x02"s,              // a number without bytes
        "\x30\x03\x02\x01\x01"s,                      // one number
    };
    for (const std::string& der : malformed) {
        EXPECT_FALSE(ecdsaFromDer(der, 32)) << toHex(der);
    }
}

TEST(EcdsaSignatureTest, NumberLongerThanTheKeyIsMalformed) {
    EXPECT_FALSE(ecdsaFromDer(sample(test::kP384Sha384), 32));
}

}  // namespace
}  // namespace zr::host
