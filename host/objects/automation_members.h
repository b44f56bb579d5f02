// How Automation clients of zrkeycom.dll know the members: by names that are not case-sensitive, and by
// numbers.
#pragma once

#include <zrkey/zrkey.hpp>

#include <string>
#include <vector>

#include "host/objects/member.h"

namespace zr::host {

/// The number of Item in a collection, which a client reaches without a name.
inline constexpr LONG kDefaultMember = 0;
/// The number of the property X of a member GetX is that of GetX and this.
inline constexpr LONG kFirstProperty = 1000;

/// A name in an interface. Numbers are part of compiled clients and never change: 1 for the first
/// member of the table, and so on.
struct AutomationMember {
    const Member* member;
    LONG number;
    std::string name;
    bool isProperty;  ///< in the type library
    bool isReadable;  ///< it only reads: late-bound clients may get it as a property
};

/// All names of a class: its members, and after each GetX without parameters the property X.
const std::vector<AutomationMember>& automationMembers(ObjectClass objectClass);

}  // namespace zr::host
