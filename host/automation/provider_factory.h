// The class factory of the one class that clients can create.
#pragma once

#include <windows.h>

#include <unknwn.h>

namespace zr::automation {

/// @param result  null after a failure.
/// @retval S_OK           result is one reference.
/// @retval E_NOINTERFACE  a class factory does not have the interface.
/// @retval E_OUTOFMEMORY
HRESULT createProviderFactory(REFIID iid, void** result) noexcept;

}  // namespace zr::automation
