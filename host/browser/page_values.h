// Values of the object model as messages have them.
#pragma once

#include <vector>

#include <nlohmann/json.hpp>

#include "host/browser/page_objects.h"
#include "host/browser/uploads.h"

namespace zr::host {

/// The arguments of a request. Throws a PageError; the caller ends the uploads that it names.
/// @param arguments  as RequestMessage has them.
std::vector<Value> readArguments(const nlohmann::json& arguments, const PageObjects& objects,
                                 Uploads& uploads);

/// A result. Its objects get numbers; a collection is a list of them.
/// @param origin  the object whose member was called. Throws a PageError.
nlohmann::json writeResult(const Value& value, PageObjects& objects, const PageObject& origin);

}  // namespace zr::host
