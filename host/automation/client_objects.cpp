// The Automation objects of this server that exist.
#include "host/automation/client_objects.h"

#include <map>
#include <mutex>

namespace zr::automation {
namespace {

/// Never destroyed: a client may release its last object while the process ends.
struct Registry {
    std::mutex lock;
    std::map<IUnknown*, host::ObjectRef> objects;
    std::map<const host::Object*, Registration*> newest;  ///< of each object of the model
};

Registry& registry() {
    static Registry& registry = *new Registry;
    return registry;
}

}  // namespace

Registration::Registration(IDispatch* identity, const host::ObjectRef& object, ObjectBase& base)
    : m_identity(identity), m_object(object.get()), m_base(base) {
    const std::lock_guard lock(registry().lock);
    Registration*& newest = registry().newest[m_object];
    registry().objects.emplace(identity, object);
    newest = this;
}

Registration::~Registration() {
    // Its owner has another reference: no object is destroyed here.
    const std::lock_guard lock(registry().lock);
    registry().objects.erase(m_identity);
    // Another may have been made since the last reference to this one was released.
    const auto newest = registry().newest.find(m_object);
    if (newest != registry().newest.end() && newest->second == this) {
        registry().newest.erase(newest);
    }
}

zrkey::ComRef<IDispatch> Registration::find(const host::Object& object) {
    zrkey::ComRef<IDispatch> found;
    const std::lock_guard lock(registry().lock);
    const auto newest = registry().newest.find(&object);
    // It is null when there was no memory for the new object.
    const bool isKnown = newest != registry().newest.end() && newest->second;
    if (isKnown && newest->second->m_base.addReferenceIfAlive()) {
        found.reset(newest->second->m_identity);
    }
    return found;
}

host::ObjectRef unwrap(IUnknown* object) noexcept {
    zrkey::ComRef<IUnknown> identity;
    if (!object || FAILED(object->QueryInterface(IID_IUnknown, identity.receive()))) {
        return {};
    }
    const std::lock_guard lock(registry().lock);
    const auto found = registry().objects.find(identity.get());
    return found == registry().objects.end() ? host::ObjectRef() : found->second;
}

}  // namespace zr::automation
