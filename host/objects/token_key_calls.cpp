// The class Token of the object model: containers, certificates, signatures, digests.
#include "host/objects/certificate_object.h"
#include "host/objects/collection_object.h"
#include "host/objects/container_object.h"
#include "host/objects/token_object.h"
#include "host/token/certificates.h"
#include "host/token/signing.h"

namespace zr::host {
namespace {

/// The name of a container, or its index.
zrkey::Variant whichContainer(const Arguments& arguments) {
    if (std::holds_alternative<double>(arguments.value(0))) {
        return zrkey::Variant::fromNumber(arguments.integer(0));
    }
    const CallText name(arguments.text(0));
    return zrkey::Variant::fromText(zrkey::Text(name.get()));
}

zrkey::ComRef<IKeyContainer> open(IKeyObject& token, const VARIANT& which,
                                  const Arguments& arguments) {
    zrkey::ComRef<IKeyContainer> container;
    arguments.require(token.OpenContainer(which, container.receive()));
    return container;
}

std::vector<std::string> listNames(IKeyObject& token, const Arguments& arguments) {
    zrkey::Variant names;
    arguments.require(token.EnumContainer(0, names.receive()));
    // Without containers EnumContainer leaves its result empty.
    return names.toTexts().value_or(std::vector<std::string>());
}

SignatureAlgorithm algorithmIn(const Arguments& arguments, std::size_t index) {
    if (!arguments.has(index)) {
        return SignatureAlgorithm::kRsaSha256;
    }
    std::string name = toUtf8(arguments.text(index));
    for (char& letter : name) {
        letter = letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter + ('a' - 'A')) : letter;
    }
    const auto algorithm = algorithmNamed(name);
    if (!algorithm) {
        throw arguments.wrong(index, "is not one of " + algorithmNames());
    }
    return *algorithm;
}

/// The certificate of an argument among those of the token. A certificate of another token may have
/// the same name.
TokenCertificate certificateIn(IKeyObject& token, DirectSession& session,
                               const Arguments& arguments, std::size_t index) {
    const auto& certificate = arguments.object<CertificateObject>(index);
    zrkey::Text id;
    arguments.require(certificate.use(arguments)->GetCertID(id.receive()));
    const std::string name = id.utf8();
    const std::string der = certificate.der(arguments);
    for (TokenCertificate& row : readCertificates(token, session).rows) {
        if (row.name == name && row.der == der) {
            return std::move(row);
        }
    }
    throw arguments.wrong(index, "is not on this token");
}

/// Throws a CallError when a signature of the library failed.
void requireLogin(const Arguments& arguments, HRESULT result) {
    if (result == RPC_E_CANTCALLOUT_INEXTERNALCALL) {
        throw arguments.refused(result, "log in first");
    }
    arguments.require(result);
}

}  // namespace

Value enumContainer(TokenObject& token, const Arguments& arguments) {
    WideTexts texts;
    for (const std::string& name : listNames(*token.use(arguments).get(), arguments)) {
        texts.push_back(toWideText(name));
    }
    return texts;
}

Value getContainerCount(TokenObject& token, const Arguments& arguments) {
    zrkey::Variant count;
    arguments.require(token.use(arguments)->GetContainerCount(count.receive()));
    return static_cast<double>(count.toNumber().value_or(0));
}

Value openContainer(TokenObject& token, const Arguments& arguments) {
    return std::make_shared<ContainerObject>(
        open(*token.use(arguments).get(), whichContainer(arguments), arguments));
}

Value certificates(TokenObject& token, const Arguments& arguments) {
    const auto library = token.use(arguments);
    const std::size_t count = listNames(*library.get(), arguments).size();
    std::vector<ObjectRef> found;
    for (std::size_t i = 0; i < count; ++i) {
        // By index: two containers may have one name.
        const auto which = zrkey::Variant::fromNumber(static_cast<LONG>(i));
        zrkey::ComRef<IKeyCertificate> certificate;
        arguments.require(
            open(*library.get(), which, arguments)->GetKeyCert(true, certificate.receive()));
        found.push_back(std::make_shared<CertificateObject>(std::move(certificate)));
    }
    return std::make_shared<CollectionObject>(std::move(found));
}

Value createContainer(TokenObject& token, const Arguments& arguments) {
    const CallText name(arguments.text(0));
    zrkey::ComRef<IKeyContainer> container;
    arguments.require(token.use(arguments)->CreateContainer(name.get(), container.receive()));
    return std::make_shared<ContainerObject>(std::move(container));
}

Value deleteContainer(TokenObject& token, const Arguments& arguments) {
    arguments.require(token.use(arguments)->DeleteContainer(whichContainer(arguments)));
    return true;
}

Value getCertData(TokenObject& token, const Arguments& arguments) {
    zrkey::ByteArray data;
    const auto certificate = arguments.object<CertificateObject>(0).use(arguments);
    arguments.require(token.use(arguments)->GetCertData(certificate.get(), data.receive()));
    return bytesOf(data);
}

Value getPubKeyData(TokenObject& token, const Arguments& arguments) {
    zrkey::ByteArray data;
    const auto certificate = arguments.object<CertificateObject>(0).use(arguments);
    arguments.require(token.use(arguments)->GetPubKeyData(certificate.get(), data.receive()));
    return bytesOf(data);
}

Value digestData(TokenObject& token, const Arguments& arguments) {
    const CallText method(arguments.text(0));
    zrkey::ByteArray digest;
    arguments.require(
        token.use(arguments)->DigestData(method.get(), arguments.byteArray(1), digest.receive()));
    return bytesOf(digest);
}

Value signData(TokenObject& token, const Arguments& arguments) {
    const auto certificate = arguments.object<CertificateObject>(1).use(arguments);
    zrkey::ByteArray signature;
    // The library does not look at the algorithm.
    requireLogin(arguments, token.use(arguments)->SignData(nullptr, arguments.byteArray(0),
                                                           certificate.get(), signature.receive()));
    return bytesOf(signature);
}

Value verifyData(TokenObject& token, const Arguments& arguments) {
    const auto certificate = arguments.object<CertificateObject>(1).use(arguments);
    requireLogin(arguments,
                 token.use(arguments)->VerifyData(arguments.byteArray(0), certificate.get(),
                                                  nullptr, arguments.byteArray(2)));
    return true;
}

Value signWithAlgorithm(TokenObject& token, const Arguments& arguments) {
    const SignatureAlgorithm algorithm = algorithmIn(arguments, 2);
    const auto session = token.openSession(arguments, CryptokiSession::Access::kReadOnly);
    const TokenCertificate certificate =
        certificateIn(*token.use(arguments).get(), *session, arguments, 1);
    requireKeyType(certificate, algorithm, session->asked());
    return toBytes(signWhole(*session, certificate, algorithm, arguments.bytes(0)));
}

Value verifyWithAlgorithm(TokenObject&, const Arguments& arguments) {
    const SignatureAlgorithm algorithm = algorithmIn(arguments, 3);
    TokenCertificate certificate;
    certificate.der = arguments.object<CertificateObject>(1).der(arguments);
    const std::optional<bool> accepted = isAccepted(
        certificate, algorithm, hashOf(hashOf(algorithm), arguments.bytes(0)), arguments.bytes(2));
    if (!accepted) {
        throw arguments.refused(E_FAIL, "the certificate has no key that can be read");
    }
    return *accepted;
}

}  // namespace zr::host
