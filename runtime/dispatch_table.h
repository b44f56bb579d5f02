// Method tables: the look-ups of a class in its table, and storing the adapters at start-up.
//
//     class Thing : public zr::WithMethodTable<Thing, ZComponent<IThing>> { ... };
//
//     DispatchInfo Thing::s_listDispatchInfo[] = {{1, "Open", ...}, {2, "Close", ...}, {}};
//     const int Thing::s_nDispatchInfoCount = std::size(s_listDispatchInfo) - 1;
//     const bool Thing::s_bAdaptersStored =
//         zr::storeAdapters<Thing>(s_listDispatchInfo, {&Thing::_Open, &Thing::_Close});
#pragma once

#include <cstddef>

#include "runtime/component_impl.h"

namespace zr {

/// The first row with this name; null for a null or empty name or a count below 1.
DispatchInfo* findRow(DispatchInfo* rows, int count, const char* name);

/// The first row with this id; null for an id below 1 or a count below 1.
DispatchInfo* findRow(DispatchInfo* rows, int count, LONG id);

/// The look-ups of Class in its static table s_listDispatchInfo with s_nDispatchInfoCount rows. The
/// two virtual functions take the slots after those of Base.
template <class Class, class Base>
class WithMethodTable : public Base {
public:
    using Base::Base;

    DispatchInfo* GetSelfDispatchInfo() override { return Class::s_listDispatchInfo; }
    int GetSelfGetDispatchInfoCount() override { return Class::s_nDispatchInfoCount; }

    /// The row of the class's table, or null. The object is not used and may be null.
    static DispatchInfo* GetDispatchInfo(ZComponentImpl*, const char* name) {
        return findRow(Class::s_listDispatchInfo, Class::s_nDispatchInfoCount, name);
    }
    static DispatchInfo* GetDispatchInfoById(ZComponentImpl*, LONG id) {
        return findRow(Class::s_listDispatchInfo, Class::s_nDispatchInfoCount, id);
    }
};

/// Stores the adapters of a class in the rows of its table, in row order. They are called with the
/// component part of an object; the member pointers adjust it back to the object.
/// @param rows      the table, with its closing zero row.
/// @param adapters  one for each row except the closing one; null for a member that is listed but
///                  cannot be called.
/// @return true, so that a static initialiser can call it.
template <class Class, std::size_t Rows, std::size_t Adapters>
bool storeAdapters(DispatchInfo (&rows)[Rows],
                   HRESULT (Class::*const (&adapters)[Adapters])(DISPPARAMS*, VARIANT*)) {
    static_assert(Adapters + 1 == Rows, "a row without an adapter, or an adapter without a row");
    for (std::size_t i = 0; i < Adapters; ++i) {
        rows[i].pfnInvoke = static_cast<PFNDISPATCH>(adapters[i]);
    }
    return true;
}

}  // namespace zr
