// The messages to the host.
#include "host/browser/messages.h"

#include <algorithm>
#include <initializer_list>
#include <optional>
#include <utility>

#include "host/browser/malformed.h"
#include "host/web/strict_json.h"

namespace zr::host {
namespace {

using nlohmann::json;

[[noreturn]] void refuse(std::string problem) {
    throw Malformed{std::move(problem)};
}

/// Throws Malformed unless the keys of an object are these.
void requireKeys(const json& object, std::initializer_list<const char*> needed,
                 std::initializer_list<const char*> optional = {}) {
    if (!object.is_object()) {
        refuse("a message has a value that is not an object");
    }
    std::size_t known = 0;
    for (const char* key : needed) {
        if (!object.contains(key)) {
            refuse(std::string("a message has no key \"").append(key).append("\""));
        }
        ++known;
    }
    for (const char* key : optional) {
        known += object.contains(key) ? 1 : 0;
    }
    if (known != object.size()) {
        refuse("a message has an unknown key");
    }
}

std::string textIn(const json& object, const char* key) {
    const json& value = object.at(key);
    if (!value.is_string()) {
        refuse(std::string("\"").append(key).append("\" is not a text"));
    }
    return value.get<std::string>();
}

std::uint64_t numberIn(const json& object, const char* key, std::uint64_t least) {
    const json& value = object.at(key);
    if (!value.is_number_unsigned() || value.get<std::uint64_t>() < least ||
        value.get<std::uint64_t>() > kGreatestId) {
        refuse(std::string("\"").append(key).append("\" is not a whole number in its range"));
    }
    return value.get<std::uint64_t>();
}

/// An optional key; false when it is not there.
bool booleanIn(const json& object, const char* key) {
    if (!object.contains(key)) {
        return false;
    }
    if (!object.at(key).is_boolean()) {
        refuse(std::string("\"").append(key).append("\" is not a boolean"));
    }
    return object.at(key).get<bool>();
}

HelloMessage readHello(const json& value) {
    requireKeys(value, {"protocol", "origin"}, {"check"});
    const json& protocol = value.at("protocol");
    const bool isKnown =
        protocol.is_number_unsigned() && protocol.get<std::uint64_t>() <= kGreatestId;
    if (!isKnown) {
        refuse("\"protocol\" is not a whole number in its range");
    }
    return {protocol.get<std::int64_t>(), textIn(value, "origin"), booleanIn(value, "check")};
}

void checkArgument(const json& argument) {
    if (argument.is_array()) {
        refuse("an argument is a list");
    }
    if (!argument.is_object()) {
        return;
    }
    if (argument.contains("bytes")) {
        requireKeys(argument, {"bytes"});
        textIn(argument, "bytes");
    } else if (argument.contains("upload")) {
        requireKeys(argument, {"upload"});
        numberIn(argument, "upload", 0);
    } else {
        requireKeys(argument, {"object"});
        numberIn(argument, "object", 0);
    }
}

RequestMessage readRequest(json& value) {
    requireKeys(value, {"id", "object", "member", "arguments"}, {"active"});
    RequestMessage request;
    request.id = numberIn(value, "id", 1);
    request.object = numberIn(value, "object", 0);
    request.member = textIn(value, "member");
    if (request.member.size() > kLongestMember) {
        refuse("\"member\" is longer than 64 bytes");
    }
    const json& arguments = value.at("arguments");
    if (!arguments.is_array() || arguments.size() > kMostArguments) {
        refuse("\"arguments\" is not a list of at most 8");
    }
    std::ranges::for_each(arguments, checkArgument);
    request.arguments = std::move(value.at("arguments"));
    request.isActive = booleanIn(value, "active");
    return request;
}

/// The first argument of a member of the connection; 0 when the request is not one, or has no number.
std::uint64_t numberOf(const RequestMessage& request, const char* member) {
    const bool isIt = request.object == 0 && request.member == member && !request.arguments.empty();
    return isIt && request.arguments.front().is_number_unsigned()
               ? request.arguments.front().get<std::uint64_t>()
               : 0;
}

}  // namespace

std::uint64_t RequestMessage::appendedUpload() const {
    return numberOf(*this, "upload");
}

std::vector<std::uint64_t> RequestMessage::uploads() const {
    std::vector<std::uint64_t> numbers;
    if (const std::uint64_t discarded = numberOf(*this, "discard")) {
        numbers.push_back(discarded);
    }
    for (const json& argument : arguments) {
        if (argument.is_object() && argument.contains("upload")) {
            numbers.push_back(argument.at("upload").get<std::uint64_t>());
        }
    }
    return numbers;
}

PageMessage readMessage(std::string_view text) {
    std::string problem;
    std::optional<json> parsed = parseStrictJson(text, kDeepestMessage, problem);
    if (!parsed) {
        refuse("a message " + problem);
    }
    json& value = *parsed;
    if (!value.is_object()) {
        refuse("a message is not an object");
    }
    if (value.contains("hello")) {
        requireKeys(value, {"hello"});
        return readHello(value.at("hello"));
    }
    if (value.contains("cancel")) {
        requireKeys(value, {"cancel"});
        return CancelMessage{numberIn(value, "cancel", 1)};
    }
    return readRequest(value);
}

}  // namespace zr::host
