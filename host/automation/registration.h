// The entries of this server in the registry, for the whole machine or for one user.
#pragma once

#include <windows.h>

namespace zr::automation {

enum class Scope {
    kMachine,  ///< HKEY_LOCAL_MACHINE, which needs the rights of an administrator
    kUser      ///< HKEY_CURRENT_USER
};

/// Writes the entries, with the path of this DLL. A failure leaves none.
/// @retval HRESULT_FROM_WIN32(ERROR_MOD_NOT_FOUND)  the library is not beside this DLL.
/// @retval E_OUTOFMEMORY
/// @return otherwise S_OK or the system's error.
HRESULT registerServer(Scope scope) noexcept;

/// Removes the entries, and keys of its own that are empty then. Entries that are not there are no
/// failure; those of another copy of this DLL stay.
/// @retval E_OUTOFMEMORY
/// @return otherwise S_OK or the system's error.
HRESULT unregisterServer(Scope scope) noexcept;

}  // namespace zr::automation
