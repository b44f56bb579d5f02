// zrapi::ZComVariantArray: a list of variants in insertion order.
#pragma once

#include <zrkey/automation.h>

#include <list>

#include "runtime/zcom_variant.h"

namespace zrapi {

class ZComVariantArray {
public:
    /// Appends a copy of v; a failed copy is stored as VT_ERROR with the result.
    /// @return the new number of elements; the old one when memory is short.
    int Add(ZComVariant& v);
    int Count() const;
    /// @param index  from 0.
    /// @return the element; for an index out of range an empty value that all callers share.
    ZComVariant& GetAt(int index);
    /// Moves the elements into a plain array; the list keeps as many VT_EMPTY elements.
    /// @param out  receives the array, made with new[]; array and contents are the caller's.
    /// @return the number of elements; -1 when out is null or memory is short.
    int Parse(VARIANT** out);

private:
    std::list<ZComVariant> m_listVariant;
};

}  // namespace zrapi
