// The class Certificate of the object model.
#pragma once

#include <string>

#include "host/objects/library_object.h"

namespace zr::host {

class CertificateObject : public LibraryObject<IKeyCertificate, ObjectClass::kCertificate> {
public:
    using LibraryObject::LibraryObject;

    /// The certificate in DER. Throws a CallError when it cannot be read.
    std::string der(const Arguments& arguments) const;
};

std::span<const Member> certificateMembers();

}  // namespace zr::host
