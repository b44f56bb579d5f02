// Where this DLL is.
#include "host/automation/own_file.h"

#include <windows.h>

namespace zr::automation {
namespace {

constexpr DWORD kLongestPath = 32768;

}  // namespace

std::wstring ownFile() {
    HMODULE module = nullptr;
    constexpr DWORD kByAddress =
        GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT;
    // This address is in a module, so it succeeds.
    GetModuleHandleExW(kByAddress, reinterpret_cast<LPCWSTR>(&ownFile), &module);
    std::wstring file(kLongestPath, L'\0');
    file.resize(GetModuleFileNameW(module, file.data(), kLongestPath));
    return file;
}

std::wstring ownFolder() {
    const std::wstring file = ownFile();
    return file.substr(0, file.find_last_of(L'\\') + 1);
}

}  // namespace zr::automation
