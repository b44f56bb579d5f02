// What a script's limit of memory promises.
#include "tests/fuzz/script_memory.h"

#include <sanitizer/allocator_interface.h>

#include <algorithm>
#include <atomic>
#include <cstring>
#include <limits>
#include <memory>
#include <vector>

#include "host/script/limits.h"
#include "tests/fuzz/expect.h"

namespace zr::fuzz {
namespace {

std::atomic<bool> s_isCounting{false};
std::atomic<std::size_t> s_most{0};
std::size_t s_before = 0;

/// Called by the sanitizer with every block; must not allocate.
void noteAllocation(const volatile void*, std::size_t) {
    if (s_isCounting) {
        const std::size_t now = __sanitizer_get_current_allocated_bytes();
        s_most = std::max(s_most.load(), now > s_before ? now - s_before : 0);
    }
}

void noteFree(const volatile void*) {}

/// A block is counted with this header.
constexpr std::size_t kHeader = alignof(std::max_align_t);

struct Block {
    void* memory;
    std::size_t size;
    unsigned char mark;
};

bool isWhole(const Block& block, std::size_t size) {
    const auto* bytes = static_cast<const unsigned char*>(block.memory);
    return std::all_of(bytes, bytes + size, [&](unsigned char byte) { return byte == block.mark; });
}

}  // namespace

AllocatedBytes::AllocatedBytes() {
    static const int installed =
        __sanitizer_install_malloc_and_free_hooks(noteAllocation, noteFree);
    expect(installed != 0);
    s_before = __sanitizer_get_current_allocated_bytes();
    s_most = 0;
    s_isCounting = true;
}

AllocatedBytes::~AllocatedBytes() {
    s_isCounting = false;
}

std::size_t AllocatedBytes::most() const {
    return s_most;
}

void useMemory(Input& input, std::size_t limit) {
    zr::host::ScriptLimits limits;
    limits.bytes = limit;
    zr::host::ScriptUse use(limits);
    std::vector<Block> blocks;
    std::vector<std::unique_ptr<zr::host::ScriptCharge>> charges;
    std::size_t used = 0;
    std::size_t charged = 0;
    while (!input.isAtEnd()) {
        const std::uint8_t choice = input.byte();
        // From a byte to more than any limit.
        const std::size_t size =
            choice >= 250 ? std::numeric_limits<std::size_t>::max() - choice % 32
                          : std::size_t{input.number<std::uint32_t>()} >> input.below(32);
        if (choice % 8 < 4) {
            const std::size_t at = input.below(16);
            Block before = at < blocks.size() ? blocks[at] : Block{nullptr, 0, 0};
            const std::size_t counted = before.memory ? before.size + kHeader : 0;
            void* const made = use.reallocate(before.memory, size);
            const bool fits = size <= limit && used - counted + size + kHeader + charged <= limit;
            expect(size == 0 ? !made
                             : (made != nullptr) ==
                                   (fits || (size <= limit && size + kHeader <= counted)),
                   "what fits is granted, and nothing else");
            if (made || size == 0) {
                used = used - counted + (made ? size + kHeader : 0);
                const Block after = {made, size, static_cast<unsigned char>(choice ^ at)};
                if (made) {
                    const Block kept = {made, size, before.mark};
                    expect(!before.memory || isWhole(kept, std::min(size, before.size)),
                           "a block that grows or shrinks keeps its bytes");
                    std::memset(made, after.mark, size);
                }
                if (at < blocks.size()) {
                    blocks[at] = after;
                } else {
                    blocks.push_back(after);
                }
            } else {
                expect(!before.memory || isWhole(before, before.size),
                       "a block that cannot grow stays as it is");
            }
        } else if (choice % 8 < 7) {
            auto charge = std::make_unique<zr::host::ScriptCharge>(use);
            const bool fits = size <= limit && used + charged + size <= limit;
            expect(charge->add(size) == fits, "what fits is charged, and nothing else");
            if (fits && charges.size() < 8) {
                charged += size;
                charges.push_back(std::move(charge));
            }
        } else if (!charges.empty()) {
            charges.clear();
            charged = 0;
        }
    }
    for (const Block& block : blocks) {
        use.free(block.memory);
    }
    charges.clear();
    void* const all = use.reallocate(nullptr, limit - kHeader);
    expect(all != nullptr, "what is freed can be used again");
    use.free(all);
}

}  // namespace zr::fuzz
