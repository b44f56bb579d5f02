// The classes and interfaces of zrkeycom.dll, in the language of type libraries.
#include "host/objects/idl.h"

#include "host/objects/automation_members.h"

namespace zr::host {
namespace {

/// A class with its identifiers, which are part of compiled clients and never change.
struct ClassRow {
    ObjectClass objectClass;
    const char* interfaceId;
    const char* classId;
    const char* help;
};

constexpr const char* kLibraryId = "CF441FF7-BB25-47BC-8AC4-CDC7EA1E851A";
constexpr ClassRow kClasses[] = {
    {ObjectClass::kProvider, "43555996-521F-4525-A165-872E98EA820F",
     "276154BC-2213-480D-85AC-4C565EC9F34B", "Loads a PKCS #11 module and opens its tokens."},
    {ObjectClass::kToken, "FD411C38-3FDB-4B8C-8C3C-717D4A8F44CD",
     "8DC24E1E-5FAC-418F-AFE7-3D0E2168A89A", "A token."},
    {ObjectClass::kFile, "8FCDDDC5-5CF4-4C2D-95A3-282B02DD67A3",
     "5371304B-BA8D-4411-87EA-ED3F758044C0", "A file on a token."},
    {ObjectClass::kContainer, "379454EA-4C6C-456C-A0E0-82175FFA8F0C",
     "6139E756-FD55-414B-BE7D-861896C83FDD", "A certificate on a token, with its keys."},
    {ObjectClass::kCertificate, "2B01319F-9F6D-4A54-8440-20C3EE187E00",
     "7F595CEB-7B0A-4D1F-B0A8-18595D2426B3", "A certificate on a token."},
    {ObjectClass::kCollection, "951CDD42-81FF-4105-9453-F67FBC8BAC27",
     "FBE8632D-2196-43C1-A9D7-B3391CD3A8CC", "A list of tokens or certificates."}};

constexpr const char* kBegin =
    R"(// The classes and interfaces of zrkeycom.dll. This file is written by "zrkey --generate idl" from the
// table of members in host/objects/.
import "oaidl.idl";

)";

// The values of the parameters pinType and origin.
constexpr const char* kEnumerations = R"(
    typedef [helpstring("Whose PIN it is.")]
    enum
    {
        ZRPinUser = 0,
        ZRPinSecurityOfficer = 1
    } ZRPinType;

    typedef [helpstring("What an offset counts from.")]
    enum
    {
        ZRSeekBeginning = 0,
        ZRSeekPosition = 1,
        ZRSeekEnd = 2
    } ZRSeekOrigin;
)";

// The items of a list, for "For Each".
constexpr const char* kItems = R"(        [propget, restricted, id(DISPID_NEWENUM)]
        HRESULT _NewEnum([out, retval] IUnknown** result);
)";

std::string interfaceOf(ObjectClass objectClass) {
    return std::string("IZR").append(nameOf(objectClass));
}

/// What a member does for Automation clients.
const char* helpOf(const Member& member) {
    // The server's own, see host/automation/client_loading.h.
    return std::string_view(member.name) == "Load" ? "Loads a PKCS #11 module, by a full path or "
                                                     "one relative to the current directory; "
                                                     "finds config.xml as the zrkey command does."
                                                   : member.help;
}

/// A text between quotation marks.
std::string quoted(std::string_view text) {
    std::string quoted = "\"";
    for (const char letter : text) {
        quoted.append(letter == '"' || letter == '\\' ? "\\" : "").append(1, letter);
    }
    return quoted.append("\"");
}

const char* typeOf(const Parameter& parameter) {
    switch (parameter.kind) {
        case ParameterKind::kInteger:
            return "long";
        case ParameterKind::kText:
            // A text that is left out is not an empty one.
            return parameter.isOptional ? "VARIANT" : "BSTR";
        case ParameterKind::kCertificate:
            return "IZRCertificate*";
        default:
            return "VARIANT";
    }
}

