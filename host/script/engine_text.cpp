// Texts on the stack of the script engine.
#include "host/script/engine_text.h"

#include <utf8cpp/utf8.h>

#include <algorithm>
#include <cstdint>

#include "host/script/context.h"
#include "host/script/script_text.h"

namespace zr::host {
namespace {

/// How many bytes more the engine needs for a character outside the basic plane than UTF-8 does.
constexpr std::size_t kLongerByEach = 2;
/// The most bytes that toUnits and toScriptText take for a byte.
constexpr std::size_t kMostForAByte = 12;

/// Pushes a text with characters that are pairs of surrogates for the engine. Only memory of the
/// engine is used.
void pushPairs(duk_context* script, std::string_view utf8, std::size_t pairs) {
    const std::size_t size = utf8.size() + pairs * kLongerByEach;
    char* const text = static_cast<char*>(duk_push_fixed_buffer(script, size));
    char* end = text;
    for (auto byte = utf8.begin(); byte != utf8.end();) {
        std::uint32_t character = utf8::unchecked::next(byte);
        if (character > 0xFFFF) {
            character -= 0x10000;
            end = utf8::unchecked::append(0xD800 + (character >> 10), end);
            character = 0xDC00 + (character & 0x3FF);
        }
        end = utf8::unchecked::append(character, end);
    }
    duk_push_lstring(script, text, size);
    duk_remove(script, -2);
}

void pushMalformed(duk_context* script, std::string_view utf8) {
    ScriptCharge charge(contextOf(script).use);
    if (!charge.add(kMostForAByte * utf8.size())) {
        throwError(script, DUK_ERR_ERROR, "alloc failed");
    }
    const ErasedVector<OLECHAR> units = toUnits(utf8);
    const ErasedBytes text = toScriptText(units.data(), units.size());
    duk_push_lstring(script, text.data(), text.size());
}

}  // namespace

void pushText(duk_context* script, std::string_view utf8) {
    if (!utf8::is_valid(utf8)) {
        pushMalformed(script, utf8);
        return;
    }
    const auto pairs =
        static_cast<std::size_t>(std::count_if(utf8.begin(), utf8.end(), [](char byte) {
            return static_cast<unsigned char>(byte) >= 0xF0;
        }));
    if (pairs > 0) {
        pushPairs(script, utf8, pairs);
    } else {
        duk_push_lstring(script, utf8.data(), utf8.size());
    }
}

ErasedBytes utf8At(duk_context* script, duk_idx_t index) {
    duk_size_t size = 0;
    const char* text = duk_to_lstring(script, index, &size);
    return toUtf8({text, size});
}

bool isText(duk_context* script, duk_idx_t index) {
    return duk_is_string(script, index) && !duk_is_symbol(script, index);
}

std::string pathArgument(duk_context* script, duk_idx_t index, const std::string& function) {
    if (!isText(script, index)) {
        throwError(script, DUK_ERR_TYPE_ERROR, function + ": the path is not a text");
    }
    std::string path(viewOf(utf8At(script, index)));
    if (path.find('\0') != std::string::npos) {
        throwError(script, DUK_ERR_TYPE_ERROR, function + ": the path contains a NUL");
    }
    return path;
}

}  // namespace zr::host
