// An attribute template converted to native, with wider numbers.
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
    /// Borrows the template; the template must outlive this object.
    Attributes(windows::Attribute* attributes, windows::Ulong count);
    Attributes(const Attributes&) = delete;
    Attributes& operator=(const Attributes&) = delete;

    /// The reason not to make the call: an attribute's value is itself a template, which is not
    /// translated, or out of memory. CKR_OK when the call can be made.
    CK_RV refusal() const { return m_refusal; }
    CK_ATTRIBUTE* native() { return m_native.empty() ? nullptr : m_native.data(); }
    CK_ULONG count() const { return m_native.size(); }
    /// Writes the lengths and numbers of a C_GetAttributeValue into the template.
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
