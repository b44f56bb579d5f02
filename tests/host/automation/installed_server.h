// A copy of zrkeycom.dll in a folder of a test's own, loaded by its path.
#pragma once

#include <windows.h>

#include <oaidl.h>

#include <filesystem>

#include "tests/support/fixtures/library.h"

namespace zr::test {

class InstalledServer {
public:
    enum class Files { kBoth, kServerAlone };

    /// @param folder  made if needed; it gets the server and with it the library.
    explicit InstalledServer(const std::filesystem::path& folder, Files files = Files::kBoth);
    /// Also frees the library.
    ~InstalledServer();
    InstalledServer(const InstalledServer&) = delete;
    InstalledServer& operator=(const InstalledServer&) = delete;

    /// Needs an apartment.
    HRESULT createProvider(ComRef<IDispatch>& provider) const;
    /// The same; expects that it succeeds.
    ComRef<IDispatch> makeProvider() const;
    HRESULT canUnloadNow() const;
    HRESULT install(bool isInstalled, const wchar_t* options) const;
    /// Whether the library in the folder is loaded.
    bool hasLoadedLibrary() const;
    /// The full path of the server.
    const std::filesystem::path& file() const { return m_file; }

private:
    template <class Function>
    Function exportOf(const char* name) const;

    std::filesystem::path m_file;
    HMODULE m_module;
};

}  // namespace zr::test
