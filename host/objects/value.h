// The values that pass between a host and the object model: a closed set, from which each front end
// converts to its own kind of value and back.
#pragma once

#include <zrkey/zrkey.hpp>

#include <memory>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "host/system/erasing_allocator.h"

namespace zr::host {

class Object;

/// No value: a call that has no result, or an argument that was left out.
struct Nothing {};
/// An object that is not there.
struct Null {};
/// A text in UTF-16, which may be a PIN: it is erased on destruction. May contain half a surrogate
/// pair.
struct WideText {
    ErasedVector<OLECHAR> units;
};
/// Bytes; erased on destruction.
struct Bytes {
    ErasedBytes bytes;
};
using WideTexts = std::vector<WideText>;
/// Never null in a Value.
using ObjectRef = std::shared_ptr<Object>;

/// The kinds of values, in the order of the variant.
enum class Kind { kNothing, kNull, kBoolean, kNumber, kText, kBytes, kTexts, kObject };
using Value = std::variant<Nothing, Null, bool, double, WideText, Bytes, WideTexts, ObjectRef>;

inline Kind kindOf(const Value& value) {
    return static_cast<Kind>(value.index());
}
/// "a number", for messages.
const char* nameOf(Kind kind);

/// @param utf8  a malformed byte becomes U+FFFD.
WideText toWideText(std::string_view utf8);
WideText toWideText(BSTR text);
/// In UTF-8; half a surrogate pair becomes U+FFFD.
std::string toUtf8(const WideText& text);
Bytes toBytes(std::string_view bytes);

/// A text for a call of the library; erased on destruction.
class CallText {
public:
    explicit CallText(const WideText& text);
    ~CallText();
    CallText(const CallText&) = delete;
    CallText& operator=(const CallText&) = delete;

    BSTR get() const { return m_text.get(); }
    std::string utf8() const { return m_text.utf8(); }

private:
    zrkey::Text m_text;
};

}  // namespace zr::host
