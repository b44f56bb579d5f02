// The types of the page library are those of the table.
#include "host/objects/page_types.h"

#include <gtest/gtest.h>

#include "host/objects/member.h"
#include "tests/host/child_command.h"

namespace zr::test {
namespace {

using host::Member;
using host::ObjectClass;

constexpr ObjectClass kPageClasses[] = {ObjectClass::kProvider, ObjectClass::kToken,
                                        ObjectClass::kContainer, ObjectClass::kCertificate};

/// The text of one class.
std::string classIn(const std::string& types, ObjectClass objectClass) {
    const std::size_t begin =
        types.find(std::string("export class ").append(host::nameOf(objectClass)).append(" {"));
    return begin == std::string::npos ? ""
                                      : types.substr(begin, types.find("\n}\n", begin) - begin);
}

TEST(PageTypesTest, CommittedTypesAreThoseOfTheTable) {
    EXPECT_EQ(readFile(ZRKEY_PAGE_TYPES), host::pageTypes());
}

TEST(PageTypesTest, ClassesHaveTheMembersForPagesAndNoOthers) {
    const std::string types = host::pageTypes();
    for (const ObjectClass objectClass : kPageClasses) {
        const std::string text = classIn(types, objectClass);
        for (const Member& member : host::membersOf(objectClass)) {
            const std::string call = std::string("\n    ").append(member.name).append("(");
            EXPECT_EQ(member.isForPages, text.find(call) != std::string::npos)
                << host::nameOf(objectClass) << "." << member.name;
        }
    }
}

TEST(PageTypesTest, PagesReachNoFiles) {
    for (const Member& member : host::membersOf(ObjectClass::kFile)) {
        EXPECT_FALSE(member.isForPages) << member.name;
    }
    EXPECT_EQ(std::string::npos, host::pageTypes().find("File"));
}

// The type of a list says what it contains, which the table does not.
TEST(PageTypesTest, ListsAreOfTokensOrCertificates) {
    for (const ObjectClass objectClass : kPageClasses) {
        for (const Member& member : host::membersOf(objectClass)) {
            if (member.isForPages && member.resultClass == ObjectClass::kCollection) {
                const std::string name = member.name;
                EXPECT_TRUE(name == "tokens" || name == "certificates") << name;
            }
        }
    }
}

TEST(PageTypesTest, OnlyAlgorithmsMayBeLeftOut) {
    for (const ObjectClass objectClass : kPageClasses) {
        for (const Member& member : host::membersOf(objectClass)) {
            for (const host::Parameter& parameter : member.parameters) {
                if (member.isForPages && parameter.isOptional) {
                    EXPECT_STREQ("algorithm", parameter.name) << member.name;
                }
            }
        }
    }
}

class PageTypesCommandTest : public ChildCommandTest {};

TEST_F(PageTypesCommandTest, GenerateWritesTheTypes) {
    const CommandResult result = zrkey({"--generate", "page-types"});
    EXPECT_EQ(0, result.exitCode);
    EXPECT_EQ(host::pageTypes(), result.output);
}

}  // namespace
}  // namespace zr::test
