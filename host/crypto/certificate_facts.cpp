// What a certificate says, for people: the form that both targets share.
#include "host/crypto/certificate_facts.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <utility>

#include "host/crypto/certificate_parts.h"
#include "host/crypto/hash.h"
#include "host/crypto/public_key.h"
#include "host/output/encoding.h"
#include "host/output/printable.h"

namespace zr::host {
namespace {

constexpr std::string_view kCommonName = "2.5.4.3";

constexpr std::pair<std::string_view, std::string_view> kAttributes[] = {
    {kCommonName, "CN"},
    {"2.5.4.4", "SN"},
    {"2.5.4.5", "serialNumber"},
    {"2.5.4.6", "C"},
    {"2.5.4.7", "L"},
    {"2.5.4.8", "ST"},
    {"2.5.4.9", "STREET"},
    {"2.5.4.10", "O"},
    {"2.5.4.11", "OU"},
    {"2.5.4.12", "title"},
    {"2.5.4.42", "GN"},
    {"2.5.4.97", "organizationIdentifier"},
    {"0.9.2342.19200300.100.1.1", "UID"},
    {"0.9.2342.19200300.100.1.25", "DC"},
    {"1.2.840.113549.1.9.1", "emailAddress"}};

constexpr std::pair<unsigned, std::string_view> kUsages[] = {
    {0x0080, "digital signature"}, {0x0040, "non-repudiation"}, {0x0020, "key encipherment"},
    {0x0010, "data encipherment"}, {0x0008, "key agreement"},   {0x0004, "certificate signing"},
    {0x0002, "CRL signing"},       {0x0001, "encipher only"},   {0x8000, "decipher only"}};

std::string attributeName(const std::string& type) {
    const auto* row =
        std::ranges::find(kAttributes, type, [](const auto& known) { return known.first; });
    return row == std::end(kAttributes) ? type : std::string(row->second);
}

/// A value as RFC 4514 writes it, so that it cannot pass for another attribute.
std::string escaped(const std::string& value) {
    std::string text;
    for (std::size_t i = 0; i < value.size(); ++i) {
        const bool isAtEdge = i == 0 || i + 1 == value.size();
        if (std::string_view(",+\"\\<>;=").find(value[i]) != std::string_view::npos ||
            (isAtEdge && value[i] == ' ') || (i == 0 && value[i] == '#')) {
            text += '\\';
        }
        text += value[i];
    }
    return text;
}

std::string nameText(const NameParts& parts) {
    std::string text;
    for (const NamePart& part : parts) {
        if (!text.empty()) {
            text += part.isJoined ? " + " : ", ";
        }
        text += attributeName(part.type) + '=' + (part.isText ? escaped(part.value) : part.value);
    }
    return text;
}

std::string commonNameOf(const NameParts& parts) {
    std::string name;
    for (const NamePart& part : parts) {
        if (part.type == kCommonName) {
            name = part.value;
        }
    }
    return name;
}

std::string serialText(std::string_view bytes) {
    while (bytes.size() > 1 && bytes.front() == '\0') {
        bytes.remove_prefix(1);
    }
    return toHex(bytes);
}

std::string now() {
    using namespace std::chrono;
    const auto time = floor<seconds>(system_clock::now());
    const auto day = floor<days>(time);
    const year_month_day date(day);
    const hh_mm_ss clock(time - day);
    return timeText(int(date.year()), static_cast<int>(unsigned(date.month())),
                    static_cast<int>(unsigned(date.day())), static_cast<int>(clock.hours().count()),
                    static_cast<int>(clock.minutes().count()),
                    static_cast<int>(clock.seconds().count()));
}

CertificateFacts factsOf(const CertificateParts& parts) {
    CertificateFacts facts;
    facts.subject = nameText(parts.subject);
    facts.issuer = nameText(parts.issuer);
    facts.commonName = commonNameOf(parts.subject);
    facts.serialNumber = serialText(parts.serialNumber);
    facts.notBefore = parts.notBefore;
    facts.notAfter = parts.notAfter;
    // Texts of this form are in the order of the times.
    facts.isExpired = parts.notAfter < now();
    facts.keyType = keyTypeOf(parts.keyAlgorithm);
    const std::optional<PublicKey> key = PublicKey::ofCertificate(parts.der);
    facts.keyBits = key ? key->bits() : 0;
    return facts;
}

std::string usageText(const std::optional<unsigned>& usage) {
    if (!usage) {
        return "not restricted";
    }
    std::string text;
    for (const auto& [bit, name] : kUsages) {
        if ((*usage & bit) != 0) {
            text.append(text.empty() ? "" : ", ").append(name);
        }
    }
    return text.empty() ? "none" : text;
}

std::string keyText(const CertificateFacts& facts) {
    return facts.keyBits == 0 ? facts.keyType
                              : facts.keyType + ", " + std::to_string(facts.keyBits) + " bits";
}

}  // namespace

std::string timeText(int year, int month, int day, int hour, int minute, int second) {
    char text[80];
    std::snprintf(text, sizeof text, "%04d-%02d-%02dT%02d:%02d:%02dZ", year, month, day, hour,
                  minute, second);
    return text;
}

std::optional<CertificateFacts> readFacts(std::string_view der) {
    const std::optional<CertificateParts> parts = readParts(der);
    return parts ? std::optional<CertificateFacts>(factsOf(*parts)) : std::nullopt;
}

std::optional<std::string> certificateText(std::string_view der) {
    const std::optional<CertificateParts> parts = readParts(der);
    if (!parts) {
        return std::nullopt;
    }
    const CertificateFacts facts = factsOf(*parts);
    const std::pair<const char*, std::string> lines[] = {
        {"subject", facts.subject},
        {"issuer", facts.issuer},
        {"serial number", facts.serialNumber},
        {"valid from", facts.notBefore},
        {"valid until", facts.notAfter + (facts.isExpired ? " (expired)" : "")},
        {"key", keyText(facts)},
        {"key usage", usageText(parts->keyUsage)},
        {"SHA-1 fingerprint", toHex(hashOf(HashKind::kSha1, parts->der))},
        {"SHA-256 fingerprint", toHex(hashOf(HashKind::kSha256, parts->der))}};
    std::string text;
    for (const auto& [name, value] : lines) {
        text.append(name).append(":\t").append(printable(value)).append("\n");
    }
    return text;
}

}  // namespace zr::host
