// Signing and listing with a module that returns at once, and signing with SoftHSM2, compared with
// the bare calls of the module.
#include <benchmark/benchmark.h>
#include <dlfcn.h>
#include <zrkey/zrkey.hpp>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>

#include "pkcs11/token_pkcs11.h"

namespace {

/// A provider with a module loaded, and its first token that accepts the PIN, logged in.
class BenchToken {
public:
    explicit BenchToken(const std::string& module) {
        std::ofstream("config.xml") << "<driver/>";
        const zrkey::Text path(std::filesystem::relative(module).generic_string());
        provider.reset(new TokenProvider_pkcs11());
        provider->AddRef();
        INT count = 0;
        provider->Load(path.get());
        provider->GetKeyCount(&count);
        for (LONG i = 0; i < count && !token; ++i) {
            provider->OpenKey(i, token.receive());
            if (token && FAILED(token->VerifyPIN(zrkey::Text("1234").get(), 0))) {
                token.reset();
            }
        }
        if (!token) {
            throw std::runtime_error("no token of " + module + " accepts the PIN");
        }
    }

    zrkey::ComRef<ITokenProvider> provider;
    zrkey::ComRef<IKeyObject> token;
};

class InstantToken : public BenchToken {
public:
    explicit InstantToken(long certificates) : BenchToken(withCertificates(certificates)) {}

private:
    static const char* withCertificates(long count) {
        setenv("ZRKEY_INSTANT_CERTIFICATES", std::to_string(count).c_str(), 1);
        return ZRKEY_INSTANT_MODULE;
    }
};

/// The same module without the library, which has initialised it and logged in.
class BareModule {
public:
    explicit BareModule(const char* path) {
        void* module = dlopen(path, RTLD_NOW);
        const auto getList =
            reinterpret_cast<CK_RV (*)(CK_FUNCTION_LIST**)>(dlsym(module, "C_GetFunctionList"));
        CK_FUNCTION_LIST* list = nullptr;
        getList(&list);
        call = &list->functions;
        CK_SLOT_ID slots[8];
        CK_ULONG count = 8;
        call->C_GetSlotList(CK_TRUE, slots, &count);
        call->C_OpenSession(slots[0], CKF_SERIAL_SESSION | CKF_RW_SESSION, nullptr, nullptr,
                            &session);
    }

    const CK_FUNCTIONS* call;
    CK_SESSION_HANDLE session = 0;
};

/// The walk to a key and the signature, with as few calls as a host needs.
void bareSignature(benchmark::State& state, const char* module) {
    const BenchToken token(module);
    const BareModule bare(module);
    const CK_FUNCTIONS& call = *bare.call;
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
        call.C_FindObjectsInit(bare.session, &search, 1);
        call.C_FindObjects(bare.session, &key, 1, &count);
        call.C_GetAttributeValue(bare.session, key, &read, 1);
        call.C_FindObjectsFinal(bare.session);
        call.C_SignInit(bare.session, &mechanism, key);
        if (call.C_Sign(bare.session, data, sizeof data, signature, &length) != CKR_OK) {
            state.SkipWithError("no signature");
            break;
        }
        benchmark::DoNotOptimize(signature);
    }
}

void signature(benchmark::State& state, const char* module) {
    const BenchToken bench(module);
    zrkey::ComRef<IKeyContainer> container;
    zrkey::ComRef<IKeyCertificate> certificate;
    if (FAILED(bench.token->OpenContainer(zrkey::Variant::fromNumber(0), container.receive())) ||
        FAILED(container->GetKeyCert(true, certificate.receive()))) {
        state.SkipWithError("no certificate");
        return;
    }
    const zrkey::ByteArray data(std::string(32, '\0'));
    for (auto _ : state) {
        zrkey::ByteArray result;
        if (FAILED(bench.token->SignData(nullptr, data, certificate.get(), result.receive()))) {
            state.SkipWithError("no signature");
            break;
        }
    }
}

BENCHMARK_CAPTURE(bareSignature, instant, ZRKEY_INSTANT_MODULE);
BENCHMARK_CAPTURE(signature, instant, ZRKEY_INSTANT_MODULE);
BENCHMARK_CAPTURE(bareSignature, softhsm, ZRKEY_SOFT_MODULE);
BENCHMARK_CAPTURE(signature, softhsm, ZRKEY_SOFT_MODULE);

void bareCertificateList(benchmark::State& state) {
    const InstantToken instant(state.range(0));
    const BareModule bare(ZRKEY_INSTANT_MODULE);
    const CK_FUNCTIONS& call = *bare.call;
    CK_OBJECT_CLASS objectClass = CKO_CERTIFICATE;
    CK_ATTRIBUTE search = {CKA_CLASS, &objectClass, sizeof objectClass};
    for (auto _ : state) {
        call.C_FindObjectsInit(bare.session, &search, 1);
        for (;;) {
            CK_OBJECT_HANDLE object = 0;
            CK_ULONG count = 0;
            char id[16];
            CK_ATTRIBUTE read = {CKA_ID, id, sizeof id};
            if (call.C_FindObjects(bare.session, &object, 1, &count) != CKR_OK || count != 1) {
                break;
            }
            call.C_GetAttributeValue(bare.session, object, &read, 1);
            benchmark::DoNotOptimize(id);
        }
        call.C_FindObjectsFinal(bare.session);
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(bareCertificateList)->Arg(32)->Arg(1024)->Arg(16384);

void certificateList(benchmark::State& state) {
    const InstantToken instant(state.range(0));
    for (auto _ : state) {
        zrkey::Variant result;
        if (FAILED(instant.token->EnumContainer(0, result.receive()))) {
            state.SkipWithError("no list");
            break;
        }
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(certificateList)->Arg(32)->Arg(1024)->Arg(16384);

}  // namespace
