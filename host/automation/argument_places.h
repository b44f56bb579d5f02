// Which argument of a call belongs to which parameter of a member.
#pragma once

#include <zrkey/zrkey.hpp>

#include <string_view>
#include <vector>

#include "host/objects/member.h"

namespace zr::automation {

/// The number of a parameter for named arguments: first those that are used, in their order, as in the
/// type library; then the others.
/// @param name  case-insensitive.
/// @return DISPID_UNKNOWN when no parameter has the name.
DISPID idOfParameter(const host::Member& member, std::string_view name);

/// Whether two names are the same for Automation.
bool isSameName(std::string_view first, std::string_view second);

/// The values of a call, for callMember: one for each parameter that is used, Kind::kNothing for those
/// that are left out. The arguments are converted; hold no lock.
/// @param arguments  in reverse order, as Automation passes them.
/// @param values     empty; after an exception those that were read before.
/// @throws WrongArgument, std::bad_alloc; CallError for a wrong number.
void readArguments(const host::Member& member, const DISPPARAMS& arguments,
                   std::vector<host::Value>& values);

}  // namespace zr::automation
