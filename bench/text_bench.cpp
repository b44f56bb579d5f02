// Text between UTF-8 and UTF-16, and MD5.
#include <benchmark/benchmark.h>
#include <zrkey/zrkey.hpp>

#include <cstring>
#include <vector>

#include "runtime/md5.h"
#include "runtime/string_convert.h"

namespace {

constexpr char kText[] = "A token label of thirty-two byte";

void copyText(benchmark::State& state) {
    char copy[sizeof kText];
    for (auto _ : state) {
        std::memcpy(copy, kText, sizeof kText);
        benchmark::DoNotOptimize(copy);
    }
}
BENCHMARK(copyText);

void utf8ToBstr(benchmark::State& state) {
    for (auto _ : state) {
        zrkey::Text text;
        text.reset(ZSysAllocUTF8String(kText));
        benchmark::DoNotOptimize(text.get());
    }
}
BENCHMARK(utf8ToBstr);

void bstrToUtf8(benchmark::State& state) {
    const zrkey::Text text(kText);
    char narrow[64];
    for (auto _ : state) {
        benchmark::DoNotOptimize(ZBstrToUtf8(text.get(), narrow, sizeof narrow));
    }
}
BENCHMARK(bstrToUtf8);

void md5OfOneMiB(benchmark::State& state) {
    const std::vector<unsigned char> data(1 << 20, 0x5A);
    unsigned char digest[16];
    for (auto _ : state) {
        MD5Data(data.data(), static_cast<unsigned int>(data.size()), digest);
        benchmark::DoNotOptimize(digest);
    }
}
BENCHMARK(md5OfOneMiB);

}  // namespace
