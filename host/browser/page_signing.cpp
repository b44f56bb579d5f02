// Signatures for a page, each of which the user confirms.
#include "host/browser/page_signing.h"

#include <algorithm>
#include <optional>
#include <string>
#include <string_view>

#include "host/browser/page_error.h"
#include "host/browser/plain_text.h"
#include "host/crypto/certificate_facts.h"
#include "host/objects/arguments.h"
#include "host/objects/certificate_object.h"
#include "host/output/encoding.h"
#include "host/token/signing.h"

namespace zr::host {
namespace {

// Of the used parameters of both members.
constexpr std::size_t kData = 0;
constexpr std::size_t kCertificate = 1;
constexpr std::size_t kAlgorithm = 2;

constexpr std::string_view kLibraryMember = "SignData";

/// Throws a PageError when the algorithm is not known.
SignatureAlgorithm algorithmOf(const Member& member, const Arguments& arguments) {
    if (member.name == kLibraryMember) {
        return kLibraryAlgorithm;
    }
    if (!arguments.has(kAlgorithm)) {
        return SignatureAlgorithm::kRsaSha256;
    }
    std::string name = toUtf8(arguments.text(kAlgorithm));
    std::ranges::transform(name, name.begin(), [](char letter) {
        return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter + ('a' - 'A')) : letter;
    });
    const auto algorithm = algorithmNamed(name);
    if (!algorithm) {
        throw PageError::wrongArgument(kAlgorithm,
                                       std::string("is not one of ").append(algorithmNames()));
    }
    return *algorithm;
}

/// The certificate of the request. Throws a PageError.
std::string readCertificate(const PageToken& token, const Arguments& arguments,
                            const PageObjects& objects) {
    auto& certificate = arguments.object<CertificateObject>(kCertificate);
    const std::shared_ptr<PageToken> from = objects.tokenOf(certificate);
    // The library would take the key of the same name on this token.
    const bool isOwn = from && from->row.index == token.row.index &&
                       from->row.label == token.row.label && from->row.serial == token.row.serial;
    if (!isOwn) {
        throw arguments.wrong(kCertificate, "is not on this token");
    }
    return certificate.der(arguments);
}

Confirmation confirmationOf(const PageToken& token, const SitePrompts& prompts,
                            const CertificateFacts& facts, SignatureAlgorithm algorithm,
                            std::string_view data) {
    Confirmation shown;
    shown.origin = prompts.origin().text();
    shown.title = "Sign this data?";
    shown.lines = {
        {"Certificate", facts.subject},
        {"Token", token.row.label},
        {"Serial number", token.row.serial},
        {"Algorithm", nameOf(algorithm)},
        {"Size", std::to_string(data.size()).append(data.size() == 1 ? " byte" : " bytes")},
        {"SHA-256", toHex(hashOf(HashKind::kSha256, data))}};
    shown.text = isShortPlainText(data) ? std::string(data) : std::string();
    shown.yes = "Sign";
    return shown;
}

/// Throws a PageError when a signature is not by the key of the certificate that was shown.
void requireShownKey(const std::string& der, SignatureAlgorithm algorithm, std::string_view data,
                     const Value& signature) {
    TokenCertificate certificate;
    certificate.der = der;
    const std::optional<bool> accepted =
        isAccepted(certificate, algorithm, hashOf(hashOf(algorithm), data),
                   viewOf(std::get<Bytes>(signature).bytes));
    if (!accepted.value_or(false)) {
        throw PageError(page_code::kRefused, "the signature is not by the key in the certificate");
    }
}

}  // namespace

bool isSigning(std::string_view member) {
    return member == kLibraryMember || member == "sign";
}

Value signByPrompt(PageToken& token, const Member& member, const std::vector<Value>& values,
                   const PageObjects& objects, SitePrompts& prompts, const TimedCalls& timed,
                   const Activation& activation, const std::function<void()>& noteConfirmed) {
    const Arguments arguments(member, values);
    const SignatureAlgorithm algorithm = algorithmOf(member, arguments);
    if (!token.isLoggedIn) {
        throw PageError(page_code::kNotLoggedIn, "log in first");
    }
    const std::string der = timed([&] { return readCertificate(token, arguments, objects); });
    const std::optional<CertificateFacts> facts = readFacts(der);
    if (!facts) {
        throw PageError(page_code::kRefused, "the certificate is not readable as X.509");
    }
    {
        const SitePrompts::Turn turn = prompts.begin(activation);
        prompts.confirm(confirmationOf(token, prompts, *facts, algorithm, arguments.bytes(kData)));
    }
    noteConfirmed();
    return timed([&] {
        Value signature = callMember(*token.object, member, values);
        requireShownKey(der, algorithm, arguments.bytes(kData), signature);
        return signature;
    });
}

}  // namespace zr::host
