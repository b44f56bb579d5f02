// The class File of the object model.
#pragma once

#include "host/objects/library_object.h"

namespace zr::host {

class FileObject : public LibraryObject<IKeyFile, ObjectClass::kFile> {
public:
    using LibraryObject::LibraryObject;
};

std::span<const Member> fileMembers();

}  // namespace zr::host
