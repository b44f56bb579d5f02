// The table of the object model against the public header and against its own page.
#include "host/objects/member.h"

#include <algorithm>
#include <cctype>
#include <map>
#include <regex>
#include <set>
#include <sstream>

#include "host/objects/automation_members.h"
#include "host/objects/reference.h"
#include "tests/host/child_command.h"

namespace zr::test {
namespace {

using host::Member;
using host::MemberOrigin;
using host::ObjectClass;

constexpr std::pair<const char*, ObjectClass> kInterfaces[] = {
    {"ITokenProvider", ObjectClass::kProvider},
    {"IKeyObject", ObjectClass::kToken},
    {"IKeyFile", ObjectClass::kFile},
    {"IKeyContainer", ObjectClass::kContainer},
    {"IKeyCertificate", ObjectClass::kCertificate}};

/// What the header declares of an interface: its operations with the names of the parameters that
/// are not results.
using Operations = std::map<std::string, std::vector<std::string>>;

std::vector<std::string> inputNames(const std::string& parameters) {
    static const std::regex one(R"(\s*([\w ]+[\w*]+)\s+(\w+)\s*)");
    std::vector<std::string> names;
    std::istringstream list(parameters);
    for (std::string parameter; std::getline(list, parameter, ',');) {
        std::smatch match;
        if (!std::regex_match(parameter, match, one)) {
            ADD_FAILURE() << parameter;
        } else if (!match[1].str().ends_with('*') || match[1] == "IKeyCertificate*" ||
                   match[2] == "label") {
            names.push_back(match[2]);
        }
    }
    return names;
}

/// Joins lines, so that a declaration is one.
std::string headerText() {
    std::istringstream header(readFile(ZRKEY_INCLUDE "/zrkey/zrkey.h"));
    std::string text;
    for (std::string line; std::getline(header, line);) {
        if (line.find("///") == std::string::npos) {
            text.append(line).append(" ");
        }
    }
    return text;
}

Operations operationsOf(const std::string& interfaceName) {
    const std::string text = headerText();
    const std::size_t begin = text.find("struct " + interfaceName + " :");
    EXPECT_NE(std::string::npos, begin) << interfaceName;
    const std::string body = text.substr(begin, text.find("};", begin) - begin);
    static const std::regex declaration(R"(STDMETHODCALLTYPE (\w+)\(([^)]*)\) = 0)");
    Operations operations;
    for (std::sregex_iterator match(body.begin(), body.end(), declaration), end; match != end;
         ++match) {
        operations[(*match)[1]] = inputNames((*match)[2]);
    }
    return operations;
}

/// The one operation of the library that an extension takes the place of: see deleteFile.
constexpr std::string_view kInPlace = "DeleteFile";

bool isLeftOut(const std::string& interfaceName, const std::string& operation) {
    return std::ranges::any_of(host::leftOut(), [&](const host::LeftOut& row) {
        return row.interfaceName == interfaceName && row.operation == operation;
    });
}

TEST(ObjectTableTest, EveryOperationOfTheHeaderHasARowOrAReason) {
    std::size_t operations = 0;
    for (const auto& [interfaceName, objectClass] : kInterfaces) {
        for (const auto& [operation, inputs] : operationsOf(interfaceName)) {
            ++operations;
            const Member* member = host::findMember(objectClass, operation);
            EXPECT_NE(member != nullptr, isLeftOut(interfaceName, operation)) << operation;
        }
    }
    EXPECT_EQ(60u, operations);
}

std::string lowerCase(std::string text) {
    std::ranges::transform(text, text.begin(),
                           [](char letter) { return static_cast<char>(std::tolower(letter)); });
    return text;
}

/// Whether a name of the header is also that of a member or class, as Automation clients compare names.
bool isTaken(const std::string& name) {
    const auto isSame = [&](const std::string& other) {
        return lowerCase(other) == lowerCase(name);
    };
    return std::ranges::any_of(kInterfaces, [&](const auto& row) {
        const auto members = host::automationMembers(row.second);
        return isSame(host::nameOf(row.second)) ||
               std::ranges::any_of(members, isSame, &host::AutomationMember::name);
    });
}

/// Whether a parameter has the name of the header, or a longer or shorter one when that is taken.
bool isNamedAs(const std::string& ofHeader, const std::string& name) {
    if (!isTaken(ofHeader)) {
        return ofHeader == name;
    }
    const std::string first = lowerCase(ofHeader), second = lowerCase(name);
    return first != second && (first.starts_with(second) || second.ends_with(first));
}

TEST(ObjectTableTest, RowOfALibraryCallHasTheParametersOfTheHeader) {
    for (const auto& [interfaceName, objectClass] : kInterfaces) {
        const Operations operations = operationsOf(interfaceName);
        for (const Member& member : host::membersOf(objectClass)) {
            if (std::string_view(member.name) == kInPlace) {
                EXPECT_EQ(MemberOrigin::kExtension, member.origin);
            } else if (member.origin != MemberOrigin::kLibrary) {
                EXPECT_FALSE(operations.contains(member.name)) << member.name;
                continue;
            }
            ASSERT_TRUE(operations.contains(member.name)) << member.name;
            std::vector<std::string> names;
            for (const host::Parameter& parameter : member.parameters) {
                names.push_back(parameter.name);
            }
            EXPECT_TRUE(std::ranges::equal(operations.at(member.name), names, isNamedAs))
                << member.name;
        }
    }
}

TEST(ObjectTableTest, EveryReasonNamesAnOperationOfTheHeader) {
    for (const host::LeftOut& row : host::leftOut()) {
        EXPECT_TRUE(operationsOf(row.interfaceName).contains(row.operation)) << row.operation;
    }
}

TEST(ObjectTableTest, NamesAreUniqueAndHelpIsASentence) {
    for (const auto& [interfaceName, objectClass] : kInterfaces) {
        std::set<std::string> names;
        for (const Member& member : host::membersOf(objectClass)) {
            EXPECT_TRUE(names.insert(member.name).second) << member.name;
            EXPECT_TRUE(std::string_view(member.help).ends_with('.')) << member.name;
        }
    }
}

TEST(ObjectTableTest, OptionalParametersAreLast) {
    for (const auto& [interfaceName, objectClass] : kInterfaces) {
        for (const Member& member : host::membersOf(objectClass)) {
            EXPECT_TRUE(
                std::ranges::is_sorted(member.usedParameters(), {}, &host::Parameter::isOptional))
                << member.name;
        }
    }
}

using Names = std::vector<std::string>;

/// What web pages may call.
Names pageMembers(ObjectClass objectClass) {
    Names names;
    for (const Member& member : host::membersOf(objectClass)) {
        if (member.isForPages) {
            names.emplace_back(member.name);
        }
    }
    return names;
}

TEST(ObjectTableTest, PagesMayNotChangeATokenOrLoadAModule) {
    EXPECT_EQ(Names({"GetName", "GetKeyCount", "OpenKey", "tokens", "Close"}),
              pageMembers(ObjectClass::kProvider));
    EXPECT_EQ(
        Names(
            {"GetLabel",    "GetSerialNumber", "GetManufacturerID", "GetModelID",    "GetTotalSize",
             "GetFreeSize", "EnumContainer",   "GetContainerCount", "OpenContainer", "certificates",
             "GetCertData", "GetPubKeyData",   "SignData",          "VerifyData",    "sign",
             "verify",      "GetDigestMethod", "DigestData",        "GetSignAlgo",   "GetAlgoList",
             "Close"}),
        pageMembers(ObjectClass::kToken));
    EXPECT_EQ(Names(), pageMembers(ObjectClass::kFile));
    EXPECT_EQ(Names({"GetKeyCert", "GetType", "Close"}), pageMembers(ObjectClass::kContainer));
    EXPECT_EQ(Names({"GetCertData", "GetCertID", "pem", "subject", "Close"}),
              pageMembers(ObjectClass::kCertificate));
    EXPECT_EQ(Names({"Count", "Item", "Close"}), pageMembers(ObjectClass::kCollection));
}

TEST(ObjectTableTest, ReferenceIsTheOneInTheDocuments) {
    EXPECT_EQ(readFile(ZRKEY_DOCS "/object-model.md"), host::objectReference());
}

}  // namespace
}  // namespace zr::test