/// Other numbers fit into 31 bits.
bool isLarge(const Member& member) {
    const std::string_view name = member.name;
    return name == "GetTotalSize" || name == "GetFreeSize";
}

std::string resultTypeOf(const Member& member) {
    switch (member.result) {
        case Kind::kBoolean:
            return "VARIANT_BOOL";
        case Kind::kNumber:
            return isLarge(member) ? "double" : "long";
        case Kind::kText:
            return member.mayBeNull ? "VARIANT" : "BSTR";
        case Kind::kObject:
            return member.resultClass ? interfaceOf(*member.resultClass).append("*") : "IDispatch*";
        default:
            return "VARIANT";
    }
}

std::string attributesOf(const Parameter& parameter) {
    std::string attributes = "[in";
    if (parameter.isOptional) {
        attributes.append(", optional");
        attributes.append(parameter.kind == ParameterKind::kInteger ? ", defaultvalue(0)" : "");
    }
    return attributes.append("]");
}

std::string parametersOf(const Member& member) {
    std::string text;
    for (const Parameter& parameter : member.usedParameters()) {
        text.append(text.empty() ? "" : ", ").append(attributesOf(parameter)).append(" ");
        text.append(typeOf(parameter)).append(" ").append(parameter.name);
    }
    if (member.result != Kind::kNothing) {
        text.append(text.empty() ? "" : ", ").append("[out, retval] ");
        text.append(resultTypeOf(member)).append("* result");
    }
    return text;
}

std::string numberText(LONG number) {
    return number == kDefaultMember ? "DISPID_VALUE" : std::to_string(number);
}

std::string memberText(const AutomationMember& row) {
    std::string text = "        [";
    text.append(row.isProperty ? "propget, " : "").append("id(").append(numberText(row.number));
    text.append("), helpstring(").append(quoted(helpOf(*row.member))).append(")]\n");
    text.append("        HRESULT ").append(row.name).append("(");
    return text.append(parametersOf(*row.member)).append(");\n");
}

std::string interfaceText(const ClassRow& row) {
    std::string text = "\n    [object, dual, oleautomation, uuid(";
    text.append(row.interfaceId).append("),\n     helpstring(").append(quoted(row.help));
    text.append(")]\n    interface ").append(interfaceOf(row.objectClass));
    text.append(" : IDispatch\n    {\n");
    // First, so that a new member comes last.
    text.append(row.objectClass == ObjectClass::kCollection ? kItems : "");
    for (const AutomationMember& member : automationMembers(row.objectClass)) {
        text.append(memberText(member));
    }
    return text.append("    };\n");
}

/// Clients create a provider; everything else comes from it.
std::string classText(const ClassRow& row) {
    std::string text = "\n    [uuid(";
    text.append(row.classId).append(")");
    text.append(row.objectClass == ObjectClass::kProvider ? "" : ", noncreatable");
    text.append(",\n     helpstring(").append(quoted(row.help)).append(")]\n    coclass ");
    text.append(nameOf(row.objectClass)).append("\n    {\n        [default] interface ");
    return text.append(interfaceOf(row.objectClass)).append(";\n    };\n");
}

}  // namespace

std::string automationIdl() {
    std::string text = kBegin;
    text.append("[uuid(").append(kLibraryId).append("), version(1.0), ");
    text.append("helpstring(\"ZRKey\")]\nlibrary ZRKey\n{\n    importlib(\"stdole2.tlb\");\n\n");
    for (const ClassRow& row : kClasses) {
        text.append("    interface ").append(interfaceOf(row.objectClass)).append(";\n");
    }
    text.append(kEnumerations);
    for (const ClassRow& row : kClasses) {
        text.append(interfaceText(row));
    }
    for (const ClassRow& row : kClasses) {
        text.append(classText(row));
    }
    return text.append("};\n");
}

}  // namespace zr::host
