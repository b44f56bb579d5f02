// Counts the owners in a separate list: ZComBSTR has two members and no room for a count.
#include "runtime/block_owners.h"

#include <atomic>
#include <mutex>
#include <new>

#include "runtime/spin_lock.h"

namespace zr {
namespace {

struct SharedBlock {
    const void* block;
    unsigned int furtherOwners;
    SharedBlock* next;
};

SpinLock s_lock;
SharedBlock* s_first = nullptr;
// No lock is taken while no string is shared. The library itself shares none.
std::atomic<unsigned int> s_count{0};

SharedBlock** find(const void* block) {
    SharedBlock** link = &s_first;
    while (*link && (*link)->block != block) {
        link = &(*link)->next;
    }
    return link;
}

}  // namespace

bool addOwner(const void* block) {
    if (!block) {
        return true;
    }
    const std::lock_guard<SpinLock> lock(s_lock);
    if (SharedBlock* shared = *find(block)) {
        ++shared->furtherOwners;
        return true;
    }
    auto* shared = new (std::nothrow) SharedBlock{block, 1, s_first};
    if (!shared) {
        return false;
    }
    s_first = shared;
    ++s_count;
    return true;
}

bool dropOwner(const void* block) {
    if (s_count == 0) {
        return true;
    }
    const std::lock_guard<SpinLock> lock(s_lock);
    SharedBlock** link = find(block);
    SharedBlock* shared = *link;
    if (!shared) {
        return true;
    }
    if (--shared->furtherOwners == 0) {
        *link = shared->next;
        delete shared;
        --s_count;
    }
    return false;
}

}  // namespace zr
