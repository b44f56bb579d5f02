// The classes of the object model, and calls of their members.
#include "host/objects/object.h"

#include <algorithm>

#include "host/objects/arguments.h"
#include "host/objects/certificate_object.h"
#include "host/objects/collection_object.h"
#include "host/objects/container_object.h"
#include "host/objects/file_object.h"
#include "host/objects/provider_object.h"
#include "host/objects/token_object.h"
#include "host/output/failure.h"

namespace zr::host {
namespace {

HRESULT resultOf(const Failure& failure) {
    if (failure.result) {
        return failure.result->code();
    }
    return failure.exitCode == kExitLoginNeeded ? RPC_E_CANTCALLOUT_INEXTERNALCALL : E_FAIL;
}

constexpr const char* kNotImplemented = "always fails with E_NOTIMPL";
constexpr const char* kDoesNothing = "succeeds and returns nothing";
constexpr LeftOut kLeftOut[] = {
    {"ITokenProvider", "GetKeySN", kDoesNothing},
    {"ITokenProvider", "LoadFinish", kNotImplemented},
    {"IKeyObject", "VerifyDataByCert", "succeeds without a look at the signature"},
    {"IKeyObject", "VerifyDataByPubKey", "always fails with E_FAIL"},
    {"IKeyObject", "GetKeyObjectClassName", kDoesNothing},
    {"IKeyObject", "GetCaLibPath", kDoesNothing},
    {"IKeyObject", "GetCSPName", kDoesNothing},
    {"IKeyObject", "GetZRHardApiInfo", kNotImplemented},
    {"IKeyContainer", "ImportCertificate", kNotImplemented},
    {"IKeyContainer", "ExportCertificate", kNotImplemented},
    {"IKeyContainer", "GenKeyPair", kNotImplemented}};

}  // namespace

const char* nameOf(ObjectClass objectClass) {
    switch (objectClass) {
        case ObjectClass::kProvider:
            return "TokenProvider";
        case ObjectClass::kToken:
            return "Token";
        case ObjectClass::kFile:
            return "File";
        case ObjectClass::kContainer:
            return "Container";
        case ObjectClass::kCertificate:
            return "Certificate";
        default:
            return "Collection";
    }
}

std::span<const Member> membersOf(ObjectClass objectClass) {
    switch (objectClass) {
        case ObjectClass::kProvider:
            return providerMembers();
        case ObjectClass::kToken:
            return tokenMembers();
        case ObjectClass::kFile:
            return fileMembers();
        case ObjectClass::kContainer:
            return containerMembers();
        case ObjectClass::kCertificate:
            return certificateMembers();
        default:
            return collectionMembers();
    }
}

const Member* findMember(ObjectClass objectClass, std::string_view name) {
    const std::span<const Member> members = membersOf(objectClass);
    const auto found = std::ranges::find(members, name, &Member::name);
    return found == members.end() ? nullptr : &*found;
}

std::span<const LeftOut> leftOut() {
    return kLeftOut;
}

Value callMember(Object& object, const Member& member, const std::vector<Value>& values) {
    const Arguments arguments(member, values);
    if (object.isClosed() && !member.isForClosed) {
        throw arguments.closed();
    }
    try {
        return member.call(object, arguments);
    } catch (const Failure& failure) {
        throw arguments.refused(resultOf(failure), failure.cause);
    }
}

Value closeObject(Object& object, const Arguments&) {
    object.close();
    return true;
}

}  // namespace zr::host
