// StoredPin: the list of all stored PINs in the process.
#include "pkcs11/stored_pin.h"

#include <cstring>
#include <mutex>

#include "runtime/secret.h"
#include "runtime/spin_lock.h"

namespace {

// Guards the list and the PINs in it: a token stores its PIN on one thread while another one unloads
// the module.
zr::SpinLock s_lock;
StoredPin* s_first = nullptr;

}  // namespace

StoredPin::StoredPin(const Session& session) : m_session(session) {
    m_szPIN[0] = 0;
    const std::lock_guard<zr::SpinLock> lock(s_lock);
    m_next = s_first;
    s_first = this;
}

StoredPin::~StoredPin() {
    const std::lock_guard<zr::SpinLock> lock(s_lock);
    StoredPin** link = &s_first;
    while (*link != this) {
        link = &(*link)->m_next;
    }
    *link = m_next;
    zr::wipe(m_szPIN, sizeof m_szPIN);
}

void StoredPin::store(const char* pin) {
    const std::lock_guard<zr::SpinLock> lock(s_lock);
    if (m_session.isAlive()) {
        std::memcpy(m_szPIN, pin, sizeof m_szPIN);
    }
}

void StoredPin::wipe() {
    const std::lock_guard<zr::SpinLock> lock(s_lock);
    zr::wipe(m_szPIN, sizeof m_szPIN);
}

void StoredPin::wipeEnded() {
    const std::lock_guard<zr::SpinLock> lock(s_lock);
    for (StoredPin* pin = s_first; pin; pin = pin->m_next) {
        if (!pin->m_session.isAlive()) {
            zr::wipe(pin->m_szPIN, sizeof pin->m_szPIN);
        }
    }
}
