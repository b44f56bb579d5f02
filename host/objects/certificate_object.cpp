// The class Certificate of the object model.
#include "host/objects/certificate_object.h"

#include "host/crypto/certificate_facts.h"
#include "host/output/encoding.h"

namespace zr::host {
namespace {

Value getCertData(CertificateObject& certificate, const Arguments& arguments) {
    return toBytes(certificate.der(arguments));
}

Value getCertId(CertificateObject& certificate, const Arguments& arguments) {
    return readText(certificate, arguments, &IKeyCertificate::GetCertID);
}

Value pem(CertificateObject& certificate, const Arguments& arguments) {
    return toWideText(encode(certificate.der(arguments), ByteFormat::kPem, "CERTIFICATE"));
}

Value subject(CertificateObject& certificate, const Arguments& arguments) {
    const std::optional<CertificateFacts> facts = readFacts(certificate.der(arguments));
    return facts ? Value(toWideText(facts->subject)) : Value(Null());
}

}  // namespace

std::string CertificateObject::der(const Arguments& arguments) const {
    zrkey::ByteArray data;
    arguments.require(use(arguments)->GetCertData(data.receive()));
    const Value bytes = bytesOf(data);
    return std::string(viewOf(std::get<Bytes>(bytes).bytes));
}

std::span<const Member> certificateMembers() {
    static const Member members[] = {
        libraryCall<getCertData>(
            "GetCertData", {}, Kind::kBytes,
            "Reads the certificate, in DER; the first one when several have its name.")
            .forPages(),
        libraryCall<getCertId>("GetCertID", {}, Kind::kText, "Returns the name of the container.")
            .forPages(),
        composedCall<pem>("pem", {}, Kind::kText, "Reads the certificate as PEM.").forPages(),
        composedCall<subject>(
            "subject", {}, Kind::kText,
            "Reads the subject, such as \"CN=Erika\"; null when it is not readable as X.509.")
            .orNull()
            .forPages(),
        composedCall<closeObject>("Close", {}, Kind::kBoolean, "Releases the certificate.")
            .forClosed()
            .forPages()};
    return members;
}

}  // namespace zr::host
