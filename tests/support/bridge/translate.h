// Between the two layouts of Cryptoki: numbers, handles and attribute templates.
#pragma once

#include <cstddef>
#include <vector>

#include "tests/support/bridge/windows_cryptoki.h"

namespace bridge {

/// A number or length for the Windows side; what is unavailable stays so.
windows::Ulong narrow(CK_ULONG value);
/// A length from the Windows side.
CK_ULONG widen(windows::Ulong value);

/// A handle for the Windows side; one that does not fit 32 bits gets a number of its own.
windows::Ulong narrowHandle(CK_ULONG handle);
CK_ULONG widenHandle(windows::Ulong handle);

/// An attribute template in the native layout. Values that are Cryptoki numbers are translated
/// through buffers of their own; all others are read and written where they are.
class Template {
public:
    Template(windows::Attribute* attributes, windows::Ulong count);

    CK_ATTRIBUTE* data() {
        return m_native.data();
    }
    CK_ULONG count() const {
        return m_native.size();
    }
    /// Hands lengths and values that a call wrote back.
    void writeBack();

private:
    windows::Attribute* m_windows;
    std::vector<CK_ATTRIBUTE> m_native;
    std::vector<CK_ULONG> m_numbers;
};

}  // namespace bridge
