// The class Container of the object model.
#pragma once

#include "host/objects/library_object.h"

namespace zr::host {

class ContainerObject : public LibraryObject<IKeyContainer, ObjectClass::kContainer> {
public:
    using LibraryObject::LibraryObject;
};

std::span<const Member> containerMembers();

}  // namespace zr::host
