// An attribute template made native, with the numbers in it widened.
//
//     Attributes attributes(template, count);
//     const CK_RV rv = attributes.refusal() != CKR_OK
//                          ? attributes.refusal()
//                          : get(..., attributes.native(), attributes.count());
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

    /// Why the call is not to be made: an attribute's value is itself a template, which is not
    /// translated, or there is no memory for it. CKR_OK when it is to be made.
    CK_RV refusal() const { return m_refusal; }
    CK_ATTRIBUTE* native() { return m_native.empty() ? nullptr : m_native.data(); }
    CK_ULONG count() const { return m_native.size(); }
    /// Writes lengths and numbers that a C_GetAttributeValue gave into the template.
    void handBack();

private:
    void translate(windows::Ulong count);
    void widenNumbers(windows::Ulong index);

    windows::Attribute* m_windows;
    std::vector<CK_ATTRIBUTE> m_native;
    std::vector<std::vector<CK_ULONG>> m_numbers;
    CK_RV m_refusal = CKR_OK;
};

}  // namespace zr::bridge
