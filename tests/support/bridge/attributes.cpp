// An attribute template converted to native, with wider numbers.
#include "tests/support/bridge/attributes.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <new>

namespace zr::bridge {
namespace {

using windows::Ulong;

/// Whether the value is a CK_ULONG or a list of them.
bool holdsNumbers(Ulong type) {
    static constexpr Ulong types[] = {
        0x000,       // CKA_CLASS
        0x080,       // CKA_CERTIFICATE_TYPE
        0x087,       // CKA_CERTIFICATE_CATEGORY
        0x088,       // CKA_JAVA_MIDP_SECURITY_DOMAIN
        0x08C,       // CKA_NAME_HASH_ALGORITHM
        0x100,       // CKA_KEY_TYPE
        0x121,       // CKA_MODULUS_BITS
        0x133,       // CKA_PRIME_BITS
        0x134,       // CKA_SUB_PRIME_BITS
        0x160,       // CKA_VALUE_BITS
        0x161,       // CKA_VALUE_LEN
        0x166,       // CKA_KEY_GEN_MECHANISM
        0x201,       // CKA_AUTH_PIN_FLAGS
        0x300,       // CKA_HW_FEATURE_TYPE
        0x500,       // CKA_MECHANISM_TYPE
        0x40000600,  // CKA_ALLOWED_MECHANISMS
    };
    return std::find(std::begin(types), std::end(types), type) != std::end(types);
}

/// Whether the value is a template: CKA_WRAP_TEMPLATE and its like.
bool holdsTemplate(Ulong type) {
    return type >= 0x40000211 && type <= 0x40000213;
}

constexpr Ulong kWidth = sizeof(Ulong);

/// No module has longer values, and twice this size can be allocated.
constexpr Ulong kLongestValue = 256U << 20;

/// The length of numbers in the native width. A remainder stays, so that a length
/// that no number has is still refused by the module.
CK_ULONG widenLength(Ulong length) {
    return length == windows::kUnavailable ? CK_UNAVAILABLE_INFORMATION
                                           : length / kWidth * sizeof(CK_ULONG) + length % kWidth;
}

Ulong narrowLength(CK_ULONG length) {
    return length == CK_UNAVAILABLE_INFORMATION
               ? windows::kUnavailable
               : windows::narrow(length / sizeof(CK_ULONG) * kWidth + length % sizeof(CK_ULONG));
}

}  // namespace

Attributes::Attributes(windows::Attribute* attributes, Ulong count) : m_windows(attributes) {
    // The caller is a Windows program: no exception may reach it.
    try {
        translate(attributes ? count : 0);
    } catch (const std::bad_alloc&) {
        m_refusal = CKR_HOST_MEMORY;
    }
    if (m_refusal == CKR_HOST_MEMORY) {
        m_native.clear();
    }
}

void Attributes::translate(Ulong count) {
    if (count > kLongestValue / sizeof(CK_ATTRIBUTE)) {
        m_refusal = CKR_HOST_MEMORY;
        return;
    }
    m_native.resize(count);
    m_numbers.resize(count);
    for (Ulong i = 0; i < count && m_refusal != CKR_HOST_MEMORY; ++i) {
        const windows::Attribute& from = m_windows[i];
        m_native[i] = {from.type, from.pValue, windows::widen(from.ulValueLen)};
        if (holdsTemplate(from.type)) {
            m_refusal = CKR_ATTRIBUTE_TYPE_INVALID;
        } else if (holdsNumbers(from.type)) {
            widenNumbers(i);
        }
    }
}

void Attributes::widenNumbers(Ulong index) {
    const windows::Attribute& from = m_windows[index];
    CK_ATTRIBUTE& to = m_native[index];
    to.ulValueLen = widenLength(from.ulValueLen);
    if (!from.pValue || from.ulValueLen == windows::kUnavailable) {
        return;
    }
    if (from.ulValueLen > kLongestValue) {
        m_refusal = CKR_HOST_MEMORY;
        return;
    }
    std::vector<CK_ULONG>& numbers = m_numbers[index];
    numbers.resize(from.ulValueLen / kWidth + 1);
    for (Ulong offset = 0; offset + kWidth <= from.ulValueLen; offset += kWidth) {
        Ulong number = 0;
        std::memcpy(&number, static_cast<const char*>(from.pValue) + offset, kWidth);
        numbers[offset / kWidth] = windows::widen(number);
    }
    to.pValue = numbers.data();
}

void Attributes::handBack() {
    for (std::size_t i = 0; i < m_native.size(); ++i) {
        const CK_ATTRIBUTE& from = m_native[i];
        windows::Attribute& to = m_windows[i];
        const Ulong room = to.ulValueLen;
        to.ulValueLen = holdsNumbers(to.type) ? narrowLength(from.ulValueLen)
                                              : windows::narrow(from.ulValueLen);
        if (m_numbers[i].empty() || to.ulValueLen > room) {
            continue;
        }
        for (Ulong offset = 0; offset + kWidth <= to.ulValueLen; offset += kWidth) {
            const Ulong number = windows::narrow(m_numbers[i][offset / kWidth]);
            std::memcpy(static_cast<char*>(to.pValue) + offset, &number, kWidth);
        }
    }
}

}  // namespace zr::bridge
