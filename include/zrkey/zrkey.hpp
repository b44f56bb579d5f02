/// @file
/// The C++ layer over zrkey.h: classes that own what the library hands out. Header only, C++17.
///
///     zrkey::ComRef<ITokenProvider> provider;
///     zrkey::ComRef<IKeyObject> token;
///     zrkey::Result result = zrkey::createProvider(provider);
///     if (result.succeeded()) {
///         result = provider->Load(zrkey::Text("../lib/module.so").get());
///     }
///     if (result.succeeded()) {
///         result = provider->OpenKey(0, token.receive());
///     }
///     if (!token) {
///         std::puts(result.text().c_str());  // "E_FAIL (0x80004005)"
///     }
///
/// The layer adds no behaviour and hides no result: operations are called on the interfaces
/// themselves, through ->, and return their HRESULT. Every owner has the same four verbs:
///
///     get      lends what is owned; the owner keeps it.
///     reset    frees what is owned and takes over the argument.
///     release  gives up what is owned; the caller frees it.
///     receive  frees what is owned and is passed as an out argument, whose value it takes over.
///
/// Owners move and, where noted, copy. Exceptions: std::bad_alloc alone, where noted.
#ifndef ZRKEY_ZRKEY_HPP
#define ZRKEY_ZRKEY_HPP

#include <zrkey/zrkey.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <cwchar>
#include <limits>
#include <locale>
#include <new>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace zrkey {

/// One reference to an object, released on destruction. A copy adds a reference.
/// @tparam T  the interface: ITokenProvider, IKeyObject, IDispatch, ...
template <class T>
class ComRef {
public:
    /// The out argument of one call, for T** and for the void** of the library's interfaces: what
    /// they hand out as void* is exactly a T*.
    class Receiver {
    public:
        /// @param object  where the call stores what it hands out.
        explicit Receiver(T** object) noexcept : m_object(object) {}
        /// For an argument of the interface's own type.
        operator T**() const noexcept { return m_object; }
        /// For an argument of type void**.
        operator void**() const noexcept { return reinterpret_cast<void**>(m_object); }

    private:
        T** m_object;
    };

    /// Null: refers to no object.
    ComRef() noexcept = default;
    /// Adds a reference to the object of other.
    ComRef(const ComRef& other) noexcept : m_object(other.m_object) {
        if (m_object) {
            m_object->AddRef();
        }
    }
    /// Takes over the reference of other, which becomes null.
    ComRef(ComRef&& other) noexcept : m_object(other.release()) {}
    /// Takes over the reference of other and releases its own.
    ComRef& operator=(ComRef other) noexcept {
        std::swap(m_object, other.m_object);
        return *this;
    }
    ~ComRef() { reset(); }

    /// The object, borrowed; null when there is none.
    T* get() const noexcept { return m_object; }
    /// @pre the reference is not null.
    T* operator->() const noexcept { return m_object; }
    /// Whether there is an object.
    explicit operator bool() const noexcept { return m_object != nullptr; }

    /// Takes over the caller's reference; adds none.
    void reset(T* object = nullptr) noexcept {
        T* const old = std::exchange(m_object, object);
        if (old) {
            old->Release();
        }
    }
    /// Gives the reference up to the caller.
    T* release() noexcept { return std::exchange(m_object, nullptr); }
    /// For an out argument that hands out a reference. Null until the call has set it.
    Receiver receive() noexcept {
        reset();
        return Receiver(&m_object);
    }

private:
    T* m_object = nullptr;
};

