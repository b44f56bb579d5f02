// Method tables: searching one, and storing a class's adapters in it at start-up.
#pragma once

#include <initializer_list>

#include "runtime/component_impl.h"

namespace zr {

/// The first row with this name; null for a null or empty name or a count below 1.
DispatchInfo* findRow(DispatchInfo* rows, int count, const char* name);

/// The first row with this id; null for an id below 1 or a count below 1.
DispatchInfo* findRow(DispatchInfo* rows, int count, LONG id);

/// Stores the adapters in the rows, in row order. They are entered with the component part of an
/// object; the member pointers carry the way back to the object.
/// @return true, so that a static initialiser can call it.
template <class Class>
bool storeAdapters(DispatchInfo* rows,
                   std::initializer_list<HRESULT (Class::*)(DISPPARAMS*, VARIANT*)> adapters) {
    for (const auto adapter : adapters) {
        rows->pfnInvoke = static_cast<PFNDISPATCH>(adapter);
        ++rows;
    }
    return true;
}

}  // namespace zr
