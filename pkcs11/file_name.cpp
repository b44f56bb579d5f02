// File names of a token.
#include "pkcs11/file_name.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <limits>

#include "runtime/string_convert.h"

FileName::FileName(BSTR name) {
    ZBstrToUtf8(name, m_text, sizeof m_text);
    const long long number = std::strtoll(m_text, nullptr, 10);
    m_number = static_cast<LONG>(std::clamp<long long>(number, std::numeric_limits<LONG>::min(),
                                                       std::numeric_limits<LONG>::max()));
    std::snprintf(m_sought, sizeof m_sought, "%d",
                  static_cast<int>(static_cast<ULONG>(m_number) - 1));
}
