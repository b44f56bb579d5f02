// The Automation objects of this server that exist. An argument of a client is one of them only when
// it is listed here, whatever interfaces it claims to have.
#pragma once

#include <zrkey/zrkey.hpp>

#include "host/automation/object_base.h"
#include "host/objects/object.h"

namespace zr::automation {

class Registration {
public:
    /// @param identity  the IUnknown of the Automation object.
    /// @param object    the object of the model behind it.
    /// @param base      of the Automation object.
    /// @throws std::bad_alloc
    Registration(IDispatch* identity, const host::ObjectRef& object, ObjectBase& base);
    ~Registration();
    Registration(const Registration&) = delete;
    Registration& operator=(const Registration&) = delete;

    /// The Automation object that a client has for an object of the model; null when there is none.
    static zrkey::ComRef<IDispatch> find(const host::Object& object);

private:
    IDispatch* m_identity;
    const host::Object* m_object;
    ObjectBase& m_base;
};

/// The object of the model behind one of our objects.
/// @param object  any object, or null.
/// @return null for another's object.
host::ObjectRef unwrap(IUnknown* object) noexcept;

}  // namespace zr::automation
