// The values that pass between a host and the object model.
#include "host/objects/value.h"

#include <utf8cpp/utf8.h>

#include <iterator>
#include <new>

#include "host/system/system.h"

namespace zr::host {

const char* nameOf(Kind kind) {
    switch (kind) {
        case Kind::kNothing:
            return "nothing";
        case Kind::kNull:
            return "null";
        case Kind::kBoolean:
            return "a boolean";
        case Kind::kNumber:
            return "a number";
        case Kind::kText:
            return "a text";
        case Kind::kBytes:
            return "bytes";
        case Kind::kTexts:
            return "a list of texts";
        default:
            return "an object";
    }
}

WideText toWideText(std::string_view utf8) {
    const std::string valid = utf8::replace_invalid(utf8);
    WideText text;
    utf8::utf8to16(valid.begin(), valid.end(), std::back_inserter(text.units));
    return text;
}

WideText toWideText(BSTR text) {
    return text ? WideText{{text, text + SysStringLen(text)}} : WideText();
}

std::string toUtf8(const WideText& text) {
    return CallText(text).utf8();
}

Bytes toBytes(std::string_view bytes) {
    return {{bytes.begin(), bytes.end()}};
}

CallText::CallText(const WideText& text) {
    m_text.reset(SysAllocStringLen(text.units.data(), static_cast<UINT>(text.units.size())));
    if (!m_text) {
        throw std::bad_alloc();
    }
}

CallText::~CallText() {
    secureErase(m_text.get(), SysStringByteLen(m_text.get()));
}

}  // namespace zr::host
