// Conversion between the VARIANTs of Automation clients and the values of the object model.
#include "host/automation/variants.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <new>
#include <optional>
#include <string_view>

#include "host/automation/byte_arguments.h"
#include "host/automation/client_objects.h"
#include "host/automation/objects.h"
#include "host/automation/variant_view.h"

namespace zr::automation {
namespace {

using host::ObjectRef;
using host::ParameterKind;
using host::Value;
using host::WideText;

constexpr const char* kNoNumber = "is not a number";

[[noreturn]] void refuse(const char* problem, HRESULT result = DISP_E_TYPEMISMATCH) {
    throw WrongValue{result, problem};
}

Value toInteger(double number) {
    if (std::abs(number) > -static_cast<double>(std::numeric_limits<LONG>::min()) ||
        number > std::numeric_limits<LONG>::max()) {
        refuse("does not fit 32 bits", DISP_E_OVERFLOW);
    }
    if (std::trunc(number) != number) {
        // Also NaN.
        refuse("is not a whole number");
    }
    return number;
}

/// A whole number in decimal, as an input box returns it.
double numberOf(std::wstring_view text) {
    const bool isNegative = text.starts_with(L'-');
    text.remove_prefix(isNegative ? 1 : 0);
    const auto isDigit = [](wchar_t unit) { return unit >= L'0' && unit <= L'9'; };
    if (text.empty() || !std::ranges::all_of(text, isDigit)) {
        refuse(kNoNumber);
    }
    double number = 0;
    for (const wchar_t digit : text) {
        number = number * 10 + (digit - L'0');
    }
    return isNegative ? -number : number;
}

std::wstring_view textIn(const VARIANT& variant) {
    return {variant.bstrVal, SysStringLen(variant.bstrVal)};
}

Value toInteger(const VARIANT& variant, const char* problem = kNoNumber) {
    if (variant.vt == VT_BSTR) {
        return toInteger(numberOf(textIn(variant)));
    }
    const std::optional<double> number = numberIn(variant);
    if (!number) {
        refuse(problem);
    }
    return toInteger(*number);
}

Value toText(const VARIANT& variant) {
    // A number is refused: the PIN 0123 would arrive as 123, a wrong PIN.
    if (variant.vt != VT_BSTR) {
        refuse("is not a text");
    }
    return host::toWideText(variant.bstrVal);
}

Value toCertificate(const VARIANT& variant) {
    const bool isObject = variant.vt == VT_DISPATCH || variant.vt == VT_UNKNOWN;
    ObjectRef object = unwrap(isObject ? variant.punkVal : nullptr);
    if (!object || object->objectClass() != host::ObjectClass::kCertificate) {
        refuse("is not a certificate");
    }
    return object;
}

zrkey::Variant toVariant(const WideText& text) {
    zrkey::Text copy;
    copy.reset(SysAllocStringLen(text.units.data(), static_cast<UINT>(text.units.size())));
    if (!copy) {
        throw std::bad_alloc();
    }
    return zrkey::Variant::fromText(std::move(copy));
}

zrkey::Variant toVariant(const host::Bytes& bytes) {
    const auto size = static_cast<ULONG>(bytes.bytes.size());
    zrkey::Variant made = zrkey::Variant::fromArray(VT_UI1, SafeArrayCreateVector(VT_UI1, 0, size));
    const zrkey::ArrayLock lock(made.get().parray);
    if (!lock) {
        throw std::bad_alloc();
    }
    std::ranges::copy(bytes.bytes, static_cast<char*>(lock.data()));
    return made;
}

/// An array of variants: engines do not index one of texts.
zrkey::Variant toVariant(const host::WideTexts& texts) {
    const auto size = static_cast<ULONG>(texts.size());
    zrkey::Variant made =
        zrkey::Variant::fromArray(VT_VARIANT, SafeArrayCreateVector(VT_VARIANT, 0, size));
    const zrkey::ArrayLock lock(made.get().parray);
    if (!lock) {
        throw std::bad_alloc();
    }
    VARIANT* element = static_cast<VARIANT*>(lock.data());
    for (const WideText& text : texts) {
        *element++ = toVariant(text).release();
    }
    return made;
}

/// Makes the variants that a result can be.
class Maker {
public:
    explicit Maker(bool isObject) : m_isObject(isObject) {}

    zrkey::Variant operator()(host::Nothing) const { return {}; }
    zrkey::Variant operator()(host::Null) const {
        zrkey::Variant made;
        made.get().vt = m_isObject ? VT_DISPATCH : VT_NULL;
        return made;
    }
    zrkey::Variant operator()(bool value) const { return zrkey::Variant::fromBool(value); }
    zrkey::Variant operator()(double value) const {
        const bool isInteger = std::trunc(value) == value &&
                               value >= std::numeric_limits<LONG>::min() &&
                               value <= std::numeric_limits<LONG>::max();
        return isInteger ? zrkey::Variant::fromNumber(static_cast<LONG>(value))
                         : zrkey::Variant::fromReal(value);
    }
    zrkey::Variant operator()(const ObjectRef& object) const {
        return zrkey::Variant::fromObject(wrap(object));
    }
    template <class Other>
    zrkey::Variant operator()(const Other& value) const {
        return toVariant(value);
    }

private:
    bool m_isObject;
};

}  // namespace

bool isNotGiven(const VARIANT& variant) {
    const VARIANT view = viewOf(variant);
    return view.vt == VT_ERROR && view.scode == DISP_E_PARAMNOTFOUND;
}

bool isMissing(const VARIANT& variant) {
    return viewOf(variant).vt == VT_EMPTY || isNotGiven(variant);
}

Value toValue(const VARIANT& variant, ParameterKind kind) {
    const VARIANT view = viewOf(variant);
    switch (kind) {
        case ParameterKind::kInteger:
            return toInteger(view);
        case ParameterKind::kText:
            return toText(view);
        case ParameterKind::kBytes:
            return readBytes(view);
        case ParameterKind::kCertificate:
            return toCertificate(view);
        case ParameterKind::kTextOrIndex:
            return view.vt == VT_BSTR ? toText(view) : toInteger(view, "is not a text or a number");
        default:
            return host::Null();
    }
}

void store(const Value& value, bool isObject, VARIANT& result) {
    result = std::visit(Maker(isObject), value).release();
}

}  // namespace zr::automation
