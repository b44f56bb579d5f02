// Values of a script as the shell shows them.
#include "host/script/shown_value.h"

#include <algorithm>
#include <cstdio>
#include <string_view>

#include "host/output/printable.h"
#include "host/script/engine_text.h"
#include "host/script/late_bound/bound_object.h"
#include "host/script/script_objects.h"

namespace zr::host {
namespace {

constexpr std::size_t kMostBytes = 16;
constexpr std::size_t kMostElements = 20;
constexpr int kMostLevels = 2;

std::string show(duk_context* script, duk_idx_t index, int level);

std::string quoted(std::string_view text) {
    std::string shown = "\"";
    for (const char byte : text) {
        if (byte == '"' || byte == '\\') {
            shown.append(1, '\\').append(1, byte);
        } else if (byte == '\n') {
            shown.append("\\n");
        } else if (byte == '\t') {
            shown.append("\\t");
        } else if (static_cast<unsigned char>(byte) < 0x20 || byte == 0x7F) {
            char hex[8];
            std::snprintf(hex, sizeof hex, "\\x%02x", static_cast<unsigned>(byte));
            shown.append(hex);
        } else {
            shown.append(1, byte);
        }
    }
    // What is left are the control characters of more than one byte.
    return printable(shown.append("\""));
}

/// The name of the function that made an object.
std::string makerOf(duk_context* script, duk_idx_t index) {
    std::string name;
    duk_get_prop_string(script, index, "constructor");
    if (duk_is_object(script, -1)) {
        duk_get_prop_string(script, -1, "name");
        if (isText(script, -1)) {
            name = viewOf(utf8At(script, -1));
        }
        duk_pop(script);
    }
    duk_pop(script);
    return name;
}

std::string showBytes(duk_context* script, duk_idx_t index) {
    duk_size_t size = 0;
    const auto* const bytes =
        static_cast<const unsigned char*>(duk_get_buffer_data(script, index, &size));
    std::string shown = makerOf(script, index);
    shown.append("(").append(std::to_string(size)).append(")");
    for (std::size_t i = 0; i < std::min<std::size_t>(size, kMostBytes); ++i) {
        char hex[8];
        std::snprintf(hex, sizeof hex, " %02x", static_cast<unsigned>(bytes[i]));
        shown.append(hex);
    }
    return size > kMostBytes ? shown.append(" ...") : shown;
}

/// Adds the value on top of the stack to the elements of its array or object.
/// @return false when no more of them are shown.
bool addElement(duk_context* script, std::string& shown, std::size_t number,
                const std::string& name, int level) {
    shown.append(number > 0 ? ", " : "");
    if (number == kMostElements) {
        shown.append("...");
        return false;
    }
    shown.append(name).append(show(script, -1, level + 1));
    return true;
}

std::string showArray(duk_context* script, duk_idx_t index, int level) {
    if (level == kMostLevels) {
        return "[...]";
    }
    std::string shown = "[";
    bool goesOn = true;
    for (duk_size_t i = 0; goesOn && i < duk_get_length(script, index); ++i) {
        duk_get_prop_index(script, index, static_cast<duk_uarridx_t>(i));
        goesOn = addElement(script, shown, i, "", level);
        duk_pop(script);
    }
    return shown.append("]");
}

std::string showProperties(duk_context* script, duk_idx_t index, int level) {
    if (level == kMostLevels) {
        return "{...}";
    }
    std::string shown = "{";
    bool goesOn = true;
    duk_enum(script, index, DUK_ENUM_OWN_PROPERTIES_ONLY);
    for (std::size_t i = 0; goesOn && duk_next(script, -1, 1) != 0; ++i) {
        const std::string name = printable(viewOf(utf8At(script, -2)));
        goesOn = addElement(script, shown, i, name + ": ", level);
        duk_pop_2(script);
    }
    duk_pop(script);
    return shown.append("}");
}

std::string showObject(duk_context* script, duk_idx_t index, int level) {
    if (const ObjectRef object = objectAt(script, index)) {
        return std::string("[").append(nameOf(object->objectClass())).append("]");
    }
    if (lateBoundAt(script, index)) {
        return duk_has_prop_string(script, index, "OpenKey") ? "[TokenProvider]" : "[Token]";
    }
    if (duk_is_function(script, index)) {
        duk_get_prop_string(script, index, "name");
        const std::string name = isText(script, -1) ? printable(viewOf(utf8At(script, -1))) : "";
        duk_pop(script);
        return name.empty() ? "[function]" : "[function " + name + "]";
    }
    if (duk_is_buffer_data(script, index)) {
        return showBytes(script, index);
    }
    if (duk_is_array(script, index)) {
        return showArray(script, index, level);
    }
    const std::string maker = makerOf(script, index);
    if (maker.empty() || maker == "Object") {
        return showProperties(script, index, level);
    }
    // Dates, regular expressions, errors and others say what they are.
    duk_dup(script, index);
    std::string text = printable(viewOf(utf8At(script, -1)));
    duk_pop(script);
    return text;
}

std::string show(duk_context* script, duk_idx_t index, int level) {
    duk_require_stack(script, 8);
    index = duk_normalize_index(script, index);
    if (isText(script, index)) {
        return quoted(viewOf(utf8At(script, index)));
    }
    if (duk_is_symbol(script, index)) {
        return "[symbol]";
    }
    if (duk_is_object(script, index) || duk_is_buffer_data(script, index)) {
        return showObject(script, index, level);
    }
    duk_dup(script, index);
    std::string text(viewOf(utf8At(script, -1)));
    duk_pop(script);
    return text;
}

}  // namespace

std::string shownValue(duk_context* script, duk_idx_t index) {
    return show(script, index, 0);
}

}  // namespace zr::host
