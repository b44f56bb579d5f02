// Shared libraries on Windows.
#include "host/system/shared_library.h"

#include <windows.h>

#include "host/system/utf8_path.h"

namespace zr::host {
namespace {

/// The system's text for an error, without the line end and the full stop.
std::string errorText(DWORD error) {
    wchar_t text[512];
    DWORD length =
        FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr, error,
                       0, text, static_cast<DWORD>(sizeof text / sizeof *text), nullptr);
    while (length > 0 && (text[length - 1] <= L' ' || text[length - 1] == L'.')) {
        --length;
    }
    std::string bytes(3 * std::size_t{length}, '\0');
    const int size = WideCharToMultiByte(CP_UTF8, 0, text, static_cast<int>(length), bytes.data(),
                                         static_cast<int>(bytes.size()), nullptr, nullptr);
    bytes.resize(static_cast<std::size_t>(size));
    return bytes.empty() ? "error " + std::to_string(error) : bytes;
}

}  // namespace

std::string_view ownPlatform() {
    return "Windows x86-64";
}

SharedLibrary::SharedLibrary(const std::string& path)
    : m_handle(LoadLibraryW(toPath(path).c_str())) {
    if (!m_handle) {
        m_problem = errorText(GetLastError());
    }
}

SharedLibrary::~SharedLibrary() {
    if (m_handle) {
        FreeLibrary(static_cast<HMODULE>(m_handle));
    }
}

void* SharedLibrary::find(const char* function) const {
    return m_handle
               ? reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(m_handle), function))
               : nullptr;
}

}  // namespace zr::host
