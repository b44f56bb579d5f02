// Signing and listing over a module that answers at once, against the bare calls of that module.
#include <benchmark/benchmark.h>
#include <dlfcn.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>

#include "pkcs11/byte_array.h"
#include "pkcs11/key_object.h"
#include "runtime/zcom_bstr.h"

namespace {

/// A provider with the instant module, and its one token, logged in.
class InstantToken {
public:
    explicit InstantToken(long certificates) {
        setenv("ZRKEY_BENCH_CERTIFICATES", std::to_string(certificates).c_str(), 1);
        std::ofstream("config.xml") << "<driver/>";
        const std::string path =
            std::filesystem::relative(ZRKEY_INSTANT_MODULE).generic_string();
        provider->AddRef();
        if (FAILED(provider->Load(zrapi::ZComBSTR(path.c_str()))) ||
            FAILED(provider->OpenKey(0, reinterpret_cast<void**>(&token))) ||
            FAILED(token->VerifyPIN(zrapi::ZComBSTR("1234"), 0))) {
            throw std::runtime_error("the instant module does not load");
        }
    }
    ~InstantToken() {
        token->Release();
        provider->Release();
    }

    TokenProvider_pkcs11* provider = new TokenProvider_pkcs11();
    IKeyObject* token = nullptr;
};

CK_FUNCTION_LIST* bareModule() {
    void* module = dlopen(ZRKEY_INSTANT_MODULE, RTLD_NOW);
    const auto getList = reinterpret_cast<CK_RV (*)(CK_FUNCTION_LIST**)>(
        dlsym(module, "C_GetFunctionList"));
    CK_FUNCTION_LIST* list = nullptr;
    getList(&list);
    return list;
}

/// The walk to a key and the signature, as few calls as a host needs.
void bareSignature(benchmark::State& state) {
    const InstantToken instant(1);
    const CK_FUNCTIONS& call = bareModule()->functions;
    CK_OBJECT_CLASS objectClass = CKO_PRIVATE_KEY;
    CK_ATTRIBUTE search = {CKA_CLASS, &objectClass, sizeof objectClass};
    CK_BYTE data[32] = {};
    for (auto _ : state) {
        CK_OBJECT_HANDLE key = 0;
        CK_ULONG count = 0;
        char id[16];
        CK_ATTRIBUTE read = {CKA_ID, id, sizeof id};
        CK_MECHANISM mechanism = {CKM_SHA1_RSA_PKCS, nullptr, 0};
        CK_BYTE signature[1024];
        CK_ULONG length = sizeof signature;
        call.C_FindObjectsInit(1, &search, 1);
        call.C_FindObjects(1, &key, 1, &count);
        call.C_GetAttributeValue(1, key, &read, 1);
        call.C_FindObjectsFinal(1);
        call.C_SignInit(1, &mechanism, key);
        call.C_Sign(1, data, sizeof data, signature, &length);
        benchmark::DoNotOptimize(signature);
    }
}
BENCHMARK(bareSignature);

void signature(benchmark::State& state) {
    const InstantToken instant(1);
    VARIANT which;
    VariantInit(&which);
    which.vt = VT_I4;
    which.lVal = 0;
    IKeyContainer* container = nullptr;
    IKeyCertificate* certificate = nullptr;
    if (FAILED(instant.token->OpenContainer(which, reinterpret_cast<void**>(&container))) ||
        FAILED(container->GetKeyCert(true, reinterpret_cast<void**>(&certificate)))) {
        state.SkipWithError("no certificate");
        return;
    }
    const unsigned char bytes[32] = {};
    VARIANT data;
    zr::storeBytes(bytes, sizeof bytes, VT_UI1, &data);
    for (auto _ : state) {
        VARIANT result;
        if (FAILED(instant.token->SignData(nullptr, data, certificate, &result))) {
            state.SkipWithError("no signature");
            break;
        }
        VariantClear(&result);
    }
    VariantClear(&data);
    certificate->Release();
    container->Release();
}
BENCHMARK(signature);

void bareCertificateList(benchmark::State& state) {
    const InstantToken instant(state.range(0));
    const CK_FUNCTIONS& call = bareModule()->functions;
    CK_OBJECT_CLASS objectClass = CKO_CERTIFICATE;
    CK_ATTRIBUTE search = {CKA_CLASS, &objectClass, sizeof objectClass};
    for (auto _ : state) {
        call.C_FindObjectsInit(1, &search, 1);
        for (;;) {
            CK_OBJECT_HANDLE object = 0;
            CK_ULONG count = 0;
            char id[16];
            CK_ATTRIBUTE read = {CKA_ID, id, sizeof id};
            if (call.C_FindObjects(1, &object, 1, &count) != CKR_OK || count != 1) {
                break;
            }
            call.C_GetAttributeValue(1, object, &read, 1);
            benchmark::DoNotOptimize(id);
        }
        call.C_FindObjectsFinal(1);
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(bareCertificateList)->Arg(32)->Arg(1024)->Arg(16384);

void certificateList(benchmark::State& state) {
    const InstantToken instant(state.range(0));
    for (auto _ : state) {
        VARIANT result;
        if (FAILED(instant.token->EnumContainer(0, &result))) {
            state.SkipWithError("no list");
            break;
        }
        VariantClear(&result);
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(certificateList)->Arg(32)->Arg(1024)->Arg(16384);

}  // namespace
