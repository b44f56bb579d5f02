// How Automation clients of zrkeycom.dll know the members.
#include "host/objects/automation_members.h"

#include <algorithm>
#include <map>
#include <string_view>

namespace zr::host {
namespace {

constexpr std::string_view kGet = "Get";
/// Members that are properties under their own names.
constexpr std::string_view kProperties[] = {"Count",        "Item", "tokens",
                                            "certificates", "pem",  "subject"};

bool isGetter(const Member& member) {
    return std::string_view(member.name).starts_with(kGet) && member.usedParameters().empty();
}

std::vector<AutomationMember> makeMembers(ObjectClass objectClass) {
    const bool isCollection = objectClass == ObjectClass::kCollection;
    std::vector<AutomationMember> members;
    LONG number = 0;
    for (const Member& member : membersOf(objectClass)) {
        ++number;
        const bool isDefault = isCollection && std::string_view(member.name) == "Item";
        const bool isProperty =
            std::ranges::find(kProperties, member.name) != std::end(kProperties);
        members.push_back({&member, isDefault ? kDefaultMember : number, member.name, isProperty,
                           isProperty || isGetter(member)});
        if (isGetter(member)) {
            members.push_back(
                {&member, kFirstProperty + number, member.name + kGet.size(), true, true});
        }
    }
    return members;
}

using AllMembers = std::map<ObjectClass, std::vector<AutomationMember>>;

AllMembers makeAllMembers() {
    AllMembers all;
    for (const ObjectClass objectClass :
         {ObjectClass::kProvider, ObjectClass::kToken, ObjectClass::kFile, ObjectClass::kContainer,
          ObjectClass::kCertificate, ObjectClass::kCollection}) {
        all.emplace(objectClass, makeMembers(objectClass));
    }
    return all;
}

}  // namespace

const std::vector<AutomationMember>& automationMembers(ObjectClass objectClass) {
    static const AllMembers all = makeAllMembers();
    return all.at(objectClass);
}

}  // namespace zr::host
