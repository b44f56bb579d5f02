// Conversion between script values and values of the object model.
#include "host/script/script_values.h"

#include <algorithm>

#include "host/objects/collection_object.h"
#include "host/script/script_objects.h"
#include "host/script/script_text.h"

namespace zr::host {
namespace {

Value readText(duk_context* script, duk_idx_t index) {
    duk_size_t size = 0;
    const char* text = duk_get_lstring(script, index, &size);
    return WideText{toUnits({text, size})};
}

Value readBytes(duk_context* script, duk_idx_t index) {
    duk_size_t size = 0;
    const auto* bytes = static_cast<const char*>(duk_get_buffer_data(script, index, &size));
    return toBytes({bytes, size});
}

/// Pushes the values that a result can be.
class Pusher {
public:
    explicit Pusher(duk_context* script) : m_script(script) {}

    void operator()(Nothing) const { duk_push_undefined(m_script); }
    void operator()(Null) const { duk_push_null(m_script); }
    void operator()(bool value) const { duk_push_boolean(m_script, value); }
    void operator()(double value) const { duk_push_number(m_script, value); }
    void operator()(const WideText& text) const {
        const ErasedBytes bytes = toScriptText(text.units.data(), text.units.size());
        duk_push_lstring(m_script, bytes.data(), bytes.size());
    }
    void operator()(const Bytes& bytes) const {
        const std::size_t size = bytes.bytes.size();
        void* const buffer = duk_push_fixed_buffer(m_script, size);
        std::copy(bytes.bytes.begin(), bytes.bytes.end(), static_cast<char*>(buffer));
        duk_push_buffer_object(m_script, -1, 0, size, DUK_BUFOBJ_UINT8ARRAY);
        duk_remove(m_script, -2);
    }
    void operator()(const WideTexts& texts) const { pushList(texts); }
    void operator()(const ObjectRef& object) const {
        if (object->objectClass() == ObjectClass::kCollection) {
            pushList(static_cast<const CollectionObject&>(*object).items());
        } else {
            pushObject(m_script, object);
        }
    }

private:
    template <class List>
    void pushList(const List& list) const {
        duk_require_stack(m_script, 8);
        const duk_idx_t array = duk_push_array(m_script);
        duk_uarridx_t index = 0;
        for (const auto& element : list) {
            (*this)(element);
            duk_put_prop_index(m_script, array, index++);
        }
    }

    duk_context* m_script;
};

}  // namespace

std::size_t argumentSize(duk_context* script, duk_idx_t index) {
    duk_size_t size = 0;
    if (duk_is_string(script, index)) {
        // UTF-16 never needs more units than the engine's text has bytes.
        duk_get_lstring(script, index, &size);
        size *= sizeof(OLECHAR);
    } else if (duk_is_buffer_data(script, index)) {
        duk_get_buffer_data(script, index, &size);
    }
    return sizeof(VARIANT) + size;
}

std::optional<Value> readValue(duk_context* script, duk_idx_t index) {
    switch (duk_get_type(script, index)) {
        case DUK_TYPE_UNDEFINED:
            return Nothing();
        case DUK_TYPE_NULL:
            return Null();
        case DUK_TYPE_BOOLEAN:
            return duk_get_boolean(script, index) != 0;
        case DUK_TYPE_NUMBER:
            return duk_get_number(script, index);
        case DUK_TYPE_STRING:
            if (duk_is_symbol(script, index)) {
                return std::nullopt;
            }
            return readText(script, index);
        default:
            break;
    }
    if (duk_is_buffer_data(script, index)) {
        return readBytes(script, index);
    }
    const ObjectRef object = objectAt(script, index);
    return object ? std::optional<Value>(object) : std::nullopt;
}

void pushValue(duk_context* script, const Value& value) {
    std::visit(Pusher(script), value);
}

}  // namespace zr::host
