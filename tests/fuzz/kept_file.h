// The file that DeleteFile opens and keeps for the life of the process: a fuzzer releases it, for
// it deletes files a million times and has other leaks to find.
#pragma once

#include <zrkey/zrkey.h>

namespace zr::fuzz {

/// Deletes a file and releases what that kept.
HRESULT deleteFile(IKeyObject* token, BSTR name);

}  // namespace zr::fuzz
