// The library zrkey.dll, as this DLL loads it: from its own folder and never by a search, so that a file
// of that name in the folder of the client, or in its current directory, is not loaded.
#pragma once

#include <zrkey/zrkey.hpp>

namespace zr::automation {

/// The file of the library, in the folder of this DLL.
inline constexpr const wchar_t* kLibraryName = L"zrkey.dll";

/// Makes a provider of the library, which is loaded if needed. To be called under libraryLock.
/// @param provider  receives it; null after a failure.
/// @retval E_OUTOFMEMORY
/// @return otherwise what the library returned, or the system's error that it cannot be loaded.
HRESULT createLibraryProvider(zrkey::ComRef<ITokenProvider>& provider) noexcept;

/// Frees the library. To be called under libraryLock, when no object lives.
void freeLibrary() noexcept;

}  // namespace zr::automation
