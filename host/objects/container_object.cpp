// The class Container of the object model.
#include "host/objects/container_object.h"

#include "host/objects/certificate_object.h"

namespace zr::host {
namespace {

Value getType(ContainerObject& container, const Arguments& arguments) {
    return readText(container, arguments, &IKeyContainer::GetType);
}

Value getKeyCert(ContainerObject& container, const Arguments& arguments) {
    zrkey::ComRef<IKeyCertificate> certificate;
    // The library does not look at the argument.
    arguments.require(container.use(arguments)->GetKeyCert(true, certificate.receive()));
    return std::make_shared<CertificateObject>(std::move(certificate));
}

Value closeContainer(ContainerObject& container, const Arguments& arguments) {
    if (!container.isClosed()) {
        arguments.require(container.use(arguments)->Close());
        container.close();
    }
    return true;
}

}  // namespace

std::span<const Member> containerMembers() {
    static const Member members[] = {
        libraryCall<getKeyCert>("GetKeyCert", {{"signing", ParameterKind::kUnused}}, Kind::kObject,
                                "Returns the certificate of the container.")
            .returning(ObjectClass::kCertificate)
            .forPages(),
        libraryCall<getType>("GetType", {}, Kind::kText,
                             "Reads the type of the certificate as text: empty for X.509.")
            .forPages(),
        libraryCall<closeContainer>("Close", {}, Kind::kBoolean,
                                    "Releases the container; its certificate stays usable.")
            .forClosed()
            .forPages()};
    return members;
}

}  // namespace zr::host
