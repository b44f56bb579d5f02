// Byte data in variants: one-dimensional arrays under VT_ARRAY | VT_UI1.
#pragma once

#include <zrkey/automation.h>

#include <cstddef>
#include <cstring>
#include <limits>

namespace zr {

inline constexpr VARTYPE kByteArray = VT_ARRAY | VT_UI1;

/// Whether a variant holds byte data.
inline bool isByteArray(const VARIANT& variant) {
    return variant.vt == kByteArray && variant.parray && variant.parray->cDims == 1;
}

/// The bytes of a variant for which isByteArray returns true. Locks the array while it lives.
class AccessedBytes {
public:
    explicit AccessedBytes(const VARIANT& variant) : m_array(variant.parray) {
        void* data = nullptr;
        if (SUCCEEDED(SafeArrayAccessData(m_array, &data))) {
            m_isAccessed = true;
            m_data = static_cast<unsigned char*>(data);
            m_length = m_data ? m_array->rgsabound[0].cElements : 0;
        }
    }
    AccessedBytes(const AccessedBytes&) = delete;
    AccessedBytes& operator=(const AccessedBytes&) = delete;
    ~AccessedBytes() {
        if (m_isAccessed) {
            SafeArrayUnaccessData(m_array);
        }
    }

    /// Whether the bytes can be read. An array that cannot be locked, or that has elements but no
    /// memory for them, must not be taken for an empty one.
    bool isAccessed() const {
        return m_isAccessed &&
               (m_array->rgsabound[0].cElements == 0 || (m_data && m_array->cbElements > 0));
    }
    unsigned char* data() const { return m_data; }
    ULONG length() const { return m_length; }

private:
    SAFEARRAY* m_array;
    bool m_isAccessed = false;
    unsigned char* m_data = nullptr;
    ULONG m_length = 0;
};

/// Stores bytes in a variant, which is overwritten without being cleared.
/// @param element  the element type of the array, VT_UI1 or VT_I1; the variant's type is
///                 VT_ARRAY | VT_UI1 in both cases.
/// @return false, and the variant untouched, when the array cannot be made or accessed.
inline bool storeBytes(const void* bytes, std::size_t length, VARTYPE element, VARIANT* out) {
    if (length > std::numeric_limits<ULONG>::max()) {
        return false;
    }
    SAFEARRAYBOUND bound = {static_cast<ULONG>(length), 0};
    SAFEARRAY* array = SafeArrayCreate(element, 1, &bound);
    void* data = nullptr;
    if (FAILED(SafeArrayAccessData(array, &data))) {
        if (array) {
            SafeArrayDestroy(array);
        }
        return false;
    }
    if (length > 0) {
        std::memcpy(data, bytes, length);
    }
    SafeArrayUnaccessData(array);
    out->vt = kByteArray;
    out->parray = array;
    return true;
}

}  // namespace zr
