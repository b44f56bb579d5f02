// zrapi::ZComVariantArray: a list of variants in insertion order.
#pragma once

#include <zrkey/automation.h>

#include <list>

#include "runtime/zcom_variant.h"

namespace zrapi {

class ZComVariantArray {
public:
    /// Appends a copy of v. A copy that fails is stored as VT_ERROR with the result.
    /// @return the number of elements, unchanged when out of memory.
    int Add(ZComVariant& v);
    int Count() const;
    /// @param index  from 0.
    /// @return the element; for an index out of range, an empty variant that all callers share.
    ZComVariant& GetAt(int index);
    /// Moves the elements into a plain array. The elements of the list become VT_EMPTY.
    /// @param out  receives the array, from new[]; the caller owns it and its contents.
    /// @return the number of elements; -1 when out is null or out of memory.
    int Parse(VARIANT** out);

private:
    std::list<ZComVariant> m_listVariant;
};

}  // namespace zrapi
