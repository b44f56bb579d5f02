// File names of a token: numbers from 1 to 65536, written in decimal.
//
// Creation uses the name as the label; a lookup uses the number minus one, so a file created as 7
// is found as 8. Hosts depend on it: they number files differently when they create and look up.
#pragma once

#include <zrkey/automation.h>

/// A file name and the number it stands for.
class FileName {
public:
    /// @param name  null and names of 128 bytes or more read as the number 0.
    explicit FileName(BSTR name);

    /// The number at the start of the name; 0 without one. A number that does not fit becomes the
    /// nearest 32-bit number.
    LONG number() const { return m_number; }
    /// Whether the number is from 1 to 65536.
    bool isValid() const { return m_number != 0 && isInRange(); }
    /// Whether the number minus one is from 0 to 65535.
    bool isInRange() const { return static_cast<ULONG>(m_number) - 1 <= 65535; }

    /// The label for creation: the name unchanged.
    const char* createdLabel() const { return m_text; }
    /// The label for a lookup: the number minus one, in decimal.
    const char* soughtLabel() const { return m_sought; }

private:
    char m_text[128] = {};
    char m_sought[16] = {};
    LONG m_number;
};
