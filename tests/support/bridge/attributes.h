// An attribute template made native, with the numbers in it widened.
//
//     Attributes attributes(template, count);
//     const CK_RV rv = attributes.isTranslated() ? get(..., attributes.native(),
//     attributes.count())
//                                                : CKR_ATTRIBUTE_TYPE_INVALID;
//     attributes.handBack();
#pragma once

#include <vector>

#include "tests/support/bridge/windows_layout.h"

namespace zr::bridge {

class Attributes {
public:
    /// Borrows the template for its own life.
    Attributes(windows::Attribute* attributes, windows::Ulong count);
    Attributes(const Attributes&) = delete;
    Attributes& operator=(const Attributes&) = delete;

    /// False when an attribute's value is itself a template, which is not translated.
    bool isTranslated() const { return m_isTranslated; }
    CK_ATTRIBUTE* native() { return m_native.empty() ? nullptr : m_native.data(); }
    CK_ULONG count() const { return m_native.size(); }
    /// Writes lengths and numbers that a C_GetAttributeValue gave into the template.
    void handBack();

private:
    windows::Attribute* m_windows;
    std::vector<CK_ATTRIBUTE> m_native;
    std::vector<std::vector<CK_ULONG>> m_numbers;
    bool m_isTranslated = true;
};

}  // namespace zr::bridge
