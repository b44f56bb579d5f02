// Conversions of variants: numbers convert as in a small independent model, all other types convert
// without a crash or a leak.
#include <cmath>
#include <cstring>
#include <limits>
#include <optional>
#include <string>
#include <vector>

#include "runtime/zcom_variant.h"
#include "tests/fuzz/any_variant.h"
#include "tests/fuzz/expect.h"
#include "tests/fuzz/input.h"

namespace {

using zr::fuzz::expect;
using Wide = __int128;

/// The value of an integer variant.
std::optional<Wide> integerOf(const VARIANT& variant) {
    switch (variant.vt) {
        case VT_I1:
            return static_cast<signed char>(variant.cVal);
        case VT_UI1:
            return variant.bVal;
        case VT_I2:
            return variant.iVal;
        case VT_UI2:
            return variant.uiVal;
        case VT_I4:
            return variant.lVal;
        case VT_INT:
            return variant.intVal;
        case VT_UI4:
            return variant.ulVal;
        case VT_UINT:
            return variant.uintVal;
        case VT_I8:
            return variant.llVal;
        case VT_UI8:
            return variant.ullVal;
        default:
            return std::nullopt;
    }
}

struct Range {
    Wide least;
    Wide most;
};

template <class Number>
Range rangeOf() {
    return {std::numeric_limits<Number>::min(), std::numeric_limits<Number>::max()};
}

std::optional<Range> rangeOf(VARTYPE type) {
    switch (type) {
        case VT_I1:
            return rangeOf<signed char>();
        case VT_UI1:
            return rangeOf<BYTE>();
        case VT_I2:
            return rangeOf<short>();
        case VT_UI2:
            return rangeOf<unsigned short>();
        case VT_I4:
        case VT_INT:
            return rangeOf<LONG>();
        case VT_UI4:
        case VT_UINT:
            return rangeOf<ULONG>();
        case VT_I8:
            return rangeOf<LONGLONG>();
        case VT_UI8:
            return rangeOf<ULONGLONG>();
        default:
            return std::nullopt;
    }
}

/// Conversions between two types of one width keep the bits.
bool areOfOneWidth(VARTYPE a, VARTYPE b) {
    const std::optional<Range> first = rangeOf(a);
    const std::optional<Range> second = rangeOf(b);
    return first && second && first->most - first->least == second->most - second->least;
}

/// Integers keep their value or overflow.
void checkInteger(const VARIANT& source, Wide value, VARTYPE type) {
    const std::optional<Range> range = rangeOf(type);
    zrapi::ZComVariant result;
    const HRESULT hr = result.ChangeType(type, &source);
    if (type == VT_BOOL) {
        expect(hr == S_OK && result.boolVal == (value != 0 ? VARIANT_TRUE : VARIANT_FALSE),
               "a number is true unless it is zero");
    } else if (areOfOneWidth(source.vt, type)) {
        const std::optional<Wide> kept = hr == S_OK ? integerOf(result) : std::nullopt;
        expect(kept && (*kept - value) % (range->most - range->least + 1) == 0,
               "the bits are kept");
    } else if (range && value >= range->least && value <= range->most) {
        expect(hr == S_OK && result.vt == type && integerOf(result) == value, "a value is kept");
    } else if (range) {
        expect(hr == DISP_E_OVERFLOW, "what does not fit overflows");
    }
}

/// A double halfway between two integers is rounded to the even one.
void checkReal(const VARIANT& source, VARTYPE type) {
    const std::optional<Range> range = rangeOf(type);
    const double rounded = std::nearbyint(source.dblVal);
    // The ends of the 64-bit range have other rules, tested elsewhere.
    if (!range || type == VT_I8 || type == VT_UI8 || !std::isfinite(rounded) ||
        std::fabs(rounded) > 1e15) {
        return;
    }
    checkInteger(source, static_cast<Wide>(rounded), type);
}

VARIANT readVariant(zr::fuzz::Input& input) {
    VARIANT variant = {};
    variant.vt = static_cast<VARTYPE>(input.below(24));
    if (variant.vt == VT_VARIANT || variant.vt == VT_DECIMAL || variant.vt == 15) {
        variant.vt = VT_EMPTY;  // the data of these types is not in the variant's 8 bytes
    }
    if (variant.vt == VT_BSTR) {
        const std::string bytes = input.text();
        variant.bstrVal = SysAllocStringLen(nullptr, static_cast<UINT>(bytes.size() / 2));
        bytes.copy(reinterpret_cast<char*>(variant.bstrVal), bytes.size() / 2 * 2);
    } else if (variant.vt != VT_DISPATCH && variant.vt != VT_UNKNOWN) {
        variant.llVal = input.number<LONGLONG>();
    }
    return variant;
}

void checkConversion(VARIANT source, VARTYPE type, USHORT flags) {
    zrapi::ZComVariant result;
    const HRESULT hr = VariantChangeType(&result, &source, flags, type);
    expect(SUCCEEDED(hr) ? result.vt == type : result.vt == VT_EMPTY,
           "the result has the type asked for, or nothing");
    // A reference to the value converts as the value does.
    VARIANT reference = {};
    reference.vt = static_cast<VARTYPE>(VT_BYREF | source.vt);
    reference.byref = &source.llVal;
    zrapi::ZComVariant referred;
    if (source.vt != VT_EMPTY && source.vt != VT_NULL) {
        expect(VariantChangeType(&referred, &reference, flags, type) == hr,
               "a reference converts as what it refers to");
    }
}

/// Integers to text, as by the C++ library, and back.
void checkDigits(const VARIANT& source, Wide value) {
    const bool isNegative = value < 0;
    const auto magnitude = static_cast<unsigned long long>(isNegative ? -value : value);
    const std::string digits = (isNegative ? "-" : "") + std::to_string(magnitude);
    zrapi::ZComVariant text;
    expect(text.ChangeType(VT_BSTR, &source) == S_OK, "a number has a text");
    expect(std::string(text.bstrVal, text.bstrVal + SysStringLen(text.bstrVal)) == digits,
           "the text of a number is its digits");
    zrapi::ZComVariant again;
    expect(again.ChangeType(source.vt, &text) == S_OK && integerOf(again) == value,
           "a number comes back from its text");
}

/// Reals to text of 15 digits, and back.
void checkRealText(double value) {
    if (!std::isfinite(value) || (value != 0 && std::fabs(value) < 1e-290)) {
        return;
    }
    VARIANT source = {};
    source.vt = VT_R8;
    source.dblVal = value;
    zrapi::ZComVariant text;
    expect(text.ChangeType(VT_BSTR, &source) == S_OK, "a real has a text");
    zrapi::ZComVariant again;
    const HRESULT hr = again.ChangeType(VT_R8, &text);
    // The largest reals may be rounded up past the range.
    expect(hr == S_OK || (hr == DISP_E_OVERFLOW && std::fabs(value) > 1.7e308),
           "the text of a real is one");
    expect(FAILED(hr) || std::fabs(again.dblVal - value) <= std::fabs(value) * 1e-14,
           "a real comes back from its text in 15 digits");
}

/// Integers to reals: the nearest real.
void checkToReal(const VARIANT& source, Wide value) {
    zrapi::ZComVariant real;
    expect(real.ChangeType(VT_R8, &source) == S_OK && real.dblVal == static_cast<double>(value),
           "an integer becomes the nearest real");
}

/// The data of any variant is copied, moved and freed once; conversions keep the source.
void checkOwnership(const VARIANT& source, VARTYPE type, USHORT flags) {
    const VARIANT before = source;
    zrapi::ZComVariant copy(source);
    zrapi::ZComVariant assigned;
    assigned = copy;
    expect(assigned.vt == copy.vt, "an assigned variant has the type of its source");
    BSTR text = nullptr;
    const HRESULT hr = copy.CopyTo(&text);
    expect((hr == S_OK) == (copy.vt == VT_BSTR) && (hr == S_OK) == (text != nullptr),
           "a string and nothing else is copied as one");
    expect(hr != S_OK || (SysStringByteLen(text) == SysStringByteLen(copy.bstrVal)),
           "a string is copied with all of its bytes");
    SysFreeString(text);
    VARIANT detached = {};
    const VARTYPE held = copy.vt;
    expect(copy.Detach(&detached) == S_OK && copy.vt == VT_EMPTY && detached.vt == held,
           "what is detached is the other's");
    expect(assigned.Attach(&detached) == S_OK && detached.vt == VT_EMPTY && assigned.vt == held,
           "what is attached is the object's own");
    ULARGE_INTEGER size = {};
    expect(FAILED(assigned.GetSizeMax(&size)) || size.QuadPart >= sizeof(VARTYPE),
           "a size holds the type");
    zrapi::ZComVariant converted;
    expect(SUCCEEDED(VariantChangeType(&converted, &source, flags, type))
               ? converted.vt == type
               : converted.vt == VT_EMPTY,
           "the result has the type asked for, or nothing");
    assigned.ChangeType(type);
    expect(std::memcmp(&before, &source, sizeof before) == 0, "a source stays as it is");
}

void checkComparison(const VARIANT& a, const VARIANT& b) {
    const zrapi::ZComVariant left(a);
    expect((left == b) != (left != b), "unequal is what is not equal");
    expect(!(left < b) || !(left > b), "nothing is less and greater");
    left.GetSize();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    zr::fuzz::Input input(data, size);
    const bool isAny = input.byte() >= 128;
    const auto type = static_cast<VARTYPE>(input.below(24));
    const auto flags = static_cast<USHORT>(input.below(16));
    if (isAny) {
        const std::vector<IDispatch*> noObjects;
        zr::fuzz::AnyVariants variants(input, noObjects);
        checkOwnership(variants.make(), input.flag() ? input.number<VARTYPE>() : type, flags);
        return 0;
    }
    VARIANT source = readVariant(input);
    VARIANT other = readVariant(input);
    checkConversion(source, type, flags);
    if (const std::optional<Wide> value = integerOf(source)) {
        checkInteger(source, *value, type);
        checkDigits(source, *value);
        checkToReal(source, *value);
    }
    if (source.vt == VT_R8) {
        checkReal(source, type);
        checkRealText(source.dblVal);
    }
    checkComparison(source, other);
    VariantClear(&source);
    VariantClear(&other);
    return 0;
}
