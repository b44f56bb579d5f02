// The parts of a certificate by libcrypto.
#include "host/crypto/certificate_parts.h"

#include <openssl/asn1.h>
#include <openssl/err.h>
#include <openssl/x509v3.h>
#include <utf8cpp/utf8.h>

#include <ctime>
#include <iterator>

#include "host/crypto/linux/libcrypto_objects.h"
#include "host/output/encoding.h"

namespace zr::host {
namespace {

struct BytesFreer {
    void operator()(unsigned char* bytes) const { OPENSSL_free(bytes); }
};
using BytesPtr = std::unique_ptr<unsigned char, BytesFreer>;

std::string toString(const unsigned char* bytes, int size) {
    return size > 0
               ? std::string(reinterpret_cast<const char*>(bytes), static_cast<std::size_t>(size))
               : std::string();
}

std::string identifierText(const ASN1_OBJECT* object) {
    char text[200] = "";
    OBJ_obj2txt(text, sizeof text, object, 1);
    return text;
}

/// "#" and the DER of a value that is not text.
std::string hexForm(const ASN1_STRING* value) {
    ASN1_TYPE any = {};
    any.type = ASN1_STRING_type(value);
    any.value.asn1_string = const_cast<ASN1_STRING*>(value);
    unsigned char* bytes = nullptr;
    const int size = i2d_ASN1_TYPE(&any, &bytes);
    const BytesPtr owner(bytes);
    return '#' + toHex(toString(bytes, size));
}

NamePart partOf(const X509_NAME_ENTRY* entry) {
    const ASN1_STRING* value = X509_NAME_ENTRY_get_data(entry);
    NamePart part = {identifierText(X509_NAME_ENTRY_get_object(entry)), {}};
    if (ASN1_STRING_type(value) == V_ASN1_UTF8STRING) {
        // libcrypto refuses text with a wrong byte as a whole.
        const std::string text = toString(ASN1_STRING_get0_data(value), ASN1_STRING_length(value));
        utf8::replace_invalid(text.begin(), text.end(), std::back_inserter(part.value));
        return part;
    }
    unsigned char* bytes = nullptr;
    const int size = ASN1_STRING_to_UTF8(&bytes, value);
    const BytesPtr owner(bytes);
    part.isText = size >= 0;
    part.value = part.isText ? toString(bytes, size) : hexForm(value);
    return part;
}

NameParts partsOf(const X509_NAME* name) {
    NameParts parts;
    for (int i = 0, level = -1; i < X509_NAME_entry_count(name); ++i) {
        const X509_NAME_ENTRY* entry = X509_NAME_get_entry(name, i);
        parts.push_back(partOf(entry));
        parts.back().isJoined = X509_NAME_ENTRY_set(entry) == level;
        level = X509_NAME_ENTRY_set(entry);
    }
    return parts;
}

/// The bytes of the number as the certificate has them.
std::string bytesOfNumber(const ASN1_INTEGER* number) {
    unsigned char* der = nullptr;
    const int size = i2d_ASN1_INTEGER(number, &der);
    const BytesPtr owner(der);
    const unsigned char* content = der;
    long length = 0;
    int tag = 0;
    int kind = 0;
    if (size <= 0 || (ASN1_get_object(&content, &length, &tag, &kind, size) & 0x80) != 0) {
        return {};
    }
    return toString(content, static_cast<int>(length));
}

std::string textOfTime(const ASN1_TIME* time) {
    std::tm parts = {};
    if (ASN1_TIME_to_tm(time, &parts) != 1) {
        return {};
    }
    return timeText(parts.tm_year + 1900, parts.tm_mon + 1, parts.tm_mday, parts.tm_hour,
                    parts.tm_min, parts.tm_sec);
}

std::optional<unsigned> usageOfKey(X509* certificate) {
    constexpr unsigned kNotRestricted = 0xFFFFFFFF;
    const unsigned usage = X509_get_key_usage(certificate);
    return usage == kNotRestricted ? std::nullopt : std::optional<unsigned>(usage);
}

std::string algorithmOfKey(const X509* certificate) {
    ASN1_OBJECT* algorithm = nullptr;
    X509_PUBKEY_get0_param(&algorithm, nullptr, nullptr, nullptr,
                           X509_get_X509_PUBKEY(certificate));
    return identifierText(algorithm);
}

std::string encodedForm(X509* certificate) {
    unsigned char* bytes = nullptr;
    const int size = i2d_X509(certificate, &bytes);
    const BytesPtr owner(bytes);
    return toString(bytes, size);
}

}  // namespace

std::optional<CertificateParts> readParts(std::string_view der) {
    const CertificatePtr certificate = parseCertificate(der);
    std::optional<CertificateParts> parts;
    if (certificate) {
        parts = {encodedForm(certificate.get()),
                 partsOf(X509_get_subject_name(certificate.get())),
                 partsOf(X509_get_issuer_name(certificate.get())),
                 bytesOfNumber(X509_get0_serialNumber(certificate.get())),
                 textOfTime(X509_get0_notBefore(certificate.get())),
                 textOfTime(X509_get0_notAfter(certificate.get())),
                 algorithmOfKey(certificate.get()),
                 usageOfKey(certificate.get())};
    }
    ERR_clear_error();
    return parts;
}

}  // namespace zr::host
