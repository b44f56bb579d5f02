// Counts the owners in a separate list: ZComBSTR has two members and no room for a count.
#include "runtime/block_owners.h"

#include <atomic>
#include <exception>
#include <mutex>

namespace zr {
namespace {

struct SharedBlock {
    const void* block;
    unsigned int furtherOwners;
    SharedBlock* next;
};

std::mutex s_mutex;
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
    try {
        const std::lock_guard<std::mutex> lock(s_mutex);
        if (SharedBlock* shared = *find(block)) {
            ++shared->furtherOwners;
        } else {
            s_first = new SharedBlock{block, 1, s_first};
            ++s_count;
        }
        return true;
    } catch (const std::exception&) {
        return false;  // out of memory; on Windows the first lock allocates, too
    }
}

bool dropOwner(const void* block) {
    if (s_count == 0) {
        return true;
    }
    const std::lock_guard<std::mutex> lock(s_mutex);
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
