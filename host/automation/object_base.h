// What every object of the server has: its count of references, and a marshaler that lets every
// apartment of the process use it directly, since one lock protects the library.
#pragma once

#include <objbase.h>
#include <windows.h>

#include <zrkey/zrkey.hpp>

#include <atomic>
#include <new>

#include "host/automation/server_state.h"

namespace zr::automation {

class ObjectBase {
public:
    ULONG addReference() noexcept { return ++m_references; }
    /// @return false when the object is being deleted: there is no reference then.
    bool addReferenceIfAlive() noexcept {
        ULONG references = m_references;
        while (references > 0 && !m_references.compare_exchange_weak(references, references + 1)) {
        }
        return references > 0;
    }
    /// @return 0: the caller deletes the object.
    ULONG dropReference() noexcept { return --m_references; }

    /// @param object  this object, which outlives its marshaler.
    /// @throws std::bad_alloc
    void makeMarshaler(IUnknown* object) {
        if (FAILED(CoCreateFreeThreadedMarshaler(object, m_marshaler.receive()))) {
            throw std::bad_alloc();
        }
    }
    HRESULT getMarshal(void** result) noexcept {
        return m_marshaler->QueryInterface(IID_IMarshal, result);
    }

private:
    LiveObject m_live;
    std::atomic<ULONG> m_references = 1;
    zrkey::ComRef<IUnknown> m_marshaler;
};

}  // namespace zr::automation
