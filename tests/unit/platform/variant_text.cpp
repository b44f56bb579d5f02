// Variants as short texts.
#include "tests/unit/platform/variant_text.h"

#include <charconv>
#include <cmath>
#include <cstdio>
#include <sstream>

namespace zr::test {
namespace {

struct TypeName {
    const char* name;
    VARTYPE type;
};

constexpr TypeName kTypeNames[] = {
    {"EMPTY", VT_EMPTY}, {"NULL", VT_NULL}, {"I1", VT_I1},     {"UI1", VT_UI1},    {"I2", VT_I2},
    {"UI2", VT_UI2},     {"I4", VT_I4},     {"UI4", VT_UI4},   {"I8", VT_I8},      {"UI8", VT_UI8},
    {"INT", VT_INT},     {"UINT", VT_UINT}, {"R4", VT_R4},     {"R8", VT_R8},      {"CY", VT_CY},
    {"DATE", VT_DATE},   {"BOOL", VT_BOOL}, {"BSTR", VT_BSTR}, {"ERROR", VT_ERROR}};

template <class Value>
Value number(std::string_view text) {
    Value value{};
    std::from_chars(text.data(), text.data() + text.size(), value);
    return value;
}

}  // namespace

VARTYPE typeNamed(std::string_view name) {
    for (const TypeName& entry : kTypeNames) {
        if (name == entry.name) {
            return entry.type;
        }
    }
    return 0xffff;
}

BSTR makeText(std::string_view bytes) {
    BSTR text = SysAllocStringLen(nullptr, static_cast<UINT>(bytes.size()));
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        text[i] = static_cast<unsigned char>(bytes[i]);
    }
    return text;
}

void parseVariant(std::string_view text, VARIANT* variant) {
    const std::size_t blank = text.find(' ');
    const std::string_view value =
        blank == std::string_view::npos ? std::string_view() : text.substr(blank + 1);
    VariantInit(variant);
    variant->vt = typeNamed(text.substr(0, blank));
    switch (variant->vt) {
        case VT_R4:
            variant->fltVal = number<float>(value);
            break;
        case VT_R8:
            variant->dblVal = number<double>(value);
            break;
        case VT_DATE:
            variant->date = number<double>(value);
            break;
        case VT_BSTR:
            variant->bstrVal = makeText(value);
            break;
        case VT_UI8:
            variant->ullVal = number<ULONGLONG>(value);
            break;
        case VT_EMPTY:
        case VT_NULL:
            break;
        default:
            // Little-endian: the narrower members are the low bytes.
            variant->llVal = number<LONGLONG>(value);
            break;
    }
}

std::string valueText(const VARIANT& variant) {
    char text[64] = "";
    switch (variant.vt) {
        case VT_EMPTY:
            return "EMPTY";
        case VT_NULL:
            return "NULL";
        case VT_I1:
            return std::to_string(static_cast<signed char>(variant.cVal));
        case VT_UI1:
            return std::to_string(variant.bVal);
        case VT_I2:
            return std::to_string(variant.iVal);
        case VT_BOOL:
            return std::to_string(variant.boolVal);
        case VT_UI2:
            return std::to_string(variant.uiVal);
        case VT_I4:
        case VT_INT:
        case VT_ERROR:
            return std::to_string(variant.lVal);
        case VT_UI4:
        case VT_UINT:
            return std::to_string(variant.ulVal);
        case VT_I8:
        case VT_CY:
            return std::to_string(variant.llVal);
        case VT_UI8:
            return std::to_string(variant.ullVal);
        case VT_R4:
            std::to_chars(text, text + sizeof text - 1, variant.fltVal);
            return text;
        case VT_R8:
        case VT_DATE:
            std::to_chars(text, text + sizeof text - 1, variant.dblVal);
            return text;
        case VT_BSTR: {
            std::string result;
            for (UINT i = 0; i < SysStringLen(variant.bstrVal); ++i) {
                result += static_cast<char>(variant.bstrVal[i]);
            }
            return result;
        }
        default:
            std::snprintf(text, sizeof text, "type %04x", static_cast<unsigned>(variant.vt));
            return text;
    }
}

std::string convertedText(VARIANT* source, VARTYPE type, USHORT flags) {
    OwnedVariant target;
    target->vt = VT_I4;
    target->lVal = 0x5a5a5a5a;
    const HRESULT hr = VariantChangeType(target.get(), source, flags, type);
    if (SUCCEEDED(hr)) {
        return target->vt == type ? valueText(*target.get())
                                  : "wrong type " + std::to_string(target->vt);
    }
    if (target->vt != VT_I4 || target->lVal != 0x5a5a5a5a) {
        return "touched the target";
    }
    switch (hr) {
        case DISP_E_TYPEMISMATCH:
            return "M";
        case DISP_E_OVERFLOW:
            return "O";
        case DISP_E_BADVARTYPE:
            return "B";
        default: {
            std::ostringstream text;
            text << std::hex << static_cast<std::uint32_t>(hr);
            return text.str();
        }
    }
}

bool sameCell(const std::string& expected, const std::string& actual, VARTYPE type) {
    if (expected == actual) {
        return true;
    }
    if (type != VT_R4 && type != VT_R8 && type != VT_DATE) {
        return false;
    }
    OwnedVariant a;
    OwnedVariant b;
    const char* const prefix = type == VT_R4 ? "R4 " : "R8 ";
    const bool numbers = expected.find_first_of("MOB") == std::string::npos &&
                         actual.find_first_of("MOB") == std::string::npos;
    parseVariant(prefix + expected, a.get());
    parseVariant(prefix + actual, b.get());
    return numbers && a->ullVal == b->ullVal;
}

std::vector<std::string> split(std::string_view text) {
    std::istringstream stream{std::string(text)};
    std::vector<std::string> words;
    for (std::string word; stream >> word;) {
        words.push_back(word);
    }
    return words;
}

}  // namespace zr::test
