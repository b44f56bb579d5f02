// Where this DLL is.
#pragma once

#include <string>

namespace zr::automation {

/// The full path of this DLL.
/// @throws std::bad_alloc
std::wstring ownFile();

/// The folder that this DLL is in, with a separator at its end.
/// @throws std::bad_alloc
std::wstring ownFolder();

}  // namespace zr::automation
