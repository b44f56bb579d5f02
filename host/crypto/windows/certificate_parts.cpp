// The parts of a certificate by crypt32.
#include "host/crypto/certificate_parts.h"

#include <algorithm>

#include "host/crypto/windows/crypt32_objects.h"
#include "host/output/encoding.h"

namespace zr::host {
namespace {

std::string toUtf8Text(const wchar_t* text, int length) {
    const int size =
        length > 0 ? WideCharToMultiByte(CP_UTF8, 0, text, length, nullptr, 0, nullptr, nullptr)
                   : 0;
    std::string utf8(static_cast<std::size_t>(size), '\0');
    if (size > 0) {
        WideCharToMultiByte(CP_UTF8, 0, text, length, utf8.data(), size, nullptr, nullptr);
    }
    return utf8;
}

std::string_view viewOfBlob(const CRYPT_DATA_BLOB& blob) {
    return {reinterpret_cast<const char*>(blob.pbData), blob.cbData};
}

NamePart partOf(const CERT_RDN_ATTR& attribute) {
    const DWORD type = attribute.dwValueType & CERT_RDN_TYPE_MASK;
    if (type == CERT_RDN_ENCODED_BLOB || type == CERT_RDN_OCTET_STRING) {
        return {attribute.pszObjId, '#' + toHex(viewOfBlob(attribute.Value)), false};
    }
    const auto* text = reinterpret_cast<const wchar_t*>(attribute.Value.pbData);
    auto length = static_cast<int>(attribute.Value.cbData / sizeof(wchar_t));
    if (type == CERT_RDN_UTF8_STRING && length > 0 && text[length - 1] == L'\0') {
        // Wine counts the zero after the text.
        --length;
    }
    return {attribute.pszObjId, toUtf8Text(text, length)};
}

NameParts partsOf(const CERT_NAME_BLOB& name) {
    const auto info = decodeAs<CERT_NAME_INFO>(X509_UNICODE_NAME, name.pbData, name.cbData);
    NameParts parts;
    for (DWORD i = 0; info && i < info->cRDN; ++i) {
        const CERT_RDN& level = info->rgRDN[i];
        for (DWORD j = 0; j < level.cRDNAttr; ++j) {
            parts.push_back(partOf(level.rgRDNAttr[j]));
            parts.back().isJoined = j > 0;
        }
    }
    return parts;
}

std::string textOfTime(const FILETIME& time) {
    SYSTEMTIME parts = {};
    if (!FileTimeToSystemTime(&time, &parts)) {
        return {};
    }
    return timeText(parts.wYear, parts.wMonth, parts.wDay, parts.wHour, parts.wMinute,
                    parts.wSecond);
}

std::optional<unsigned> usageOfKey(CERT_INFO* info) {
    BYTE usage[2] = {};
    return CertGetIntendedKeyUsage(X509_ASN_ENCODING, info, usage, sizeof usage)
               ? std::optional<unsigned>(usage[0] | usage[1] << 8)
               : std::nullopt;
}

/// The certificate without bytes after it, which crypt32 keeps: its elements, encoded again.
std::string encodedForm(std::string_view der) {
    const auto elements =
        decodeAs<CRYPT_SEQUENCE_OF_ANY>(X509_SEQUENCE_OF_ANY, bytesOf(der), der.size());
    BYTE* bytes = nullptr;
    DWORD size = 0;
    if (!elements || !CryptEncodeObjectEx(X509_ASN_ENCODING, X509_SEQUENCE_OF_ANY, elements.get(),
                                          CRYPT_ENCODE_ALLOC_FLAG, nullptr, &bytes, &size)) {
        return std::string(der);
    }
    const Decoded<BYTE> owner(bytes);
    return {reinterpret_cast<const char*>(bytes), size};
}

}  // namespace

std::optional<CertificateParts> readParts(std::string_view der) {
    const CertificatePtr certificate = parseCertificate(der);
    if (!certificate) {
        return std::nullopt;
    }
    CERT_INFO* info = certificate->pCertInfo;
    std::string serialNumber(viewOfBlob(info->SerialNumber));
    std::reverse(serialNumber.begin(), serialNumber.end());
    return CertificateParts{encodedForm(der),
                            partsOf(info->Subject),
                            partsOf(info->Issuer),
                            serialNumber,
                            textOfTime(info->NotBefore),
                            textOfTime(info->NotAfter),
                            info->SubjectPublicKeyInfo.Algorithm.pszObjId,
                            usageOfKey(info)};
}

}  // namespace zr::host
