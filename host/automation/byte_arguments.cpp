// The forms in which Automation clients pass bytes.
#include "host/automation/byte_arguments.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>
#include <string>

#include "host/automation/variant_view.h"
#include "host/automation/variants.h"

namespace zr::automation {
namespace {

constexpr double kLargestByte = std::numeric_limits<unsigned char>::max();
constexpr std::size_t kMostBytes = std::numeric_limits<LONG>::max();
/// To read an element of a script's array takes two calls: with more, the client would seem to hang.
constexpr double kMostScriptElements = 1 << 24;

[[noreturn]] void refuse() {
    throw WrongValue{DISP_E_TYPEMISMATCH, "is not bytes"};
}

[[noreturn]] void refuseSize(const char* problem) {
    throw WrongValue{DISP_E_OVERFLOW, problem};
}

char toByte(const VARIANT& element) {
    const double number = numberIn(viewOf(element)).value_or(-1);
    // NaN is not >= 0.
    if (!(number >= 0 && number <= kLargestByte) || std::trunc(number) != number) {
        refuse();
    }
    return static_cast<char>(static_cast<unsigned char>(number));
}

/// The bytes of one element; 0: no bytes can be read from arrays of this type.
std::size_t elementSize(VARTYPE type) {
    switch (type) {
        case VT_I1:
        case VT_UI1:
            return 1;
        case VT_I2:
        case VT_UI2:
            return 2;
        case VT_I4:
        case VT_UI4:
        case VT_INT:
        case VT_UINT:
        case VT_R4:
            return 4;
        case VT_R8:
            return 8;
        case VT_VARIANT:
            return sizeof(VARIANT);
        default:
            return 0;
    }
}

host::Bytes readElements(char* data, std::size_t count, VARTYPE type) {
    const std::size_t size = elementSize(type);
    if (size == 1) {
        return {{data, data + count}};
    }
    host::Bytes bytes;
    bytes.bytes.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
        VARIANT element = {};
        element.vt = static_cast<VARTYPE>(VT_BYREF | type);
        element.byref = data + i * size;
        bytes.bytes.push_back(toByte(element));
    }
    return bytes;
}

/// Whether the elements can be read as a client states them. It may state another type than the
/// array's own, as for the library's byte arrays; but a record may be as large as a variant.
bool isOfType(SAFEARRAY& array, VARTYPE type) {
    VARTYPE own = VT_EMPTY;
    return type != VT_VARIANT ||
           (SUCCEEDED(SafeArrayGetVartype(&array, &own)) && own == VT_VARIANT);
}

host::Bytes readArray(SAFEARRAY* array, VARTYPE type) {
    const std::size_t size = elementSize(type);
    if (size == 0) {
        refuse();
    }
    if (!array) {
        // How Visual Basic passes an array that has no elements yet.
        return {};
    }
    // Of two dimensions, nothing is locked.
    const zrkey::ArrayLock lock(array);
    if (!lock || SafeArrayGetElemsize(array) != size || !isOfType(*array, type)) {
        refuse();
    }
    if (lock.size() > kMostBytes) {
        refuseSize("has more than 2147483647 bytes");
    }
    return readElements(static_cast<char*>(lock.data()), lock.size(), type);
}

/// The number of a member of a client's object; nullopt when there is none.
std::optional<DISPID> findMember(IDispatch& object, std::wstring name) {
    LPOLESTR names = name.data();
    DISPID id = DISPID_UNKNOWN;
    const HRESULT result = object.GetIDsOfNames(IID_NULL, &names, 1, LOCALE_USER_DEFAULT, &id);
    return SUCCEEDED(result) ? std::optional(id) : std::nullopt;
}

/// Reads a property of a client's object; VT_EMPTY when there is none.
zrkey::Variant readProperty(IDispatch& object, const std::wstring& name) {
    const std::optional<DISPID> id = findMember(object, name);
    zrkey::Variant value;
    if (!id) {
        return value;
    }
    DISPPARAMS none = {};
    const HRESULT result = object.Invoke(*id, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_PROPERTYGET,
                                         &none, value.receive(), nullptr, nullptr);
    if (FAILED(result)) {
        value.reset();
    }
    return value;
}

/// The property "length"; nullopt when there is none that counts elements.
std::optional<double> lengthOf(IDispatch& object) {
    const zrkey::Variant value = readProperty(object, L"length");
    const std::optional<double> length = numberIn(viewOf(value.get()));
    const bool isCount = length && *length >= 0 && std::trunc(*length) == *length;
    return isCount ? length : std::nullopt;
}

/// JScript's arrays have the properties "length", "0", "1", ... Functions without parameters have the
/// length 0 too, but no "push".
host::Bytes readScriptArray(IDispatch& object) {
    const std::optional<double> length = lengthOf(object);
    if (!length || (*length == 0 && !findMember(object, L"push"))) {
        refuse();
    }
    if (*length > kMostScriptElements) {
        refuseSize("has more than 16777216 elements");
    }
    host::Bytes bytes;
    for (unsigned int i = 0; i < static_cast<unsigned int>(*length); ++i) {
        bytes.bytes.push_back(toByte(readProperty(object, std::to_wstring(i)).get()));
    }
    return bytes;
}

host::Bytes readObject(IUnknown* object) {
    zrkey::ComRef<IDispatch> dispatch;
    if (!object || FAILED(object->QueryInterface(IID_IDispatch, dispatch.receive())) || !dispatch) {
        refuse();
    }
    return readScriptArray(*dispatch.get());
}

}  // namespace

host::Bytes readBytes(const VARIANT& view) {
    if (view.vt & VT_ARRAY) {
        return readArray(view.parray, static_cast<VARTYPE>(view.vt & ~VT_ARRAY));
    }
    if (view.vt == VT_DISPATCH || view.vt == VT_UNKNOWN) {
        return readObject(view.punkVal);
    }
    refuse();
}

}  // namespace zr::automation
