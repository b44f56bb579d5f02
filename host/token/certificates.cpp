// The certificates of a token, in the order of the object model's containers.
#include "host/token/certificates.h"

#include <utf8cpp/utf8.h>

#include <algorithm>
#include <map>

#include "host/output/encoding.h"
#include "host/output/failure.h"
#include "host/output/printable.h"
#include "host/system/interruption.h"
#include "host/token/named_certificate.h"
#include "host/token/pkcs11_header.h"

namespace zr::host {
namespace {

/// The longest name in bytes with which the library opens a certificate.
constexpr std::size_t kLongestName = 127;

Failure changedMeanwhile(const std::string& asked) {
    return commandFailure(kExitNotFound, asked, "the certificates on the token changed meanwhile",
                          "try again");
}

/// The certificates on the token, in the order of the module, which is that of the containers.
std::vector<CK_OBJECT_HANDLE> findObjects(DirectSession& direct) {
    std::vector<CK_OBJECT_HANDLE> objects;
    direct.require(direct->find(
        {numberAttribute(CKA_CLASS, CKO_CERTIFICATE), truthAttribute(CKA_TOKEN, true)}, objects));
    return objects;
}

/// Throws a Failure when an object that was found could not be read.
void requireRead(const DirectSession& direct, CK_RV result) {
    if (result == CKR_OBJECT_HANDLE_INVALID) {
        throw changedMeanwhile(direct.asked());
    }
    direct.require(result);
}

/// The names of the containers, by the library.
std::vector<std::string> listNames(IKeyObject& token, const std::string& asked) {
    zrkey::Variant names;
    const HRESULT result = token.EnumContainer(0, names.receive());
    if (FAILED(result)) {
        throw libraryFailure(kExitFailure, asked, result,
                             "check that the token is still connected");
    }
    return names.toTexts().value_or(std::vector<std::string>());
}

/// The ID as text: the bytes of the name before the library converts them.
std::string idAsText(const std::string& id) {
    return id.substr(0, id.find('\0'));
}

/// Whether the library shows an ID under this name. It changes bytes that are not valid UTF-8.
bool isNameOf(const std::string& name, const std::string& id) {
    const std::string text = idAsText(id);
    return text == name || !utf8::is_valid(text);
}

void markSharedNames(std::vector<TokenCertificate>& rows) {
    std::map<std::string, int> counts;
    for (const TokenCertificate& row : rows) {
        ++counts[idAsText(row.id)];
    }
    for (TokenCertificate& row : rows) {
        const std::string text = idAsText(row.id);
        row.isNameUnique = text.size() <= kLongestName && counts[text] == 1;
    }
}

/// What a person recognises a certificate by.
std::string describe(const TokenCertificate& row) {
    std::string text = std::to_string(row.index) + ' ' + inQuotes(row.name) + ' ';
    text.append(idText(row));
    if (row.facts && !row.facts->subject.empty()) {
        text.append(" (").append(printable(row.facts->subject)).append(")");
    }
    return text;
}

std::string describe(const std::vector<TokenCertificate>& rows) {
    std::string text;
    for (const TokenCertificate& row : rows) {
        text.append(text.empty() ? "" : ", ").append(describe(row));
    }
    return text;
}

std::string describe(const CertificateChoice& choice) {
    if (choice.index) {
        return "find the certificate with index " + std::to_string(*choice.index);
    }
    if (choice.id) {
        return "find the certificate with the ID " + toHex(*choice.id);
    }
    return choice.name ? "find the certificate " + inQuotes(*choice.name) : "choose a certificate";
}

template <class Matches>
std::vector<TokenCertificate> select(const std::vector<TokenCertificate>& rows, Matches matches) {
    std::vector<TokenCertificate> chosen;
    std::copy_if(rows.begin(), rows.end(), std::back_inserter(chosen), matches);
    return chosen;
}

std::vector<TokenCertificate> select(const std::vector<TokenCertificate>& rows,
                                     const CertificateChoice& choice) {
    if (choice.index) {
        return select(rows, [&](const TokenCertificate& row) {
            return row.index == static_cast<std::size_t>(*choice.index);
        });
    }
    if (choice.id) {
        return select(rows, [&](const TokenCertificate& row) { return row.id == *choice.id; });
    }
    if (!choice.name) {
        return rows;
    }
    const std::string& name = *choice.name;
    std::vector<TokenCertificate> chosen =
        select(rows, [&](const TokenCertificate& row) { return row.name == name; });
    if (chosen.empty()) {
        chosen = select(rows, [&](const TokenCertificate& row) {
            return row.facts && row.facts->commonName == name && !name.empty();
        });
    }
    return chosen;
}

/// The one certificate that matches, by a walk over the IDs alone; nullopt when they do not decide.
std::optional<TokenCertificate> findByIds(DirectSession& direct, const CertificateChoice& choice) {
    const std::vector<CK_OBJECT_HANDLE> objects = findObjects(direct);
    std::vector<TokenCertificate> rows;
    AttributeValues values;
    for (const CK_OBJECT_HANDLE object : objects) {
        stopIfInterrupted();
        requireRead(direct, direct->readShort(object, {CKA_CERTIFICATE_TYPE, CKA_ID}, values));
        if (!values[0] || !values[1]) {
            // The library's walk ends at such a certificate.
            break;
        }
        TokenCertificate row;
        row.index = rows.size();
        row.id = *values[1];
        row.name = idAsText(row.id);
        if (!utf8::is_valid(row.name)) {
            // The library shows it under another name.
            return std::nullopt;
        }
        rows.push_back(std::move(row));
    }
    markSharedNames(rows);
    std::vector<TokenCertificate> chosen = select(rows, choice);
    if (chosen.size() != 1) {
        return std::nullopt;
    }
    TokenCertificate& row = chosen.front();
    requireRead(direct, direct->read(objects[row.index], {CKA_LABEL, CKA_VALUE}, values));
    row.label = values[0].value_or("");
    row.der = values[1].value_or("");
    row.facts = readFacts(row.der);
    return std::move(row);
}

}  // namespace

std::string idText(const TokenCertificate& certificate) {
    return "id:" + toHex(certificate.id);
}

CertificateTable readCertificates(IKeyObject& token, DirectSession& direct) {
    const std::vector<std::string> names = listNames(token, direct.asked());
    const std::vector<CK_OBJECT_HANDLE> objects = findObjects(direct);
    CertificateTable table;
    for (const CK_OBJECT_HANDLE object : objects) {
        stopIfInterrupted();
        AttributeValues values;
        requireRead(
            direct,
            direct->read(object, {CKA_CERTIFICATE_TYPE, CKA_ID, CKA_LABEL, CKA_VALUE}, values));
        if (!values[0] || !values[1]) {
            // The library's walk ends at such a certificate.
            table.hidden = objects.size() - table.rows.size();
            break;
        }
        TokenCertificate row;
        row.index = table.rows.size();
        row.id = *values[1];
        row.label = values[2].value_or("");
        row.der = values[3].value_or("");
        row.facts = readFacts(row.der);
        if (row.index >= names.size() || !isNameOf(names[row.index], row.id)) {
            throw changedMeanwhile(direct.asked());
        }
        row.name = names[row.index];
        table.rows.push_back(std::move(row));
    }
    if (table.rows.size() != names.size()) {
        throw changedMeanwhile(direct.asked());
    }
    markSharedNames(table.rows);
    return table;
}

TokenCertificate chooseCertificate(const CertificateTable& table, const CertificateChoice& choice) {
    std::vector<TokenCertificate> chosen = select(table.rows, choice);
    if (chosen.size() == 1) {
        return chosen.front();
    }
    const std::string asked = describe(choice);
    if (table.rows.empty()) {
        throw commandFailure(kExitNotFound, asked, "the token shows no certificate",
                             "private certificates are visible only after a login: give --pin");
    }
    const std::string advice = "choose one with --cert NAME, --cert id:HEX or --cert index:N";
    if (chosen.empty()) {
        throw commandFailure(kExitNotFound, asked, "the certificates are: " + describe(table.rows),
                             advice);
    }
    throw commandFailure(kExitNotFound, asked, "several certificates match: " + describe(chosen),
                         advice);
}

TokenCertificate findCertificate(IKeyObject& token, DirectSession& direct,
                                 const CertificateChoice& choice) {
    std::optional<TokenCertificate> found = findByIds(direct, choice);
    return found ? std::move(*found) : chooseCertificate(readCertificates(token, direct), choice);
}

zrkey::ComRef<IKeyCertificate> openCertificate(IKeyObject& token,
                                               const TokenCertificate& certificate) {
    stopIfInterrupted();
    zrkey::ComRef<IKeyCertificate> opened;
    if (utf8::is_valid(idAsText(certificate.id))) {
        // The library finds the keys by the name alone, so nothing is to be opened.
        opened.reset(new NamedCertificate(certificate.name));
        return opened;
    }
    const std::string asked = "open the certificate " + inQuotes(certificate.name);
    const auto which = zrkey::Variant::fromNumber(static_cast<LONG>(certificate.index));
    zrkey::ComRef<IKeyContainer> container;
    zrkey::Text id;
    HRESULT result = token.OpenContainer(which, container.receive());
    if (SUCCEEDED(result)) {
        result = container->GetKeyCert(true, opened.receive());
    }
    if (SUCCEEDED(result)) {
        result = opened->GetCertID(id.receive());
    }
    if (FAILED(result)) {
        throw libraryFailure(kExitNotFound, asked, result,
                             "the certificates on the token may have changed; try again");
    }
    if (id.utf8() != certificate.name) {
        throw changedMeanwhile(asked);
    }
    stopIfInterrupted();
    return opened;
}

}  // namespace zr::host
