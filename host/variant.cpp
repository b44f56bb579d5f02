// Variants and byte arrays as the command makes and reads them.
#include "variant.h"

#include <cstring>
#include <limits>
#include <new>

#include "text.h"

namespace zr::host {
namespace {

std::string utf8Of(BSTR text) {
    return text != nullptr ? toUtf8({text, SysStringLen(text)}) : std::string();
}

}  // namespace

ArrayAccess::ArrayAccess(SAFEARRAY* array) : m_array(array) {
    if (array == nullptr || array->cDims != 1 || FAILED(SafeArrayAccessData(array, &m_data))) {
        m_array = nullptr;
    }
}

ArrayAccess::~ArrayAccess() {
    if (m_array != nullptr) {
        SafeArrayUnaccessData(m_array);
    }
}

std::size_t ArrayAccess::size() const {
    return m_array != nullptr ? m_array->rgsabound[0].cElements : 0;
}

bool makeByteArray(std::string_view bytes, VARIANT& out) {
    if (bytes.size() > static_cast<std::size_t>(std::numeric_limits<LONG>::max())) {
        return false;
    }
    SAFEARRAYBOUND bound = {static_cast<ULONG>(bytes.size()), 0};
    SAFEARRAY* array = SafeArrayCreate(VT_UI1, 1, &bound);
    if (array == nullptr) {
        throw std::bad_alloc();
    }
    out.parray = array;
    out.vt = VT_ARRAY | VT_UI1;
    const ArrayAccess access(array);
    if (!bytes.empty()) {
        std::memcpy(access.data(), bytes.data(), bytes.size());
    }
    return true;
}

Variant::Variant() {
    VariantInit(&m_variant);
}

Variant::~Variant() {
    VariantClear(&m_variant);
}

VARIANT* Variant::receive() {
    VariantClear(&m_variant);
    return &m_variant;
}

std::string Variant::bytes() const {
    if (m_variant.vt != (VT_ARRAY | VT_UI1)) {
        // The library leaves a result unset without memory for it, and answers S_OK all the same.
        throw std::bad_alloc();
    }
    const ArrayAccess access(m_variant.parray);
    return access.size() > 0 ? std::string(static_cast<const char*>(access.data()), access.size())
                             : std::string();
}

std::vector<std::string> Variant::texts() const {
    std::vector<std::string> texts;
    if (m_variant.vt == (VT_ARRAY | VT_BSTR)) {
        const ArrayAccess access(m_variant.parray);
        const BSTR* elements = static_cast<const BSTR*>(access.data());
        for (std::size_t i = 0; i < access.size(); ++i) {
            texts.push_back(utf8Of(elements[i]));
        }
    }
    return texts;
}

Text::Text(std::string_view utf8) {
    const OleString wide = toUtf16(utf8);
    m_text = SysAllocStringLen(wide.data(), static_cast<UINT>(wide.size()));
    if (m_text == nullptr) {
        throw std::bad_alloc();
    }
}

Text::~Text() {
    SysFreeString(m_text);
}

BSTR* Text::receive() {
    SysFreeString(m_text);
    m_text = nullptr;
    return &m_text;
}

std::string Text::utf8() const {
    return utf8Of(m_text);
}

}  // namespace zr::host
