// The certificates of a token: their names, and the one that is meant.
#include "certificates.h"

#include <algorithm>

#include "failure.h"
#include "variant.h"

namespace zr::host {
namespace {

std::string listNames(const std::vector<std::string>& names) {
    std::string text;
    for (std::size_t i = 0; i < names.size(); ++i) {
        text += (i > 0 ? ", " : "") + std::to_string(i) + " " + inQuotes(names[i]);
    }
    return text;
}

Failure notChosen(const std::string& asked, const std::vector<std::string>& names) {
    if (names.empty()) {
        return failed(kExitNotFound, asked, "the token shows none",
                      "private ones are shown after a login: give --pin");
    }
    return failed(kExitNotFound, asked, "there are: " + listNames(names),
                  "choose one by --cert or --cert-index");
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

}  // namespace

std::vector<std::string> listCertificates(IKeyObject& token) {
    Variant names;
    const HRESULT result = token.EnumContainer(0, names.receive());
    if (FAILED(result)) {
        throw refused(kExitFailure, "list the certificates", result,
                      "look whether the token is still connected");
    }
    return names.texts();
}

ChosenCertificate openCertificate(IKeyObject& token, const CertificateChoice& choice) {
    const std::vector<std::string> names = listCertificates(token);
    const std::size_t index = findCertificate(names, choice);
    const std::string asked = "open the certificate " + inQuotes(names[index]);
    if (std::count(names.begin(), names.end(), names[index]) > 1) {
        throw failed(kExitNotFound, asked, "several have this name",
                     "give each certificate and its keys an ID of their own");
    }
    ChosenCertificate chosen = {names[index], {}};
    Variant which;
    which.get().vt = VT_I4;
    which.get().lVal = static_cast<LONG>(index);
    ComRef<IKeyContainer> container;
    HRESULT result = token.OpenContainer(which, container.receive());
    if (SUCCEEDED(result)) {
        result = container->GetKeyCert(true, chosen.certificate.receive());
    }
    if (FAILED(result)) {
        throw refused(kExitNotFound, asked, result,
                      "its ID may be longer than 127 bytes; see what cert list shows");
    }
    return chosen;
}

}  // namespace zr::host
