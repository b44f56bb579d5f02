// zrapi::ZComVariantArray: a list of variants in insertion order.
#include "runtime/zcom_variant_array.h"

#include <iterator>
#include <new>

namespace zrapi {

int ZComVariantArray::Add(ZComVariant& v) {
    try {
        m_listVariant.push_back(v);
    } catch (const std::bad_alloc&) {
        // The unchanged count shows the failure.
    }
    return Count();
}

int ZComVariantArray::Count() const {
    return static_cast<int>(m_listVariant.size());
}

ZComVariant& ZComVariantArray::GetAt(int index) {
    static ZComVariant var;
    if (index < 0 || index >= Count()) {
        return var;
    }
    return *std::next(m_listVariant.begin(), index);
}

int ZComVariantArray::Parse(VARIANT** out) {
    if (!out) {
        return -1;
    }
    auto* variants = new (std::nothrow) VARIANT[m_listVariant.size()]();
    if (!variants) {
        return -1;
    }
    VARIANT* next = variants;
    for (ZComVariant& element : m_listVariant) {
        element.Detach(next++);
    }
    *out = variants;
    return Count();
}

}  // namespace zrapi
