// A member by its virtual operation, by Invoke, and by name.
#include <benchmark/benchmark.h>

#include "pkcs11/token_provider.h"

namespace {

/// A provider without a module: its operations answer at once.
class Provider {
public:
    Provider() { m_provider->AddRef(); }
    ~Provider() { m_provider->Release(); }
    ITokenProvider* operator->() const { return m_provider; }

private:
    ITokenProvider* m_provider = new TokenProvider_pkcs11();
};

void directCall(benchmark::State& state) {
    const Provider provider;
    for (auto _ : state) {
        INT count = 0;
        benchmark::DoNotOptimize(provider->GetKeyCount(&count));
    }
}
BENCHMARK(directCall);

void invoke(benchmark::State& state) {
    const Provider provider;
    DISPPARAMS params = {};
    for (auto _ : state) {
        VARIANT result;
        benchmark::DoNotOptimize(
            provider->Invoke(4, IID_NULL, 0, DISPATCH_METHOD, &params, &result, nullptr, nullptr));
    }
}
BENCHMARK(invoke);

void getIdsOfNames(benchmark::State& state) {
    const Provider provider;
    OLECHAR name[] = OLESTR("GetKeyCount");
    LPOLESTR names = name;
    for (auto _ : state) {
        DISPID id = 0;
        benchmark::DoNotOptimize(provider->GetIDsOfNames(IID_NULL, &names, 1, 0, &id));
    }
}
BENCHMARK(getIdsOfNames);

}  // namespace
