// Conversion between script values and automation variants.
#pragma once

#include <zrkey/automation.h>

#include <duktape.h>

#include <cstddef>
#include <vector>

namespace zr::host {

/// Variants in a row, cleared when it goes.
class VariantList {
public:
    explicit VariantList(std::size_t count);
    ~VariantList();
    VariantList(const VariantList&) = delete;
    VariantList& operator=(const VariantList&) = delete;

    VARIANT& operator[](std::size_t index) { return m_variants[index]; }
    VARIANT* data() { return m_variants.data(); }

private:
    std::vector<VARIANT> m_variants;
};

/// The most bytes that a script value takes when it is converted for a call.
std::size_t argumentSize(duk_context* script, duk_idx_t index);

/// Converts a script value for a call: number VT_R8, string VT_BSTR, boolean VT_BOOL, null VT_NULL,
/// undefined VT_EMPTY, wrapped object VT_DISPATCH, byte buffer VT_ARRAY|VT_UI1.
/// @param out  empty before; left so when the value cannot be passed.
/// @return false for a value of another kind.
bool readArgument(duk_context* script, duk_idx_t index, VARIANT& out);

/// Pushes a call's result as a script value; a reference in it passes to the script.
/// @return false, with nothing pushed, for a type that scripts have no value for.
bool pushResult(duk_context* script, VARIANT& value);

}  // namespace zr::host
