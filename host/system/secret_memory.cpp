// Keeps PINs off the disk: counts who needs which page.
#include "host/system/secret_memory.h"

#include <map>
#include <mutex>
#include <new>

#include "host/system/page_lock.h"

namespace zr::host {
namespace {

std::mutex s_mutex;
unsigned s_noCoreDumps = 0;  ///< guarded by s_mutex
int s_before = 0;            ///< guarded by s_mutex

/// How many need a page. Never destroyed: a PIN may be, later. Guarded by s_mutex.
std::map<std::size_t, unsigned>& s_users = *new std::map<std::size_t, unsigned>;

}  // namespace

NoCoreDumps::NoCoreDumps() {
    const std::lock_guard lock(s_mutex);
    if (s_noCoreDumps++ == 0) {
        s_before = forbidCoreDumps();
    }
}

NoCoreDumps::~NoCoreDumps() {
    const std::lock_guard lock(s_mutex);
    if (--s_noCoreDumps == 0) {
        allowCoreDumps(s_before);
    }
}

SecretMemory::SecretMemory(const void* memory, std::size_t size)
    : m_begin(reinterpret_cast<std::size_t>(memory) / pageSize() * pageSize()),
      m_end(reinterpret_cast<std::size_t>(memory) + size) {
    const std::lock_guard lock(s_mutex);
    try {
        for (std::size_t page = m_begin; page < m_end; page += pageSize()) {
            if (++s_users[page] == 1) {
                lockPage(page);
            }
        }
    } catch (const std::bad_alloc&) {
        // The rest stays as it is.
    }
}

SecretMemory::~SecretMemory() {
    const std::lock_guard lock(s_mutex);
    for (std::size_t page = m_begin; page < m_end; page += pageSize()) {
        const auto found = s_users.find(page);
        if (found != s_users.end() && --found->second == 0) {
            unlockPage(page);
            s_users.erase(found);
        }
    }
}

}  // namespace zr::host