/// Inner helpers; may change at any time.
namespace detail {

static_assert(sizeof(OLECHAR) == sizeof(char16_t), "texts of the library are UTF-16");

#ifdef __cpp_char8_t
using Utf8Unit = char8_t;
#else
using Utf8Unit = char;
#endif
using Utf8Codec = std::codecvt<char16_t, Utf8Unit, std::mbstate_t>;

inline const Utf8Codec& utf8Codec() {
    return std::use_facet<Utf8Codec>(std::locale::classic());
}

inline std::string toUtf8(std::u16string_view text) {
    constexpr std::size_t kMostPerUnit = 3;
    constexpr std::string_view kReplacement = "\xEF\xBF\xBD";
    std::string utf8(text.size() * kMostPerUnit, '\0');
    const auto first = reinterpret_cast<Utf8Unit*>(utf8.data());
    auto out = first;
    const char16_t* next = text.data();
    const char16_t* const end = next + text.size();
    while (next != end) {
        std::mbstate_t state = {};
        utf8Codec().out(state, next, end, next, out, first + utf8.size(), out);
        if (next != end) {
            std::memcpy(out, kReplacement.data(), kReplacement.size());
            out += kReplacement.size();
            ++next;
        }
    }
    utf8.resize(static_cast<std::size_t>(out - first));
    return utf8;
}

inline std::string toUtf8(BSTR text) {
    return text ? toUtf8(std::u16string(text, text + SysStringLen(text))) : std::string();
}

/// @return nullopt for malformed UTF-8.
inline std::optional<std::u16string> toUtf16(std::string_view utf8) {
    std::u16string text(utf8.size(), u'\0');
    const auto next = reinterpret_cast<const Utf8Unit*>(utf8.data());
    const Utf8Unit* const end = next + utf8.size();
    const Utf8Unit* read = next;
    char16_t* written = text.data();
    std::mbstate_t state = {};
    utf8Codec().in(state, next, end, read, written, written + text.size(), written);
    text.resize(static_cast<std::size_t>(written - text.data()));
    // The second condition finds encoded surrogates, which some standard libraries accept.
    if (read != end || toUtf8(text) != utf8) {
        return std::nullopt;
    }
    return text;
}

}  // namespace detail

/// A text that the library takes or hands out: one BSTR, freed on destruction. Does not copy.
/// @note Freed memory is not overwritten: keep PINs in a class of your own that does so.
class Text {
public:
    /// Null: no text, not the empty text. Operations answer a null text with a failure.
    Text() noexcept = default;
    /// Copies a text up to its terminator; null gives a null Text.
    /// @throws std::bad_alloc
    explicit Text(const OLECHAR* text) {
        if (text) {
            m_text = SysAllocString(text);
            if (!m_text) {
                throw std::bad_alloc();
            }
        }
    }
    /// Copies a UTF-8 text. Malformed UTF-8 gives a null Text, so that no operation acts on
    /// another text than the one meant.
    /// @throws std::bad_alloc  also for a text too long for a BSTR.
    explicit Text(std::string_view utf8) {
        const std::optional<std::u16string> units = detail::toUtf16(utf8);
        if (units) {
            if (units->size() > (std::numeric_limits<UINT>::max)() / sizeof(OLECHAR)) {
                throw std::bad_alloc();
            }
            m_text = SysAllocStringLen(nullptr, static_cast<UINT>(units->size()));
            if (!m_text) {
                throw std::bad_alloc();
            }
            std::memcpy(m_text, units->data(), units->size() * sizeof(OLECHAR));
        }
    }
    /// Takes over the text of other, which becomes null.
    Text(Text&& other) noexcept : m_text(other.release()) {}
    /// Frees its own text and takes over that of other.
    Text& operator=(Text&& other) noexcept {
        reset(other.release());
        return *this;
    }
    Text(const Text&) = delete;
    Text& operator=(const Text&) = delete;
    ~Text() { reset(); }

    /// The text, borrowed; null when there is none.
    BSTR get() const noexcept { return m_text; }
    /// Whether there is a text, which may be empty.
    explicit operator bool() const noexcept { return m_text != nullptr; }
    /// The text in UTF-8; empty for a null Text. Half a surrogate pair becomes U+FFFD.
    /// @throws std::bad_alloc
    std::string utf8() const { return detail::toUtf8(m_text); }

    /// Takes over the caller's text.
    void reset(BSTR text = nullptr) noexcept {
        BSTR const old = std::exchange(m_text, text);
        SysFreeString(old);
    }
    /// Gives the text up to the caller, who frees it with SysFreeString.
    BSTR release() noexcept { return std::exchange(m_text, nullptr); }
    /// For an out argument that hands out a text. Null until the call has set it.
    BSTR* receive() noexcept {
        reset();
        return &m_text;
    }

private:
    BSTR m_text = nullptr;
};

/// The elements of a one-dimensional array, locked until destruction. The array is borrowed, must
/// outlive the lock and cannot be freed while it is locked.
class ArrayLock {
public:
    /// Locks nothing, and has no elements, when array is null, cannot be locked or has more than
    /// one dimension.
    explicit ArrayLock(SAFEARRAY* array) noexcept {
        if (array && SafeArrayGetDim(array) == 1 &&
            SUCCEEDED(SafeArrayAccessData(array, &m_data))) {
            m_array = array;
        }
    }
    ArrayLock(const ArrayLock&) = delete;
    ArrayLock& operator=(const ArrayLock&) = delete;
    ~ArrayLock() {
        if (m_array) {
            SafeArrayUnaccessData(m_array);
        }
    }

