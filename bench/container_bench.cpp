// EnumContainer, beside the same Cryptoki calls and an array of texts that is made straight from the
// module's bytes.
#include <vector>

#include "bench/bare_walk.h"
#include "bench/comparison.h"
#include "platform/kernel.h"

namespace zr::bench {
namespace {

/// A text of ASCII bytes, made by a loop.
BSTR plainText(const char* bytes, CK_ULONG length) {
    const BSTR text = SysAllocStringLen(nullptr, static_cast<UINT>(length));
    for (CK_ULONG i = 0; i < length; ++i) {
        text[i] = static_cast<OLECHAR>(static_cast<unsigned char>(bytes[i]));
    }
    return text;
}

/// A text made as the library has to make each: converted by the system, and allocated by the function
/// that is looked up in the automation platform each time.
BSTR lookedUpText(const char* bytes, CK_ULONG length) {
    OLECHAR units[BareAttributes::kMostBytes];
    const int count = MultiByteToWideChar(CP_UTF8, 0, bytes, static_cast<int>(length), units,
                                          BareAttributes::kMostBytes - 1);
    units[count] = 0;
    const HMODULE platform = LoadLibraryA("OleAut32.dll");
    const auto allocate = reinterpret_cast<decltype(&SysAllocString)>(
        reinterpret_cast<void*>(GetProcAddress(platform, "SysAllocString")));
    const BSTR text = allocate(units);
    FreeLibrary(platform);
    return text;
}

/// @param makeText  makes a text of the bytes of an ID.
zrkey::Variant listBare(const BareModule& bare, BSTR (*makeText)(const char*, CK_ULONG)) {
    CK_OBJECT_CLASS objectClass = CKO_CERTIFICATE;
    CK_BBOOL isOnToken = CK_TRUE;
    CK_ATTRIBUTE search[] = {{CKA_CLASS, &objectClass, sizeof objectClass},
                             {CKA_TOKEN, &isOnToken, sizeof isOnToken}};
    std::vector<BSTR> texts;
    walkBare(bare, search, 2, {CKA_CLASS, CKA_CERTIFICATE_TYPE, CKA_ID}, 0,
             [&](CK_OBJECT_HANDLE, const BareAttributes& read) {
                 texts.push_back(makeText(read.values[2], read.attributes[2].ulValueLen));
                 return true;
             });
    SAFEARRAYBOUND bound = {static_cast<ULONG>(texts.size()), 0};
    SAFEARRAY* const array = SafeArrayCreate(VT_BSTR, 1, &bound);
    void* elements = nullptr;
    require(SUCCEEDED(SafeArrayAccessData(array, &elements)), "no array");
    std::memcpy(elements, texts.data(), texts.size() * sizeof(BSTR));
    SafeArrayUnaccessData(array);
    return zrkey::Variant::fromArray(VT_BSTR, array);
}

zrkey::Variant list(const OpenToken& open) {
    zrkey::Variant result;
    require(SUCCEEDED(open.token->EnumContainer(0, result.receive())), "no list");
    return result;
}

void measureList(Comparison& comparison, const std::string& module,
                 BSTR (*makeText)(const char*, CK_ULONG)) {
    const OpenToken open(module);
    const BareModule bare(module);
    require(list(open).toTexts() == listBare(bare, makeText).toTexts(), "the lists differ");
    comparison.measure([&] { list(open); }, [&] { listBare(bare, makeText); });
}

}  // namespace

void containerRows(Bench& bench) {
    bench.row({"token/enumerate", "the same Cryptoki calls, and the same array"},
              [](Comparison& comparison) { measureList(comparison, realModule(), plainText); });
    bench.row(
        {"instant/enumerate", "the same Cryptoki calls, and the same array made of the bytes"},
        [](Comparison& comparison) { measureList(comparison, instantModule(2048), plainText); });
    bench.row(
        {"instant/enumerate-lookups",
         "as before, each text converted and allocated by looked-up system functions"},
        [](Comparison& comparison) { measureList(comparison, instantModule(2048), lookedUpText); });
    bench.row({"instant/growth", "the library with 2,048 certificates"},
              [](Comparison& comparison) {
                  const OpenToken many(instantModule(16384));
                  const OpenToken few(instantModule(2048));
                  comparison.measure([&] { list(many); }, [&] { list(few); });
              });
    bench.row({"instant/growth-floor", "the bare calls and the array with 2,048 certificates"},
              [](Comparison& comparison) {
                  const std::string manyModule = instantModule(16384);
                  const OpenToken many(manyModule);
                  const std::string fewModule = instantModule(2048);
                  const OpenToken few(fewModule);
                  const BareModule bareMany(manyModule);
                  const BareModule bareFew(fewModule);
                  comparison.measure([&] { listBare(bareMany, plainText); },
                                     [&] { listBare(bareFew, plainText); });
              });
}

}  // namespace zr::bench
