// What certificates that openssl made say, and what is no certificate.
#include "host/crypto/certificate_facts.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/host/crypto/samples.h"

namespace zr::host {
namespace {

using test::sample;

CertificateFacts factsOf(const char* base64) {
    return readFacts(sample(base64)).value();
}

TEST(CertificateFactsTest, RsaCertificateIsDescribed) {
    const CertificateFacts facts = factsOf(test::kRsaCertificate);
    EXPECT_EQ("C=DE, O=Example Ltd, CN=Erika Mustermann", facts.subject);
    EXPECT_EQ("C=DE, O=Example Ltd, CN=Erika Mustermann", facts.issuer);
    EXPECT_EQ("Erika Mustermann", facts.commonName);
    EXPECT_EQ("01ab", facts.serialNumber);
    EXPECT_EQ("2025-01-01T00:00:00Z", facts.notBefore);
    EXPECT_EQ("2099-12-31T23:59:59Z", facts.notAfter);
    EXPECT_FALSE(facts.isExpired);
    EXPECT_EQ("RSA", facts.keyType);
    EXPECT_EQ(2048U, facts.keyBits);
}

TEST(CertificateFactsTest, KeysOnCurvesAreDescribed) {
    const CertificateFacts p256 = factsOf(test::kP256Certificate);
    EXPECT_EQ("EC", p256.keyType);
    EXPECT_EQ(256U, p256.keyBits);
    EXPECT_EQ("2025-02-03T04:05:06Z", p256.notBefore);
    const CertificateFacts p384 = factsOf(test::kP384Certificate);
    EXPECT_EQ("EC", p384.keyType);
    EXPECT_EQ(384U, p384.keyBits);
}

TEST(CertificateFactsTest, OtherKeysAreNamedWithoutASize) {
    const CertificateFacts facts = factsOf(test::kEd25519Certificate);
    EXPECT_EQ("Ed25519", facts.keyType);
    EXPECT_EQ(0U, facts.keyBits);
}

TEST(CertificateFactsTest, SerialNumberWithTheHighestBitHasNoSign) {
    EXPECT_EQ("e1f2a3b4c5d6e7f8091a2b3c4d5e6f70", factsOf(test::kP256Certificate).serialNumber);
}

TEST(CertificateFactsTest, CertificateAfterItsTimeIsExpired) {
    const CertificateFacts facts = factsOf(test::kExpiredCertificate);
    EXPECT_EQ("2021-01-01T00:00:00Z", facts.notAfter);
    EXPECT_TRUE(facts.isExpired);
}

TEST(CertificateFactsTest, OddNamesAreEscaped) {
    const CertificateFacts facts = factsOf(test::kOddCertificate);
    EXPECT_EQ(
        "C=DE, O=Example \\\"Tests\\\"\\, GmbH \\+ Co, OU=\\ a\\=b\\<c\\>\\;d\\\\e\\ , "
        "serialNumber=007 + CN=\\#Žofie Müller 北京 😀, CN=two\nlines",
        facts.subject);
    EXPECT_EQ(facts.subject, facts.issuer);
    EXPECT_EQ("two\nlines", facts.commonName);
}

TEST(CertificateFactsTest, NameInUtf16BecomesUtf8) {
    EXPECT_EQ("CN=Bär", factsOf(test::kBmpCertificate).subject);
    EXPECT_EQ("Bär", factsOf(test::kBmpCertificate).commonName);
}

TEST(CertificateFactsTest, TruncatedCertificateIsNone) {
    const std::string whole = sample(test::kP256Certificate);
    for (std::size_t size = 0; size < whole.size(); ++size) {
        // A copy, so that reading past its end is seen.
        const std::string part(whole, 0, size);
        EXPECT_FALSE(readFacts(part)) << size;
        EXPECT_FALSE(certificateText(part)) << size;
    }
}

TEST(CertificateFactsTest, GarbageIsNoCertificate) {
    EXPECT_FALSE(readFacts("no certificate"));
    EXPECT_FALSE(readFacts(std::string(5000, '\x30')));
    EXPECT_FALSE(readFacts(sample(test::kRsaKeyInfo)));
}

TEST(CertificateFactsTest, ChangedBytesDoNoHarm) {
    const std::string whole = sample(test::kOddCertificate);
    for (std::size_t i = 0; i < whole.size(); ++i) {
        for (const char change : {'\x01', '\x20', '\x80', '\xFF'}) {
            std::string changed = whole;
            changed[i] = static_cast<char>(changed[i] ^ change);
            // A certificate or none: what matters is that it returns.
            certificateText(changed);
        }
    }
}

TEST(CertificateTextTest, EveryFactIsALine) {
    EXPECT_EQ(
        "subject:\tC=DE, O=Example Ltd, CN=Erika Mustermann\n"
        "issuer:\tC=DE, O=Example Ltd, CN=Erika Mustermann\n"
        "serial number:\t01ab\n"
        "valid from:\t2025-01-01T00:00:00Z\n"
        "valid until:\t2099-12-31T23:59:59Z\n"
        "key:\tRSA, 2048 bits\n"
        "key usage:\tdigital signature, non-repudiation\n"
        "SHA-1 fingerprint:\tcfb0d06b14ddc9d1e4d6109650708e0b7c402cc1\n"
        "SHA-256 fingerprint:\t"
        "ec0f19c068c8d0fcc59d671186629c1631227247f917d389979fa0fc173b4791\n",
        certificateText(sample(test::kRsaCertificate)));
}

TEST(CertificateTextTest, BytesAfterTheCertificateAreIgnored) {
    const std::string padded = sample(test::kP256Certificate) + std::string(100, '\0');
    EXPECT_EQ(certificateText(sample(test::kP256Certificate)), certificateText(padded));
}

TEST(CertificateTextTest, KeyUsageExpiryAndKeysWithoutSizeAreSaid) {
    const auto contains = [](const char* certificate, const std::string& line) {
        const std::string text = certificateText(sample(certificate)).value();
        return text.find(line) != std::string::npos;
    };
    EXPECT_TRUE(contains(test::kP256Certificate, "\nkey usage:\tkey agreement, decipher only\n"));
    EXPECT_TRUE(contains(test::kP384Certificate, "\nkey usage:\tnot restricted\n"));
    EXPECT_TRUE(
        contains(test::kExpiredCertificate, "\nvalid until:\t2021-01-01T00:00:00Z (expired)\n"));
    EXPECT_TRUE(contains(test::kEd25519Certificate, "\nkey:\tEd25519\n"));
    EXPECT_TRUE(contains(test::kOddCertificate, "CN=two?lines\n"));
}

}  // namespace
}  // namespace zr::host
