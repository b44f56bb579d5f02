// Values of the object model as messages have them.
#include "host/browser/page_values.h"

#include <cmath>
#include <cstdint>
#include <string>
#include <utility>

#include "host/browser/base64url.h"
#include "host/browser/messages.h"
#include "host/browser/page_error.h"
#include "host/objects/collection_object.h"

namespace zr::host {
namespace {

using nlohmann::json;

Value bytesOf(const std::optional<std::string>& bytes, std::size_t index, const char* problem) {
    if (!bytes) {
        throw PageError::wrongArgument(index, problem);
    }
    return toBytes(*bytes);
}

Value readObject(std::uint64_t number, const PageObjects& objects, std::size_t index) {
    try {
        return objects.find(number).object;
    } catch (const PageError&) {
        throw PageError::wrongArgument(index, objects.wasClosed(number)
                                                  ? "was closed"
                                                  : "is not an object of this connection");
    }
}

Value readArgument(const json& argument, std::size_t index, const PageObjects& objects,
                   Uploads& uploads) {
    if (argument.is_null()) {
        return Null();
    }
    if (argument.is_boolean()) {
        return argument.get<bool>();
    }
    if (argument.is_number()) {
        return argument.get<double>();
    }
    if (argument.is_string()) {
        return toWideText(argument.get_ref<const std::string&>());
    }
    if (argument.contains("bytes")) {
        return bytesOf(fromBase64Url(argument.at("bytes").get_ref<const std::string&>()), index,
                       "is not base64url without padding");
    }
    if (argument.contains("upload")) {
        return bytesOf(uploads.take(argument.at("upload").get<std::uint64_t>()), index,
                       "is not an upload of this connection, or bytes of it were refused");
    }
    return readObject(argument.at("object").get<std::uint64_t>(), objects, index);
}

json writeNumber(double number) {
    const bool isWhole =
        std::trunc(number) == number && std::abs(number) <= static_cast<double>(kGreatestId);
    return isWhole ? json(static_cast<std::int64_t>(number)) : json(number);
}

json writeObject(const ObjectRef& object, PageObjects& objects, const PageObject& origin) {
    return {{"object", objects.add(object, &origin)}, {"class", nameOf(object->objectClass())}};
}

json writeObjects(const ObjectRef& object, PageObjects& objects, const PageObject& origin) {
    if (object->objectClass() != ObjectClass::kCollection) {
        return writeObject(object, objects, origin);
    }
    json list = json::array();
    for (const ObjectRef& item : static_cast<const CollectionObject&>(*object).items()) {
        list.push_back(writeObject(item, objects, origin));
    }
    return list;
}

/// The same; when it fails, the page gets no number, so none is kept.
json writeObjectsOrNone(const ObjectRef& object, PageObjects& objects, const PageObject& origin) {
    const std::uint64_t before = objects.last();
    try {
        return writeObjects(object, objects, origin);
    } catch (...) {
        for (std::uint64_t number = before + 1; number <= objects.last(); ++number) {
            objects.remove(number);
        }
        throw;
    }
}

json writeTexts(const WideTexts& texts) {
    json list = json::array();
    for (const WideText& text : texts) {
        list.push_back(toUtf8(text));
    }
    return list;
}

}  // namespace

std::vector<Value> readArguments(const json& arguments, const PageObjects& objects,
                                 Uploads& uploads) {
    std::vector<Value> values;
    for (const json& argument : arguments) {
        values.push_back(readArgument(argument, values.size(), objects, uploads));
    }
    return values;
}

json writeResult(const Value& value, PageObjects& objects, const PageObject& origin) {
    switch (kindOf(value)) {
        case Kind::kBoolean:
            return std::get<bool>(value);
        case Kind::kNumber:
            return writeNumber(std::get<double>(value));
        case Kind::kText:
            return toUtf8(std::get<WideText>(value));
        case Kind::kBytes:
            return {{"bytes", toBase64Url(viewOf(std::get<Bytes>(value).bytes))}};
        case Kind::kTexts:
            return writeTexts(std::get<WideTexts>(value));
        case Kind::kObject:
            return writeObjectsOrNone(std::get<ObjectRef>(value), objects, origin);
        default:
            return nullptr;
    }
}

}  // namespace zr::host
