// Loading a module and reading a file of a token.
#include <tinyxml2.h>

#include <filesystem>
#include <memory>

#include "bench/bare_walk.h"
#include "bench/comparison.h"
#include "platform/kernel.h"

namespace zr::bench {
namespace {

/// What Load and Unload have to do: start the module, read the configuration, end the module.
void loadBare(const std::string& path) {
    const HMODULE library = LoadLibraryA(path.c_str());
    const auto getList = reinterpret_cast<decltype(CK_FUNCTIONS::C_GetFunctionList)>(
        reinterpret_cast<void*>(GetProcAddress(library, "C_GetFunctionList")));
    CK_FUNCTION_LIST* list = nullptr;
    tinyxml2::XMLDocument configuration;
    require(getList(&list) == CKR_OK && list->functions.C_Initialize(nullptr) == CKR_OK &&
                configuration.LoadFile("config.xml") == tinyxml2::XML_SUCCESS,
            "not loaded");
    list->functions.C_Finalize(nullptr);
    FreeLibrary(library);
}

void measureLoad(Comparison& comparison, const std::string& module) {
    const std::string path = std::filesystem::absolute(module).string();
    const zrkey::Text relative(module);
    zrkey::ComRef<ITokenProvider> provider;
    require(SUCCEEDED(zrkey::createProvider(provider)), "no provider");
    comparison.measure(
        [&] {
            require(SUCCEEDED(provider->Load(relative.get())) && SUCCEEDED(provider->Unload()),
                    "not loaded");
        },
        [&] { loadBare(path); });
}

/// The bytes of the first file, in an array.
zrkey::ByteArray readBare(const BareModule& bare, const char* label, std::size_t labelLength) {
    CK_OBJECT_CLASS objectClass = CKO_DATA;
    CK_BBOOL isOnToken = CK_TRUE;
    CK_ATTRIBUTE search[] = {{CKA_CLASS, &objectClass, sizeof objectClass},
                             {CKA_TOKEN, &isOnToken, sizeof isOnToken}};
    CK_OBJECT_HANDLE file = 0;
    walkBare(bare, search, 2, {CKA_CLASS, CKA_LABEL}, 1,
             [&](CK_OBJECT_HANDLE object, const BareAttributes& read) {
                 const bool isFound = read.equals(1, label, labelLength);
                 file = isFound ? object : file;
                 return !isFound;
             });
    CK_ATTRIBUTE value = {CKA_VALUE, nullptr, 0};
    bare.call->C_GetAttributeValue(bare.session, file, &value, 1);
    // The whole file is kept first, and a part of it is copied: a file is read in parts.
    const std::unique_ptr<char[]> bytes(new char[value.ulValueLen]);
    value.pValue = bytes.get();
    require(bare.call->C_GetAttributeValue(bare.session, file, &value, 1) == CKR_OK, "not read");
    return zrkey::ByteArray(std::string_view(bytes.get(), value.ulValueLen));
}

void measureFile(Comparison& comparison, const std::string& module) {
    const OpenToken open(module);
    const BareModule bare(module);
    const zrkey::Text name("7");  // the object with the label "6"
    const std::size_t size = readBare(bare, "6", 1).bytes()->size();
    comparison.measure(
        [&] {
            zrkey::ComRef<IKeyFile> file;
            zrkey::ByteArray data;
            require(SUCCEEDED(open.token->OpenFile(name.get(), file.receive())) &&
                        SUCCEEDED(file->Read(static_cast<ULONG>(size), data.receive())),
                    "not read");
        },
        [&] { readBare(bare, "6", 1); });
}

}  // namespace

void moduleRows(Bench& bench) {
    bench.row({"token/load", "dlopen, C_Initialize, config.xml by tinyxml2, C_Finalize, dlclose"},
              [](Comparison& comparison) { measureLoad(comparison, realModule()); });
    bench.row({"instant/load", "the same with the instant module"},
              [](Comparison& comparison) { measureLoad(comparison, instantModule(1)); });
    bench.row({"token/file", "the same Cryptoki calls and the same array; 64 KiB"},
              [](Comparison& comparison) { measureFile(comparison, realModule()); });
    bench.row({"instant/file", "the same Cryptoki calls and the same array; 8 bytes",
               Measure::kAddedTime},
              [](Comparison& comparison) { measureFile(comparison, instantModule(1)); });
}

}  // namespace zr::bench
