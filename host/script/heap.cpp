// The script engine's heap, which keeps to a script's limits.
#include "host/script/heap.h"

namespace zr::host {
namespace {

ScriptUse& useOf(void* context) {
    return static_cast<ScriptContext*>(context)->use;
}

void* allocate(void* context, duk_size_t size) {
    return useOf(context).reallocate(nullptr, size);
}

void* reallocate(void* context, void* block, duk_size_t size) {
    return useOf(context).reallocate(block, size);
}

void release(void* context, void* block) {
    useOf(context).free(block);
}

}  // namespace

duk_context* createLimitedHeap(ScriptContext& context, duk_fatal_function fatal) {
    return duk_create_heap(allocate, reallocate, release, &context, fatal);
}

}  // namespace zr::host

/// Called by the engine every few instructions. Nonzero stops the script with an error that the
/// engine throws again each time the script catches it.
extern "C" int zrIsScriptTimeUp(void* context) {
    return static_cast<zr::host::ScriptContext*>(context)->mustStop() ? 1 : 0;
}

/// Called by the engine before each call and each step of its recursions. Nonzero is an error that
/// the script can catch.
extern "C" int zrIsScriptStackShort(void* context) {
    return static_cast<zr::host::ScriptContext*>(context)->use.isStackShort() ? 1 : 0;
}