    /// Whether the array is locked.
    explicit operator bool() const noexcept { return m_array != nullptr; }
    /// The number of elements.
    std::size_t size() const noexcept { return m_array ? m_array->rgsabound[0].cElements : 0; }
    /// The first element; may be null when there is none.
    void* data() const noexcept { return m_array ? m_data : nullptr; }

private:
    SAFEARRAY* m_array = nullptr;
    void* m_data = nullptr;
};

/// A value that the library takes or hands out: one VARIANT, cleared on destruction. Does not
/// copy. Readers answer nullopt for a value of another type; they convert nothing.
class Variant {
public:
    /// Null: VT_EMPTY.
    Variant() noexcept { VariantInit(&m_variant); }
    /// Takes over the value of other, which becomes VT_EMPTY.
    Variant(Variant&& other) noexcept : m_variant(other.release()) {}
    /// Frees its own value and takes over that of other.
    Variant& operator=(Variant&& other) noexcept {
        reset(other.release());
        return *this;
    }
    Variant(const Variant&) = delete;
    Variant& operator=(const Variant&) = delete;
    ~Variant() { VariantClear(&m_variant); }

    /// VT_I4.
    static Variant fromNumber(LONG number) noexcept {
        Variant made;
        made.m_variant.vt = VT_I4;
        made.m_variant.lVal = number;
        return made;
    }
    /// VT_R8.
    static Variant fromReal(DOUBLE number) noexcept {
        Variant made;
        made.m_variant.vt = VT_R8;
        made.m_variant.dblVal = number;
        return made;
    }
    /// VT_BOOL.
    static Variant fromBool(bool value) noexcept {
        Variant made;
        made.m_variant.vt = VT_BOOL;
        made.m_variant.boolVal = value ? VARIANT_TRUE : VARIANT_FALSE;
        return made;
    }
    /// VT_BSTR; takes over the text. A null Text stays a null text.
    static Variant fromText(Text text) noexcept {
        Variant made;
        made.m_variant.vt = VT_BSTR;
        made.m_variant.bstrVal = text.release();
        return made;
    }
    /// VT_DISPATCH; takes over the reference, which may be null.
    static Variant fromObject(ComRef<IDispatch> object) noexcept {
        Variant made;
        made.m_variant.vt = VT_DISPATCH;
        made.m_variant.pdispVal = object.release();
        return made;
    }
    /// VT_ARRAY of elements of a type; takes over the array, which may be null.
    static Variant fromArray(VARTYPE elementType, SAFEARRAY* array) noexcept {
        Variant made;
        made.m_variant.vt = static_cast<VARTYPE>(VT_ARRAY | elementType);
        made.m_variant.parray = array;
        return made;
    }

