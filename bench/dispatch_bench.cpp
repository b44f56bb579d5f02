// A member by its virtual operation, by Invoke, and by name.
#include <benchmark/benchmark.h>
#include <zrkey/zrkey.hpp>

#include "pkcs11/provider_pkcs11.h"

namespace {

/// A provider without a module: its operations return at once.
zrkey::ComRef<ITokenProvider> makeProvider() {
    zrkey::ComRef<ITokenProvider> provider;
    provider.reset(new TokenProvider_pkcs11());
    provider->AddRef();
    return provider;
}

void directCall(benchmark::State& state) {
    const auto provider = makeProvider();
    for (auto _ : state) {
        INT count = 0;
        benchmark::DoNotOptimize(provider->GetKeyCount(&count));
    }
}
BENCHMARK(directCall);

void invoke(benchmark::State& state) {
    const auto provider = makeProvider();
    DISPPARAMS params = {};
    for (auto _ : state) {
        zrkey::Variant result;
        benchmark::DoNotOptimize(provider->Invoke(4, IID_NULL, 0, DISPATCH_METHOD, &params,
                                                  result.receive(), nullptr, nullptr));
    }
}
BENCHMARK(invoke);

void getIdsOfNames(benchmark::State& state) {
    const auto provider = makeProvider();
    OLECHAR name[] = OLESTR("GetKeyCount");
    LPOLESTR names = name;
    for (auto _ : state) {
        DISPID id = 0;
        benchmark::DoNotOptimize(provider->GetIDsOfNames(IID_NULL, &names, 1, 0, &id));
    }
}
BENCHMARK(getIdsOfNames);

}  // namespace
