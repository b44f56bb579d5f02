// The most memory that EnumContainer takes at one time, in sizes of its result. In a program of its own,
// which counts every allocation.
// usage: zrkey_bench_memory RESULTS [--once] [ID...]
#include <malloc.h>

#include <cstddef>
#include <cstdlib>

#include "bench/bench_token.h"
#include "bench/comparison.h"

extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void __libc_free(void* block);
}

namespace {

std::size_t s_held = 0;
std::size_t s_most = 0;

void* counted(void* block) {
    s_held += malloc_usable_size(block);
    s_most = s_held > s_most ? s_held : s_most;
    return block;
}

}  // namespace

extern "C" {

#define ZR_REPLACES __attribute__((visibility("default")))

ZR_REPLACES void* malloc(std::size_t size) {
    return counted(__libc_malloc(size));
}
ZR_REPLACES void* calloc(std::size_t count, std::size_t size) {
    return counted(__libc_calloc(count, size));
}
ZR_REPLACES void* realloc(void* block, std::size_t size) {
    s_held -= malloc_usable_size(block);
    return counted(__libc_realloc(block, size));
}
ZR_REPLACES void free(void* block) {
    s_held -= malloc_usable_size(block);
    __libc_free(block);
}
}

namespace zr::bench {

void allRows(Bench& bench) {
    // One certificate more than a list that doubles has room for.
    bench.row({"instant/memory", "the size of the result", Measure::kMemoryRatio},
              [](Comparison& comparison) {
                  const OpenToken open(instantModule(16385));
                  zrkey::Variant result;
                  const std::size_t before = s_held;
                  s_most = before;
                  require(SUCCEEDED(open.token->EnumContainer(0, result.receive())), "no list");
                  comparison.store(static_cast<double>(s_most - before) /
                                   static_cast<double>(s_held - before));
              });
}

}  // namespace zr::bench