    /// VT_I4, VT_BSTR, ...
    VARTYPE type() const noexcept { return m_variant.vt; }
    /// An integer of any width and sign; nullopt also for one above the range of long long.
    std::optional<long long> toNumber() const noexcept {
        switch (m_variant.vt) {
            case VT_I1:
                return static_cast<signed char>(m_variant.cVal);
            case VT_UI1:
                return m_variant.bVal;
            case VT_I2:
                return m_variant.iVal;
            case VT_UI2:
                return m_variant.uiVal;
            case VT_I4:
                return m_variant.lVal;
            case VT_INT:
                return m_variant.intVal;
            case VT_UI4:
                return m_variant.ulVal;
            case VT_UINT:
                return m_variant.uintVal;
            case VT_I8:
                return m_variant.llVal;
            case VT_UI8:
                if (m_variant.llVal >= 0) {
                    return m_variant.llVal;
                }
                return std::nullopt;
            default:
                return std::nullopt;
        }
    }
    /// VT_R4 or VT_R8.
    std::optional<double> toReal() const noexcept {
        switch (m_variant.vt) {
            case VT_R4:
                return double{m_variant.fltVal};
            case VT_R8:
                return m_variant.dblVal;
            default:
                return std::nullopt;
        }
    }
    /// VT_BOOL.
    std::optional<bool> toBool() const noexcept {
        if (m_variant.vt != VT_BOOL) {
            return std::nullopt;
        }
        return m_variant.boolVal != VARIANT_FALSE;
    }
    /// VT_BSTR, in UTF-8 as by Text::utf8.
    /// @throws std::bad_alloc
    std::optional<std::string> toText() const {
        if (m_variant.vt != VT_BSTR) {
            return std::nullopt;
        }
        return detail::toUtf8(m_variant.bstrVal);
    }
    /// A one-dimensional VT_ARRAY | VT_BSTR, each text in UTF-8 as by Text::utf8.
    /// @throws std::bad_alloc
    std::optional<std::vector<std::string>> toTexts() const {
        const ArrayLock lock(m_variant.vt == (VT_ARRAY | VT_BSTR) ? m_variant.parray : nullptr);
        if (!lock) {
            return std::nullopt;
        }
        std::vector<std::string> texts;
        const BSTR* const elements = static_cast<const BSTR*>(lock.data());
        for (std::size_t i = 0; i < lock.size(); ++i) {
            texts.push_back(detail::toUtf8(elements[i]));
        }
        return texts;
    }
    /// VT_DISPATCH: the object with a reference of its own; null also for another type.
    ComRef<IDispatch> toObject() const noexcept {
        ComRef<IDispatch> object;
        if (m_variant.vt == VT_DISPATCH && m_variant.pdispVal) {
            m_variant.pdispVal->AddRef();
            object.reset(m_variant.pdispVal);
        }
        return object;
    }

    /// The variant, borrowed.
    const VARIANT& get() const noexcept { return m_variant; }
    /// The variant, borrowed; its value may be changed in place.
    VARIANT& get() noexcept { return m_variant; }
    /// For arguments of type VARIANT, which borrow.
    operator const VARIANT&() const noexcept { return m_variant; }

    /// Takes over what the caller's variant holds; the caller must not clear it any more.
    void reset(const VARIANT& variant) noexcept {
        const VARIANT taken = variant;
        VariantClear(&m_variant);
        m_variant = taken;
    }
    /// Makes it VT_EMPTY.
    void reset() noexcept { receive(); }
    /// Gives the value up to the caller, who frees it with VariantClear.
    VARIANT release() noexcept {
        const VARIANT given = m_variant;
        VariantInit(&m_variant);
        return given;
    }
    /// For an out argument. VT_EMPTY until the call has set it.
    VARIANT* receive() noexcept {
        VariantClear(&m_variant);
        VariantInit(&m_variant);
        return &m_variant;
    }

private:
    VARIANT m_variant;
};

/// Bytes that the library takes or hands out: a VARIANT of type VT_ARRAY | VT_UI1, cleared on
/// destruction. Does not copy.
class ByteArray {
public:
    /// Null: VT_EMPTY, which is no byte array; not the array of no bytes.
    ByteArray() noexcept = default;
    /// Copies the bytes.
    /// @throws std::bad_alloc  also for more bytes than an array holds.
    explicit ByteArray(std::string_view bytes) {
        if (bytes.size() > static_cast<std::size_t>((std::numeric_limits<LONG>::max)())) {
            throw std::bad_alloc();
        }
        SAFEARRAYBOUND bound = {static_cast<ULONG>(bytes.size()), 0};
        SAFEARRAY* const array = SafeArrayCreate(VT_UI1, 1, &bound);
        m_variant = Variant::fromArray(VT_UI1, array);
        const ArrayLock lock(array);
        if (!lock) {
            throw std::bad_alloc();
        }
        if (!bytes.empty()) {
            std::memcpy(lock.data(), bytes.data(), bytes.size());
        }
    }

    /// A copy of the bytes, whether the array's own element type is VT_UI1 or VT_I1; nullopt when
    /// there is no byte array. Some operations answer S_OK and leave their result untouched when
    /// they run out of memory: look at it even after a success.
    /// @throws std::bad_alloc
    std::optional<std::string> bytes() const {
        constexpr VARTYPE kBytes = VT_ARRAY | VT_UI1;
        constexpr VARTYPE kSignedBytes = VT_ARRAY | VT_I1;
        const bool isArray = m_variant.type() == kBytes || m_variant.type() == kSignedBytes;
        SAFEARRAY* const array = isArray ? m_variant.get().parray : nullptr;
        const ArrayLock lock(array);
        if (!lock || SafeArrayGetElemsize(array) != 1) {
            return std::nullopt;
        }
        if (lock.size() == 0) {
            return std::string();
        }
        return std::string(static_cast<const char*>(lock.data()), lock.size());
    }

