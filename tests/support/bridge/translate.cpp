// Between the two layouts of Cryptoki.
#include "tests/support/bridge/translate.h"

#include <algorithm>
#include <cstring>

namespace bridge {
namespace {

// Handles that do not fit, by the number they were given, less kFirstMapped.
constexpr windows::Ulong kFirstMapped = 0x80000000;
std::vector<CK_ULONG> s_mapped;

/// Attributes whose value is a CK_ULONG (PKCS #11 v2.40, table 15 and the object classes).
bool isNumber(CK_ATTRIBUTE_TYPE type) {
    switch (type) {
        case 0x000:  // CKA_CLASS
        case 0x080:  // CKA_CERTIFICATE_TYPE
        case 0x087:  // CKA_CERTIFICATE_CATEGORY
        case 0x088:  // CKA_JAVA_MIDP_SECURITY_DOMAIN
        case 0x100:  // CKA_KEY_TYPE
        case 0x121:  // CKA_MODULUS_BITS
        case 0x133:  // CKA_PRIME_BITS
        case 0x134:  // CKA_SUB_PRIME_BITS
        case 0x160:  // CKA_VALUE_BITS
        case 0x161:  // CKA_VALUE_LEN
        case 0x166:  // CKA_KEY_GEN_MECHANISM
        case 0x300:  // CKA_HW_FEATURE_TYPE
        case 0x500:  // CKA_MECHANISM_TYPE
            return true;
        default:
            return false;
    }
}

}  // namespace

windows::Ulong narrow(CK_ULONG value) {
    return value > windows::kUnavailable ? windows::kUnavailable
                                         : static_cast<windows::Ulong>(value);
}

CK_ULONG widen(windows::Ulong value) {
    return value == windows::kUnavailable ? CK_UNAVAILABLE_INFORMATION : value;
}

windows::Ulong narrowHandle(CK_ULONG handle) {
    if (handle < kFirstMapped) {
        return static_cast<windows::Ulong>(handle);
    }
    const auto known = std::find(s_mapped.begin(), s_mapped.end(), handle);
    const auto index = known - s_mapped.begin();
    if (known == s_mapped.end()) {
        s_mapped.push_back(handle);
    }
    return kFirstMapped + static_cast<windows::Ulong>(index);
}

CK_ULONG widenHandle(windows::Ulong handle) {
    const std::size_t index = handle - kFirstMapped;
    return handle >= kFirstMapped && index < s_mapped.size() ? s_mapped[index] : handle;
}

Template::Template(windows::Attribute* attributes, windows::Ulong count)
    : m_windows(attributes), m_native(count), m_numbers(count) {
    for (windows::Ulong i = 0; i < count; ++i) {
        const windows::Attribute& from = attributes[i];
        CK_ATTRIBUTE& to = m_native[i];
        to = {from.type, from.pValue, from.ulValueLen};
        if (from.pValue && isNumber(from.type) && from.ulValueLen >= sizeof(windows::Ulong)) {
            windows::Ulong number = 0;
            std::memcpy(&number, from.pValue, sizeof number);
            m_numbers[i] = number;
            to.pValue = &m_numbers[i];
            to.ulValueLen = sizeof(CK_ULONG);
        }
    }
}

void Template::writeBack() {
    for (std::size_t i = 0; i < m_native.size(); ++i) {
        const CK_ATTRIBUTE& from = m_native[i];
        windows::Attribute& to = m_windows[i];
        if (isNumber(from.type) && from.ulValueLen == sizeof(CK_ULONG)) {
            to.ulValueLen = sizeof(windows::Ulong);
            if (from.pValue) {
                const windows::Ulong number = narrow(m_numbers[i]);
                std::memcpy(to.pValue, &number, sizeof number);
            }
        } else {
            to.ulValueLen = narrow(from.ulValueLen);
        }
    }
}

}  // namespace bridge
