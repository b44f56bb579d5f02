// Fills a real token: copies its certificate under other IDs, so that there are so many, and stores a
// file "6" of 64 KiB. Calls the module only.
// usage: fill_token CERTIFICATES          ZRKEY_MODULE names the module
#include <cstdio>
#include <cstdlib>
#include <string>

#include "bench/bare_walk.h"
#include "bench/comparison.h"

namespace {

using zr::bench::BareModule;
using zr::bench::require;

/// The attributes of the token's certificate that its copies share.
struct Certificate {
    std::string subject;
    std::string value;
};

std::string readValue(const BareModule& bare, CK_OBJECT_HANDLE object, CK_ATTRIBUTE_TYPE type) {
    CK_ATTRIBUTE attribute = {type, nullptr, 0};
    bare.call->C_GetAttributeValue(bare.session, object, &attribute, 1);
    std::string value(attribute.ulValueLen, '\0');
    attribute.pValue = value.data();
    require(bare.call->C_GetAttributeValue(bare.session, object, &attribute, 1) == CKR_OK,
            "the certificate cannot be read");
    return value;
}

CK_ATTRIBUTE attributeOf(CK_ATTRIBUTE_TYPE type, std::string& value) {
    return {type, value.data(), static_cast<CK_ULONG>(value.size())};
}

void addCertificate(const BareModule& bare, Certificate& shared, long number) {
    constexpr CK_ATTRIBUTE_TYPE kSubject = 0x101;
    CK_OBJECT_CLASS objectClass = CKO_CERTIFICATE;
    CK_CERTIFICATE_TYPE type = CKC_X_509;
    CK_BBOOL isOnToken = CK_TRUE;
    std::string id = std::string("other").append(std::to_string(number));
    CK_ATTRIBUTE attributes[] = {
        {CKA_CLASS, &objectClass, sizeof objectClass}, {CKA_TOKEN, &isOnToken, sizeof isOnToken},
        {CKA_CERTIFICATE_TYPE, &type, sizeof type},    attributeOf(CKA_ID, id),
        attributeOf(kSubject, shared.subject),         attributeOf(CKA_VALUE, shared.value)};
    CK_OBJECT_HANDLE object = 0;
    require(bare.call->C_CreateObject(bare.session, attributes, 6, &object) == CKR_OK,
            "a certificate cannot be stored");
}

void addFile(const BareModule& bare) {
    CK_OBJECT_CLASS objectClass = CKO_DATA;
    CK_BBOOL isOnToken = CK_TRUE;
    std::string label = "6";
    std::string value(65536, 'x');
    CK_ATTRIBUTE attributes[] = {{CKA_CLASS, &objectClass, sizeof objectClass},
                                 {CKA_TOKEN, &isOnToken, sizeof isOnToken},
                                 attributeOf(CKA_LABEL, label),
                                 attributeOf(CKA_VALUE, value)};
    CK_OBJECT_HANDLE object = 0;
    require(bare.call->C_CreateObject(bare.session, attributes, 4, &object) == CKR_OK,
            "a file cannot be stored");
}

void fill(long count) {
    const std::string module = zr::bench::realModule();
    zr::bench::startModule(module);
    const BareModule bare(module);
    CK_UTF8CHAR pin[] = "1234";
    require(bare.call->C_Login(bare.session, CKU_USER, pin, 4) == CKR_OK, "no login");
    CK_OBJECT_CLASS objectClass = CKO_CERTIFICATE;
    CK_ATTRIBUTE search = {CKA_CLASS, &objectClass, sizeof objectClass};
    CK_OBJECT_HANDLE first = 0;
    zr::bench::walkBare(bare, &search, 1, {CKA_ID}, 0,
                        [&first](CK_OBJECT_HANDLE object, const zr::bench::BareAttributes&) {
                            first = object;
                            return false;
                        });
    Certificate shared = {readValue(bare, first, 0x101), readValue(bare, first, CKA_VALUE)};
    for (long i = 1; i < count; ++i) {
        addCertificate(bare, shared, i);
    }
    addFile(bare);
    bare.call->C_Finalize(nullptr);
}

}  // namespace

int main(int argc, char** argv) {
    try {
        require(argc == 2, "usage: fill_token CERTIFICATES");
        fill(std::strtol(argv[1], nullptr, 10));
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "fill_token: %s\n", error.what());
        return 1;
    }
}
