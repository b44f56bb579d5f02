// File names of a token: numbers from 1 to 65536, written in decimal.
//
// A file is created under its name as label but looked up under the number below it, so a file
// created as 7 is found as 8. Hosts depend on it: they create and look up by different numberings.
#pragma once

#include <zrkey/automation.h>

/// A file name and the number that it reads as.
class FileName {
public:
    /// @param name  null and names of 128 bytes or more read as the number 0.
    explicit FileName(BSTR name);

    /// The number at the start of the name; 0 when there is none. What does not fit is the nearest
    /// 32-bit number.
    LONG number() const { return m_number; }
    /// Whether the number is from 1 to 65536.
    bool isValid() const { return m_number != 0 && isInRange(); }
    /// Whether the number below it is from 0 to 65535.
    bool isInRange() const { return static_cast<ULONG>(m_number) - 1 <= 65535; }

    /// The label that creation gives: the name as it is.
    const char* createdLabel() const { return m_text; }
    /// The label that a look-up asks for: the number below, in decimal.
    const char* soughtLabel() const { return m_sought; }

private:
    char m_text[128] = {};
    char m_sought[16] = {};
    LONG m_number;
};
