// Variants and byte arrays as the command makes and reads them.
#pragma once

#include <zrkey/automation.h>

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace zr::host {

/// The elements of an array while it is locked; none when it is no array of one dimension.
class ArrayAccess {
public:
    explicit ArrayAccess(SAFEARRAY* array);
    ~ArrayAccess();
    ArrayAccess(const ArrayAccess&) = delete;
    ArrayAccess& operator=(const ArrayAccess&) = delete;

    std::size_t size() const;
    void* data() const { return m_data; }

private:
    SAFEARRAY* m_array;
    void* m_data = nullptr;
};

/// Makes a VT_ARRAY|VT_UI1 of the bytes.
/// @param out  empty before; left so when there are more bytes than an array holds.
bool makeByteArray(std::string_view bytes, VARIANT& out);

/// One variant, cleared when it goes.
class Variant {
public:
    Variant();
    ~Variant();
    Variant(const Variant&) = delete;
    Variant& operator=(const Variant&) = delete;

    operator const VARIANT&() const { return m_variant; }
    VARIANT& get() { return m_variant; }
    /// For an out argument.
    VARIANT* receive();

    /// The bytes of a VT_ARRAY|VT_UI1. Throws std::bad_alloc when there is none.
    std::string bytes() const;
    /// The texts of a VT_ARRAY|VT_BSTR in UTF-8; none of another type.
    std::vector<std::string> texts() const;

private:
    VARIANT m_variant;
};

/// One BSTR, freed when it goes.
class Text {
public:
    Text() = default;
    explicit Text(std::string_view utf8);
    ~Text();
    Text(const Text&) = delete;
    Text& operator=(const Text&) = delete;

    BSTR get() const { return m_text; }
    /// For an out argument.
    BSTR* receive();
    std::string utf8() const;

private:
    BSTR m_text = nullptr;
};

}  // namespace zr::host
