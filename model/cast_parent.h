// The parent of an object, as the class of the backend.
#pragma once

#include <typeinfo>

namespace zr {

/// As dynamic_cast. A parent nearly always is a To and nothing more derived, and comparing the classes
/// is much faster than dynamic_cast.
/// @param parent  may be null.
/// @return null when the parent is of another class.
template <class To, class From>
To* castParent(From* parent) {
    if (parent && typeid(*parent) == typeid(To)) {
        return static_cast<To*>(parent);
    }
    return dynamic_cast<To*>(parent);
}

}  // namespace zr
