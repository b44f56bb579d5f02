// What the whole server shares: the lock around the library, and what keeps the DLL loaded.
#pragma once

#include <mutex>

namespace zr::automation {

/// The lock around every call of the object model and every release of one of its objects. Clients
/// in several apartments may use one PKCS #11 module.
std::recursive_mutex& libraryLock();

/// Counts an object that a client can hold, as long as it lives.
class LiveObject {
public:
    LiveObject() noexcept;
    ~LiveObject();
    LiveObject(const LiveObject&) = delete;
    LiveObject& operator=(const LiveObject&) = delete;
};

/// IClassFactory::LockServer. Does nothing when there is no lock to end.
void lockServer(bool isLocked) noexcept;

/// Whether an object lives or a client has locked the server: the DLL must stay loaded.
bool isInUse() noexcept;

}  // namespace zr::automation
