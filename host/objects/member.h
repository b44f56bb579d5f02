// The description of a member: what front ends, type library and reference are made from.
#pragma once

#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "host/objects/value.h"

namespace zr::host {

class Arguments;

enum class ObjectClass { kProvider, kToken, kFile, kContainer, kCertificate, kCollection };
/// "TokenProvider", "Token", ...
const char* nameOf(ObjectClass objectClass);

/// What an argument has to be.
enum class ParameterKind {
    kInteger,      ///< a whole number of 32 bits
    kText,         ///< mostly without a NUL
    kBytes,        ///< at most 2,147,483,647
    kCertificate,  ///< an object of that class
    kTextOrIndex,  ///< a text or a whole number
    kUnused        ///< the library does not look at it
};

struct Parameter {
    const char* name;
    ParameterKind kind;
    bool isOptional = false;  ///< only parameters at the end are
    bool mayHaveNul = false;  ///< a text
};

enum class MemberOrigin {
    kLibrary,   ///< one call of the library, of the same name
    kComposed,  ///< made of calls of the library
    kExtension  ///< calls the PKCS #11 module, for what the library does not do or does not finish
};

struct Member {
    const char* name;
    /// Those of the library's operation, in its order. A call gives either all of them or none of
    /// those that are not used.
    std::vector<Parameter> parameters;
    Kind result;
    MemberOrigin origin;
    const char* help;  ///< one sentence
    /// Called with arguments that were checked against the parameters.
    Value (*call)(Object& object, const Arguments& arguments);
    /// Of a result of Kind::kObject; nullopt: any class.
    std::optional<ObjectClass> resultClass = {};
    bool isForPages = false;   ///< a web page may call it
    bool mayBeNull = false;    ///< the result
    bool isForClosed = false;  ///< may be called on a closed object

    Member returning(ObjectClass objectClass) const;
    Member forPages() const;
    Member orNull() const;
    Member forClosed() const;

    /// The parameters that are used.
    std::vector<Parameter> usedParameters() const;
};

/// The members of a class, in the order of the reference. A new member is the last of its class:
/// the numbers by which Automation clients call members are made from their places.
std::span<const Member> membersOf(ObjectClass objectClass);
/// @return null when the class does not have it. Names are case-sensitive.
const Member* findMember(ObjectClass objectClass, std::string_view name);

/// An operation of the public header that no host can call by name.
struct LeftOut {
    const char* interfaceName;  ///< "IKeyObject"
    const char* operation;
    const char* reason;
};
std::span<const LeftOut> leftOut();

}  // namespace zr::host
