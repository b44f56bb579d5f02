// The names and numbers of Automation clients, and the file of interfaces that is written from them.
#include "host/objects/automation_members.h"

#include <algorithm>
#include <cctype>
#include <set>

#include "host/objects/idl.h"
#include "tests/host/child_command.h"

namespace zr::test {
namespace {

using host::AutomationMember;
using host::ObjectClass;

constexpr ObjectClass kClasses[] = {ObjectClass::kProvider,    ObjectClass::kToken,
                                    ObjectClass::kFile,        ObjectClass::kContainer,
                                    ObjectClass::kCertificate, ObjectClass::kCollection};

std::string lowerCase(std::string text) {
    std::ranges::transform(text, text.begin(),
                           [](char letter) { return static_cast<char>(std::tolower(letter)); });
    return text;
}

/// The number of a name; 0 when the class does not have it.
LONG numberOf(ObjectClass objectClass, const std::string& name) {
    for (const AutomationMember& row : host::automationMembers(objectClass)) {
        if (row.name == name) {
            return row.number;
        }
    }
    return 0;
}

TEST(AutomationMembersTest, NamesAreUniqueWithoutRegardToCase) {
    for (const ObjectClass objectClass : kClasses) {
        std::set<std::string> names;
        for (const AutomationMember& row : host::automationMembers(objectClass)) {
            EXPECT_TRUE(names.insert(lowerCase(row.name)).second) << row.name;
        }
    }
}

TEST(AutomationMembersTest, NumbersAreUnique) {
    for (const ObjectClass objectClass : kClasses) {
        std::set<LONG> numbers;
        for (const AutomationMember& row : host::automationMembers(objectClass)) {
            EXPECT_TRUE(numbers.insert(row.number).second) << row.name;
        }
    }
}

TEST(AutomationMembersTest, EveryMemberOfTheTableHasANumberByItsPosition) {
    for (const ObjectClass objectClass :
         {ObjectClass::kProvider, ObjectClass::kToken, ObjectClass::kCertificate}) {
        LONG position = 0;
        for (const host::Member& member : host::membersOf(objectClass)) {
            EXPECT_EQ(++position, numberOf(objectClass, member.name)) << member.name;
        }
    }
}

TEST(AutomationMembersTest, GetterWithoutParametersIsAPropertyToo) {
    EXPECT_EQ(host::kFirstProperty + numberOf(ObjectClass::kToken, "GetLabel"),
              numberOf(ObjectClass::kToken, "Label"));
    EXPECT_NE(0, numberOf(ObjectClass::kProvider, "KeyCount"));
    // Its only parameter is not used.
    EXPECT_NE(0, numberOf(ObjectClass::kContainer, "KeyCert"));
    // It has a parameter.
    EXPECT_EQ(0, numberOf(ObjectClass::kToken, "MaxRetryCount"));
}

TEST(AutomationMembersTest, ItemOfACollectionIsItsDefault) {
    const auto members = host::automationMembers(ObjectClass::kCollection);
    const auto item = std::ranges::find(members, "Item", &AutomationMember::name);
    ASSERT_NE(members.end(), item);
    EXPECT_EQ(host::kDefaultMember, item->number);
}

const AutomationMember& memberNamed(ObjectClass objectClass, const std::string& name) {
    static std::vector<AutomationMember> members;
    members = host::automationMembers(objectClass);
    return *std::ranges::find(members, name, &AutomationMember::name);
}

TEST(AutomationMembersTest, MembersThatReadAreProperties) {
    EXPECT_TRUE(memberNamed(ObjectClass::kProvider, "tokens").isProperty);
    EXPECT_TRUE(memberNamed(ObjectClass::kToken, "certificates").isProperty);
    EXPECT_TRUE(memberNamed(ObjectClass::kCertificate, "pem").isProperty);
    EXPECT_TRUE(memberNamed(ObjectClass::kCertificate, "subject").isProperty);
    EXPECT_TRUE(memberNamed(ObjectClass::kToken, "GetLabel").isReadable);
    EXPECT_FALSE(memberNamed(ObjectClass::kToken, "GetLabel").isProperty);
}

TEST(AutomationMembersTest, MembersThatDoSomethingAreNotReadable) {
    EXPECT_FALSE(memberNamed(ObjectClass::kProvider, "Unload").isReadable);
    EXPECT_FALSE(memberNamed(ObjectClass::kToken, "Lock").isReadable);
    // It moves the position.
    EXPECT_FALSE(memberNamed(ObjectClass::kFile, "readAll").isReadable);
    EXPECT_FALSE(memberNamed(ObjectClass::kFile, "Close").isReadable);
}

// A type library keeps one spelling of each name, and editors then write all others like it.
TEST(AutomationMembersTest, ParametersAreNotNamedAsMembersOrClasses) {
    std::set<std::string> names;
    for (const ObjectClass objectClass : kClasses) {
        names.insert(lowerCase(host::nameOf(objectClass)));
        for (const AutomationMember& row : host::automationMembers(objectClass)) {
            names.insert(lowerCase(row.name));
        }
    }
    for (const ObjectClass objectClass : kClasses) {
        for (const host::Member& member : host::membersOf(objectClass)) {
            for (const host::Parameter& parameter : member.parameters) {
                EXPECT_FALSE(names.contains(lowerCase(parameter.name)))
                    << member.name << ": " << parameter.name;
            }
        }
    }
}

TEST(AutomationMembersTest, OnlySizesOfTheMemoryAreDoubles) {
    const std::string idl = host::automationIdl();
    EXPECT_NE(std::string::npos, idl.find("HRESULT GetTotalSize([out, retval] double* result)"));
    EXPECT_NE(std::string::npos, idl.find("HRESULT GetKeyCount([out, retval] long* result)"));
    EXPECT_NE(std::string::npos, idl.find("HRESULT Size([out, retval] long* result)"));
}

TEST(AutomationMembersTest, CommittedInterfacesAreThoseOfTheTable) {
    EXPECT_EQ(readFile(ZRKEY_IDL), host::automationIdl());
}

class AutomationMembersCommandTest : public ChildCommandTest {};

TEST_F(AutomationMembersCommandTest, GenerateWritesTheInterfaces) {
    const CommandResult result = zrkey({"--generate", "idl"});
    EXPECT_EQ(0, result.exitCode);
    EXPECT_EQ(host::automationIdl(), result.output);
}

}  // namespace
}  // namespace zr::test
