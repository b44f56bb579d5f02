// The objects of a collection one after the other, for "For Each".
#pragma once

#include <zrkey/zrkey.hpp>

#include <vector>

#include "host/objects/object.h"

namespace zr::automation {

/// An IEnumVARIANT.
/// @throws std::bad_alloc
zrkey::ComRef<IUnknown> makeEnumerator(std::vector<host::ObjectRef> items);

}  // namespace zr::automation