    /// The variant, borrowed.
    const VARIANT& get() const noexcept { return m_variant.get(); }
    /// For arguments of type VARIANT, which borrow.
    operator const VARIANT&() const noexcept { return m_variant.get(); }

    /// Takes over what the caller's variant holds; the caller must not clear it any more.
    void reset(const VARIANT& variant) noexcept { m_variant.reset(variant); }
    /// Makes it VT_EMPTY.
    void reset() noexcept { m_variant.reset(); }
    /// Gives the array up to the caller, who frees it with VariantClear.
    VARIANT release() noexcept { return m_variant.release(); }
    /// For an out argument that hands out bytes. VT_EMPTY until the call has set it.
    VARIANT* receive() noexcept { return m_variant.receive(); }

private:
    Variant m_variant;
};

/// What an operation returned: a code and its name. Copies; owns nothing.
class Result {
public:
    /// Not explicit, so that a call's HRESULT becomes a Result by itself.
    constexpr Result(HRESULT code = S_OK) noexcept : m_code(code) {}

    /// The code as the operation returned it.
    constexpr HRESULT code() const noexcept { return m_code; }
    /// S_OK or another code of success.
    constexpr bool succeeded() const noexcept { return SUCCEEDED(m_code); }
    /// A code of failure.
    constexpr bool failed() const noexcept { return FAILED(m_code); }

    /// "E_FAIL"; empty for a code that is not one of the library's.
    constexpr std::string_view name() const noexcept {
        switch (m_code) {
            case S_OK:
                return "S_OK";
            case S_FALSE:
                return "S_FALSE";
            case E_NOTIMPL:
                return "E_NOTIMPL";
            case E_NOINTERFACE:
                return "E_NOINTERFACE";
            case E_POINTER:
                return "E_POINTER";
            case E_FAIL:
                return "E_FAIL";
            case E_UNEXPECTED:
                return "E_UNEXPECTED";
            case E_OUTOFMEMORY:
                return "E_OUTOFMEMORY";
            case E_INVALIDARG:
                return "E_INVALIDARG";
            case RPC_E_CANTCALLOUT_INEXTERNALCALL:
                return "RPC_E_CANTCALLOUT_INEXTERNALCALL";
            case DISP_E_TYPEMISMATCH:
                return "DISP_E_TYPEMISMATCH";
            case DISP_E_BADVARTYPE:
                return "DISP_E_BADVARTYPE";
            case DISP_E_EXCEPTION:
                return "DISP_E_EXCEPTION";
            case DISP_E_OVERFLOW:
                return "DISP_E_OVERFLOW";
            case DISP_E_BADINDEX:
                return "DISP_E_BADINDEX";
            case DISP_E_ARRAYISLOCKED:
                return "DISP_E_ARRAYISLOCKED";
            default:
                return {};
        }
    }
    /// "0x80004005"
    /// @throws std::bad_alloc
    std::string hex() const {
        constexpr unsigned kDigits = 8;
        std::string number = "0x";
        for (unsigned i = 0; i < kDigits; ++i) {
            const auto code = static_cast<std::uint32_t>(m_code);
            number += "0123456789ABCDEF"[(code >> (4 * (kDigits - 1 - i))) & 0xFU];
        }
        return number;
    }
    /// "E_FAIL (0x80004005)", or the number alone when the code has no name.
    /// @throws std::bad_alloc
    std::string text() const {
        const std::string_view known = name();
        return known.empty() ? hex() : std::string(known) + " (" + hex() + ")";
    }

private:
    HRESULT m_code;
};

/// Makes a provider through the library's class factory.
/// @param provider  receives it; null on failure.
/// @return what ZCLGetClassObject answered, or when it succeeded IClassFactory::CreateInstance.
inline HRESULT createProvider(ComRef<ITokenProvider>& provider) {
    provider.reset();
    ComRef<IClassFactory> factory;
    const HRESULT result = ZCLGetClassObject(LIBID_ZRKey, IID_IClassFactory, factory.receive());
    if (FAILED(result)) {
        return result;
    }
    return factory->CreateInstance(nullptr, IID_ITokenProvider, provider.receive());
}

}  // namespace zrkey

#endif
