// Variants as short texts, so that conversions can be written as tables.
//
//     "I2 -129"   VT_I2 with that value; "BSTR abc", "CY 15000" (in ten-thousandths), "EMPTY", ...
#pragma once

#include <zrkey/automation.h>

#include <string>
#include <string_view>
#include <vector>

namespace zr::test {

/// A variant that clears itself when it is destroyed.
class OwnedVariant {
public:
    OwnedVariant() { VariantInit(&m_variant); }
    ~OwnedVariant() { VariantClear(&m_variant); }
    OwnedVariant(const OwnedVariant&) = delete;
    OwnedVariant& operator=(const OwnedVariant&) = delete;

    VARIANT* get() { return &m_variant; }
    VARIANT* operator->() { return &m_variant; }

private:
    VARIANT m_variant;
};

/// The type with a name as in the texts, such as "UI4"; 0xffff when there is none.
VARTYPE typeNamed(std::string_view name);

/// Sets a variant to the value of a text. The characters of a BSTR are single bytes.
void parseVariant(std::string_view text, VARIANT* variant);

/// The value without its type: "-129", "abc", "inf".
std::string valueText(const VARIANT& variant);

/// Converts a variant.
/// @return the value; "M" for DISP_E_TYPEMISMATCH, "O" for DISP_E_OVERFLOW, "B" for
///         DISP_E_BADVARTYPE, any other failure in hex. Another text when the target changed
///         although the conversion failed, or has not the requested type.
std::string convertedText(VARIANT* source, VARTYPE type, USHORT flags = 0);

/// Whether two results are equal; numbers are compared by value.
bool sameCell(const std::string& expected, const std::string& actual, VARTYPE type);

std::vector<std::string> split(std::string_view text);

BSTR makeText(std::string_view bytes);

}  // namespace zr::test
