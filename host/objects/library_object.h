// An object of the model that stands for one object of the library.
#pragma once

#include <utility>

#include "host/objects/arguments.h"

namespace zr::host {

/// @tparam Interface  IKeyObject, ... The library's object keeps what it came from alive.
template <class Interface, ObjectClass kClass>
class LibraryObject : public Object {
public:
    explicit LibraryObject(zrkey::ComRef<Interface> object)
        : Object(kClass), m_object(std::move(object)) {}

    void close() override { m_object.reset(); }
    bool isClosed() const override { return !m_object; }
    /// The library's object, kept for one call: a module may call back, and the host may close this
    /// object then. Throws a CallError when it was closed.
    /// @param arguments  of the call that needs it.
    zrkey::ComRef<Interface> use(const Arguments& arguments) const {
        if (!m_object) {
            throw arguments.closed();
        }
        return m_object;
    }

protected:
    /// Closes this object.
    zrkey::ComRef<Interface> take() { return std::exchange(m_object, {}); }

private:
    zrkey::ComRef<Interface> m_object;
};

/// The member that closes an object of any class.
Value closeObject(Object& object, const Arguments& arguments);

/// Calls a getter of a text.
template <class Interface, ObjectClass kClass>
Value readText(const LibraryObject<Interface, kClass>& object, const Arguments& arguments,
               HRESULT (STDMETHODCALLTYPE Interface::*getter)(BSTR*)) {
    zrkey::Text text;
    arguments.require((object.use(arguments).get()->*getter)(text.receive()));
    return textOf(text);
}

}  // namespace zr::host
