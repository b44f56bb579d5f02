// The reference of the object model, in Markdown.
#include "host/objects/reference.h"

#include "host/objects/member.h"
#include "host/token/signing.h"

namespace zr::host {
namespace {

constexpr ObjectClass kClasses[] = {ObjectClass::kProvider,    ObjectClass::kToken,
                                    ObjectClass::kFile,        ObjectClass::kContainer,
                                    ObjectClass::kCertificate, ObjectClass::kCollection};

constexpr const char* kIntroduction = R"(# The object model by name

This page is written by the `zrkey` command from the table of its members (`host/objects/`). Scripts
of `zrkey run` and `zrkey shell` have these classes and members, and so have Automation clients on
Windows. The hosts differ in their forms:

| | scripts | Automation clients |
|---|---|---|
| names | are case-sensitive | are not case-sensitive |
| `GetLabel` and other getters without parameters | are called: `GetLabel()` | are also properties: `Label` |
| `tokens`, `certificates`, `pem`, `subject` | are called: `tokens()` | are properties: `tokens` |
| a Collection | is an array | is an object with `Count`, `Item` and `For Each` |
| a list of texts | is an array | is an array |
| bytes | are a Uint8Array | are an array of bytes |

[The script reference](script-reference.md) and [Automation clients](automation.md) have the rest.

A member is one of three kinds:

| kind | what it is |
|---|---|
| library | one call of the library's operation of the same name, with its results and its oddities |
| composed | made of calls of the library |
| extension | calls the PKCS #11 module, for what the library does not do or does not finish |

Parameters in brackets may be left out. When the library ignores some of its parameters, the list
with them is shown after a slash. A call gives all parameters, in the order of `zrkey.h`, or none of
the ignored ones.

A call that the library, the module or the token refuses is an error with the member and the
library's result, so a boolean result is `true`, except that of `verify`. An argument of a wrong
type or value is an error that says which argument it is; nothing is called then.

`Close` releases an object. Every later call of a member of it is an error, except another `Close`
and the conversions of the provider, such as `toHex`. Objects opened from a closed one stay usable,
so objects may be closed in any order.
)";

const char* nameOf(ParameterKind kind) {
    switch (kind) {
        case ParameterKind::kInteger:
            return "whole number";
        case ParameterKind::kText:
            return "text";
        case ParameterKind::kBytes:
            return "bytes";
        case ParameterKind::kCertificate:
            return "Certificate";
        default:
            return "text or whole number";
    }
}

const char* nameOf(MemberOrigin origin) {
    switch (origin) {
        case MemberOrigin::kLibrary:
            return "library";
        case MemberOrigin::kComposed:
            return "composed";
        default:
            return "extension";
    }
}

const char* kindOfResult(const Member& member) {
    switch (member.result) {
        case Kind::kBoolean:
            return "boolean";
        case Kind::kNumber:
            return "number";
        case Kind::kText:
            return "text";
        case Kind::kBytes:
            return "bytes";
        case Kind::kTexts:
            return "list of texts";
        case Kind::kObject:
            return member.resultClass ? nameOf(*member.resultClass) : "object";
        default:
            return "nothing";
    }
}

std::string resultOf(const Member& member) {
    return std::string(kindOfResult(member)).append(member.mayBeNull ? " or null" : "");
}

/// "VerifyPIN(pin, [type])".
std::string callOf(const Member& member) {
    std::string used;
    for (const Parameter& parameter : member.usedParameters()) {
        used.append(used.empty() ? "" : ", ");
        used.append(parameter.isOptional ? "[" : "").append(parameter.name);
        used.append(parameter.isOptional ? "]" : "");
    }
    std::string text = "`";
    text.append(member.name).append("(").append(used).append(")`");
    if (member.usedParameters().size() == member.parameters.size()) {
        return text;
    }
    std::string all;
    for (const Parameter& parameter : member.parameters) {
        all.append(all.empty() ? "" : ", ").append(parameter.name);
    }
    return text.append(" / `(").append(all).append(")`");
}

std::string parametersOf(const Member& member) {
    std::string text;
    for (const Parameter& parameter : member.usedParameters()) {
        text.append(text.empty() ? "" : ", ").append(parameter.name).append(": ");
        text.append(nameOf(parameter.kind));
    }
    return text;
}

std::string rowOf(const Member& member) {
    std::string row = "| ";
    row.append(callOf(member)).append(" | ").append(parametersOf(member)).append(" | ");
    row.append(resultOf(member)).append(" | ").append(nameOf(member.origin)).append(" | ");
    return row.append(member.help).append(" |\n");
}

std::string sectionOf(ObjectClass objectClass) {
    std::string text = "\n## ";
    text.append(nameOf(objectClass));
    text.append(
        "\n\n| call | parameters | result | kind | what it does |\n|---|---|---|---|---|\n");
    for (const Member& member : membersOf(objectClass)) {
        text.append(rowOf(member));
    }
    return text;
}

std::string algorithmSection() {
    std::string text = "\nThe algorithms of `sign` and `verify` are ";
    return text.append(algorithmNames()).append(".\n");
}

std::string leftOutSection() {
    std::string text =
        "\n## Only in compiled hosts\n\nThese operations of `zrkey.h` have no name here.\n\n"
        "| operation | why |\n|---|---|\n";
    for (const LeftOut& row : leftOut()) {
        text.append("| `").append(row.interfaceName).append("::").append(row.operation);
        text.append("` | ").append(row.reason).append(" |\n");
    }
    return text;
}

}  // namespace

std::string objectReference() {
    std::string text = kIntroduction;
    for (const ObjectClass objectClass : kClasses) {
        text.append(sectionOf(objectClass));
        text.append(objectClass == ObjectClass::kToken ? algorithmSection() : "");
    }
    return text.append(leftOutSection());
}

}  // namespace zr::host
