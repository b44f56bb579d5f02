// An object of the model as hosts hold it by reference: one of the library's, and what it came from.
#pragma once

#include <string>

#include "host/objects/call_error.h"
#include "host/objects/member.h"

namespace zr::host {

class Object : public std::enable_shared_from_this<Object> {
public:
    virtual ~Object() = default;
    Object(const Object&) = delete;
    Object& operator=(const Object&) = delete;

    ObjectClass objectClass() const { return m_class; }
    /// Releases the library's object. Every later call fails, except another Close; objects opened
    /// from this one stay usable.
    virtual void close() = 0;
    virtual bool isClosed() const = 0;

protected:
    explicit Object(ObjectClass objectClass) : m_class(objectClass) {}

private:
    ObjectClass m_class;
};

/// Calls a member.
/// @param member     of the object's class.
/// @param arguments  in the order in which they are written.
/// @return a value of the member's result kind; Kind::kNull where the member says so.
/// Throws a CallError; Interrupted when the program is to end; std::bad_alloc.
Value callMember(Object& object, const Member& member, const std::vector<Value>& arguments);

}  // namespace zr::host
