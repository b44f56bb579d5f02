// The certificates of a token: their names, and the choice of one.
#include "host/token/certificates.h"

#include <algorithm>

#include "host/output/failure.h"
#include "host/output/printable.h"
#include "host/system/interruption.h"

namespace zr::host {
namespace {

/// The longest ID in bytes with which the library opens a certificate.
constexpr std::size_t kLongestId = 127;

std::string listNames(const std::vector<std::string>& names) {
    std::string text;
    for (std::size_t i = 0; i < names.size(); ++i) {
        text += (i > 0 ? ", " : "") + std::to_string(i) + " " + inQuotes(names[i]);
    }
    return text;
}

Failure notChosen(const std::string& asked, const std::vector<std::string>& names) {
    if (names.empty()) {
        return commandFailure(kExitNotFound, asked, "the token shows no certificate",
                              "private certificates are visible only after a login: give --pin");
    }
    return commandFailure(kExitNotFound, asked, "the certificates are: " + listNames(names),
                          "choose one with --cert or --cert-index");
}

std::size_t findCertificate(const std::vector<std::string>& names,
                            const CertificateChoice& choice) {
    if (choice.index) {
        const auto index = static_cast<std::size_t>(*choice.index);
        if (index >= names.size()) {
            throw notChosen("find the certificate with index " + std::to_string(index), names);
        }
        return index;
    }
    if (choice.name) {
        const auto found = std::find(names.begin(), names.end(), *choice.name);
        if (found == names.end()) {
            throw notChosen("find the certificate " + inQuotes(*choice.name), names);
        }
        return static_cast<std::size_t>(found - names.begin());
    }
    if (names.size() != 1) {
        throw notChosen("choose a certificate", names);
    }
    return 0;
}

/// Names and positions come from different walks over the token. Throws a Failure when another
/// certificate has taken the position since.
void checkName(IKeyCertificate& certificate, const std::string& name, const std::string& asked) {
    zrkey::Text id;
    const HRESULT result = certificate.GetCertID(id.receive());
    if (FAILED(result)) {
        throw libraryFailure(kExitFailure, asked, result, "the system may be out of memory");
    }
    if (id.utf8() != name) {
        throw commandFailure(kExitNotFound, asked,
                             "the certificates on the token changed meanwhile", "try again");
    }
}

}  // namespace

std::vector<std::string> listCertificates(IKeyObject& token) {
    zrkey::Variant names;
    const HRESULT result = token.EnumContainer(0, names.receive());
    if (FAILED(result)) {
        throw libraryFailure(kExitFailure, "list the certificates", result,
                             "check that the token is still connected");
    }
    return names.toTexts().value_or(std::vector<std::string>());
}

ChosenCertificate openCertificate(IKeyObject& token, const CertificateChoice& choice) {
    const std::vector<std::string> names = listCertificates(token);
    stopIfInterrupted();
    const std::size_t index = findCertificate(names, choice);
    const std::string asked = "open the certificate " + inQuotes(names[index]);
    if (std::count(names.begin(), names.end(), names[index]) > 1) {
        throw commandFailure(kExitNotFound, asked, "several certificates have this name",
                             "give each certificate and its keys an ID of their own");
    }
    ChosenCertificate chosen = {names[index], {}};
    const auto which = zrkey::Variant::fromNumber(static_cast<LONG>(index));
    zrkey::ComRef<IKeyContainer> container;
    HRESULT result = token.OpenContainer(which, container.receive());
    if (SUCCEEDED(result)) {
        result = container->GetKeyCert(true, chosen.certificate.receive());
    }
    if (FAILED(result)) {
        throw libraryFailure(kExitNotFound, asked, result,
                             names[index].size() > kLongestId
                                 ? "its ID may be longer than 127 bytes"
                                 : "the certificates on the token may have changed; try again");
    }
    checkName(*chosen.certificate.get(), chosen.name, asked);
    stopIfInterrupted();
    return chosen;
}

}  // namespace zr::host
