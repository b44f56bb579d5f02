// The file that DeleteFile opens and leaks. Fuzzers release it, because they delete files millions
// of times and search for other leaks.
#pragma once

#include <zrkey/zrkey.h>

namespace zr::fuzz {

/// Deletes a file and releases the leaked file object.
HRESULT deleteFile(IKeyObject* token, BSTR name);

}  // namespace zr::fuzz
