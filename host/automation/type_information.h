// The type library in the resources of this DLL.
#pragma once

#include <windows.h>

#include <oaidl.h>

namespace zr::automation {

/// The description of an interface or a class.
/// @param info  null after a failure.
/// @retval E_OUTOFMEMORY
/// @return otherwise what the system returned.
HRESULT getTypeInformation(REFGUID id, ITypeInfo** info) noexcept;

}  // namespace zr::automation
