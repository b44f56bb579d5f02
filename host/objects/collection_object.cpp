// A list of objects.
#include "host/objects/collection_object.h"

namespace zr::host {
namespace {

Value count(CollectionObject& list, const Arguments&) {
    return static_cast<double>(list.items().size());
}

Value item(CollectionObject& list, const Arguments& arguments) {
    const LONG index = arguments.integer(0);
    if (index < 0 || static_cast<std::size_t>(index) >= list.items().size()) {
        throw arguments.wrong(0, "is outside the list");
    }
    return list.items()[static_cast<std::size_t>(index)];
}

}  // namespace

std::span<const Member> collectionMembers() {
    static const Member members[] = {
        composedCall<count>("Count", {}, Kind::kNumber, "Counts the objects in the list.")
            .forPages(),
        composedCall<item>("Item", {{"index", ParameterKind::kInteger}}, Kind::kObject,
                           "Returns an object of the list, counted from 0.")
            .forPages(),
        composedCall<closeObject>("Close", {}, Kind::kBoolean,
                                  "Releases the list; its objects stay usable.")
            .forClosed()
            .forPages()};
    return members;
}

}  // namespace zr::host
