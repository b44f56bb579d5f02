// Variants of any type for the arguments of a call, made from a fuzzer's input.
//
// Whatever a variant refers to is there and has the type it says: a caller in the same process can
// pass any of them. Types that do not exist come with a value of zeros.
#pragma once

#include <zrkey/automation.h>

#include <deque>
#include <vector>

#include "tests/fuzz/input.h"

namespace zr::fuzz {

/// Makes variants, and clears them at the end of its life.
class AnyVariants {
public:
    /// @param objects  what variants may refer to; borrowed.
    AnyVariants(Input& input, const std::vector<IDispatch*>& objects);
    AnyVariants(const AnyVariants&) = delete;
    AnyVariants& operator=(const AnyVariants&) = delete;
    ~AnyVariants();

    /// The maker's own; a copy of its 24 bytes is good as long as the maker lives.
    const VARIANT& make(int depth = 0);

private:
    void setString(VARIANT* variant);
    void setObject(VARIANT* variant);
    void setArray(VARIANT* variant, int depth);
    void fillArray(SAFEARRAY* array, VARTYPE element, int depth);
    void setReference(VARIANT* variant, int depth);

    Input& m_input;
    const std::vector<IDispatch*>& m_objects;
    std::deque<VARIANT> m_variants;
    std::vector<SAFEARRAY*> m_locked;
};

/// A string of any bytes, null or with an odd number of bytes too; the caller's.
BSTR makeAnyString(Input& input);

}  // namespace zr::fuzz
