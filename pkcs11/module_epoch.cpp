// ModuleEpoch: the one list of them in the process.
#include "pkcs11/module_epoch.h"

#include <mutex>

namespace {

// Never held across a call into a module. The first lock may take memory and so throws where a
// ModuleEpoch is made; later ones do not.
std::mutex s_mutex;
ModuleEpoch* s_first = nullptr;
std::uint64_t s_lastValue = 0;

}  // namespace

ModuleEpoch::ModuleEpoch() {
    const std::lock_guard<std::mutex> lock(s_mutex);
    m_value = ++s_lastValue;
    m_next = s_first;
    s_first = this;
}

ModuleEpoch::~ModuleEpoch() {
    const std::lock_guard<std::mutex> lock(s_mutex);
    ModuleEpoch** link = &s_first;
    while (*link != this) {
        link = &(*link)->m_next;
    }
    *link = m_next;
}

void ModuleEpoch::identify(Identity identity) {
    const std::lock_guard<std::mutex> lock(s_mutex);
    m_identity = identity;
}

void ModuleEpoch::advance() {
    const std::lock_guard<std::mutex> lock(s_mutex);
    ++s_lastValue;
    for (ModuleEpoch* epoch = s_first; epoch; epoch = epoch->m_next) {
        if (epoch == this || (m_identity && epoch->m_identity == m_identity)) {
            epoch->m_value = s_lastValue;
        }
    }
}
