// ModuleEpoch: the list of all epochs in the process.
#include "pkcs11/module_epoch.h"

#include <mutex>

#include "runtime/spin_lock.h"

namespace {

// Never held during a call into a module.
zr::SpinLock s_lock;
ModuleEpoch* s_first = nullptr;
std::uint64_t s_lastValue = 0;

}  // namespace

ModuleEpoch::ModuleEpoch() {
    const std::lock_guard<zr::SpinLock> lock(s_lock);
    m_value = ++s_lastValue;
    m_next = s_first;
    s_first = this;
}

ModuleEpoch::~ModuleEpoch() {
    const std::lock_guard<zr::SpinLock> lock(s_lock);
    ModuleEpoch** link = &s_first;
    while (*link != this) {
        link = &(*link)->m_next;
    }
    *link = m_next;
}

void ModuleEpoch::identify(Identity identity) {
    const std::lock_guard<zr::SpinLock> lock(s_lock);
    m_identity = identity;
}

void ModuleEpoch::advance() {
    const std::lock_guard<zr::SpinLock> lock(s_lock);
    ++s_lastValue;
    for (ModuleEpoch* epoch = s_first; epoch; epoch = epoch->m_next) {
        if (epoch == this || (m_identity && epoch->m_identity == m_identity)) {
            epoch->m_value = s_lastValue;
        }
    }
}
