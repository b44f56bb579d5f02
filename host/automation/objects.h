// The objects of the model as Automation clients get them.
#pragma once

#include <zrkey/zrkey.hpp>

#include "host/objects/object.h"

namespace zr::automation {

/// Makes the creatable class, for the class factory.
/// @param result  null after a failure.
/// @retval S_OK           result is one reference.
/// @retval E_NOINTERFACE  the class does not have the interface.
/// @retval E_OUTOFMEMORY
/// @return otherwise what the library returned.
HRESULT createProvider(REFIID iid, void** result) noexcept;

/// The Automation object of an object of the model: the same one as long as a client has it.
/// @throws std::bad_alloc
zrkey::ComRef<IDispatch> wrap(host::ObjectRef object);

}  // namespace zr::automation
