// Variants as short texts, so that conversions can be written as tables.
//
//     "I2 -129"   VT_I2 with that value; "BSTR abc", "CY 15000" (in ten-thousandths), "EMPTY", ...
#pragma once

#include <zrkey/automation.h>

#include <string>
#include <string_view>
#include <vector>

namespace zr::test {

/// A variant that is cleared at the end of its life.
class OwnedVariant {
public:
    OwnedVariant() { VariantInit(&variant_); }
    ~OwnedVariant() { VariantClear(&variant_); }
    OwnedVariant(const OwnedVariant&) = delete;
    OwnedVariant& operator=(const OwnedVariant&) = delete;

    VARIANT* get() { return &variant_; }
    VARIANT* operator->() { return &variant_; }

private:
    VARIANT variant_;
};

/// A type by the name used in the texts, "UI4"; 0xffff for no such name.
VARTYPE typeNamed(std::string_view name);

/// Makes the variant that a text describes; the characters of a BSTR are bytes.
void parseVariant(std::string_view text, VARIANT* variant);

/// The value alone: "-129", "abc", "inf".
std::string valueText(const VARIANT& variant);

/// Converts, and gives the value, or "M" for DISP_E_TYPEMISMATCH, "O" for DISP_E_OVERFLOW,
/// "B" for DISP_E_BADVARTYPE, otherwise the result in hex. The target must be untouched by a
/// failure and have the type asked for after success, or the text says so.
std::string convertedText(VARIANT* source, VARTYPE type, USHORT flags = 0);

/// Equal, numbers by their value.
bool sameCell(const std::string& expected, const std::string& actual, VARTYPE type);

std::vector<std::string> split(std::string_view text);

BSTR makeText(std::string_view bytes);

}  // namespace zr::test
