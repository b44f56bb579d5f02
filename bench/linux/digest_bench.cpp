// MD5 and DigestData, beside libcrypto in the same process.
#include <cstring>
#include <string>

#include "bench/bench_token.h"
#include "bench/comparison.h"
#include "bench/linux/libcrypto_digest.h"
#include "runtime/md5.h"

namespace zr::bench {
namespace {

using Digest = void (*)(const void* data, std::size_t length, unsigned char* digest);

void measureDigest(Comparison& comparison, std::size_t length, Digest floor) {
    const std::string data(length, 'Z');
    unsigned char own[16];
    unsigned char other[16];
    MD5Data(data.data(), static_cast<unsigned int>(length), own);
    floor(data.data(), length, other);
    require(std::memcmp(own, other, sizeof own) == 0, "the digests differ");
    comparison.measure(
        [&] {
            MD5Data(data.data(), static_cast<unsigned int>(length), own);
            keep(own);
        },
        [&] {
            floor(data.data(), length, other);
            keep(other);
        });
}

/// A digest out of one array and into a new one.
void digestArray(const VARIANT& data, VARIANT* result) {
    void* bytes = nullptr;
    require(SUCCEEDED(SafeArrayAccessData(data.parray, &bytes)), "no access");
    unsigned char digest[16];
    plainMd5(bytes, data.parray->rgsabound[0].cElements, digest);
    SafeArrayUnaccessData(data.parray);
    SAFEARRAYBOUND bound = {sizeof digest, 0};
    SAFEARRAY* const array = SafeArrayCreate(VT_UI1, 1, &bound);
    require(SUCCEEDED(SafeArrayAccessData(array, &bytes)), "no array");
    std::memcpy(bytes, digest, sizeof digest);
    SafeArrayUnaccessData(array);
    result->vt = VT_ARRAY | VT_UI1;
    result->parray = array;
}

void measureDigestData(Comparison& comparison) {
    const OpenToken open(instantModule(1));
    const zrkey::ByteArray data(std::string(64, 'Z'));
    const zrkey::Text method("MD5");
    comparison.measure(
        [&] {
            zrkey::ByteArray digest;
            require(SUCCEEDED(open.token->DigestData(method.get(), data, digest.receive())),
                    "no digest");
        },
        [&] {
            zrkey::ByteArray digest;
            digestArray(data, digest.receive());
        });
}

}  // namespace

void digestRows(Bench& bench) {
    bench.row({"digest/md5-1MiB", "EVP functions of libcrypto"},
              [](Comparison& comparison) { measureDigest(comparison, 1 << 20, evpMd5); });
    bench.row({"digest/md5-64", "the function MD5 of libcrypto, without its providers"},
              [](Comparison& comparison) { measureDigest(comparison, 64, plainMd5); });
    bench.row({"digest/md5-64-evp", "EVP functions of libcrypto, context and method kept"},
              [](Comparison& comparison) { measureDigest(comparison, 64, evpMd5); });
    bench.row({"digest/data-64", "the function MD5 of libcrypto, and the same arrays"},
              measureDigestData);
}

}  // namespace zr::bench
