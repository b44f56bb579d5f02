// Variants of any type for the arguments of a call, made from a fuzzer's input.
//
// Every variant refers to existing data of its stated type: a caller in the same process can
// pass any of them. Unknown types have a value of zeros. Some arrays contradict themselves: their
// elements have no size or that of another type, there is no memory or no dimension, or they are
// nested without end.
#pragma once

#include <zrkey/automation.h>

#include <deque>
#include <vector>

#include "tests/fuzz/input.h"

namespace zr::fuzz {

/// Makes variants, and clears them on destruction.
class AnyVariants {
public:
    /// @param objects  what variants may refer to; borrowed.
    AnyVariants(Input& input, const std::vector<IDispatch*>& objects);
    AnyVariants(const AnyVariants&) = delete;
    AnyVariants& operator=(const AnyVariants&) = delete;
    ~AnyVariants();

    /// Owned by this object; a copy of its 24 bytes is valid as long as this object lives.
    const VARIANT& make(int depth = 0);

private:
    /// An array as it was before it was made to contradict itself.
    struct Changed {
        SAFEARRAY* array;
        SAFEARRAY before;
    };

    void setString(VARIANT* variant);
    void setObject(VARIANT* variant);
    void setArray(VARIANT* variant, int depth);
    void fillArray(SAFEARRAY* array, VARTYPE element, int depth);
    void setReference(VARIANT* variant, int depth);
    void contradict(SAFEARRAY* array, VARTYPE element);
    void nest(SAFEARRAY* array);

    Input& m_input;
    const std::vector<IDispatch*>& m_objects;
    std::deque<VARIANT> m_variants;
    std::vector<SAFEARRAY*> m_locked;
    std::vector<Changed> m_changed;
    /// Variants in arrays that contain another array of the nest, or their own.
    std::vector<VARIANT*> m_nested;
    std::vector<SAFEARRAY*> m_nest;
};

/// A string of any bytes, also null or with an odd number of bytes; the caller frees it.
BSTR makeAnyString(Input& input);

}  // namespace zr::fuzz
