// A copy of zrkeycom.dll in a folder of a test's own.
#include "tests/host/automation/installed_server.h"

#include <stdexcept>

#include "host/automation/interfaces.h"
#include "tests/support/hresult.h"

namespace fs = std::filesystem;

namespace zr::test {
namespace {

constexpr const char* kLibrary = "zrkey.dll";

}  // namespace

template <class Function>
Function InstalledServer::exportOf(const char* name) const {
    return reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(m_module, name)));
}

InstalledServer::InstalledServer(const fs::path& folder, Files files)
    : m_file(fs::absolute(folder) / "zrkeycom.dll") {
    fs::create_directories(folder);
    fs::copy_file(ZRKEY_AUTOMATION_SERVER, m_file);
    if (files == Files::kBoth) {
        fs::copy_file(fs::path(ZRKEY_AUTOMATION_SERVER).replace_filename(kLibrary),
                      m_file.parent_path() / kLibrary);
    }
    m_module = LoadLibraryW(m_file.c_str());
    if (!m_module) {
        throw std::runtime_error("cannot load " + m_file.string());
    }
}

InstalledServer::~InstalledServer() {
    canUnloadNow();
    FreeLibrary(m_module);
}

HRESULT InstalledServer::createProvider(ComRef<IDispatch>& provider) const {
    using GetClassObject = HRESULT(STDAPICALLTYPE*)(REFCLSID, REFIID, void**);
    ComRef<IClassFactory> factory;
    const HRESULT result = exportOf<GetClassObject>("DllGetClassObject")(
        CLSID_TokenProvider, IID_IClassFactory, factory.receive());
    return FAILED(result) ? result
                          : factory->CreateInstance(nullptr, IID_IDispatch, provider.receive());
}

ComRef<IDispatch> InstalledServer::makeProvider() const {
    ComRef<IDispatch> provider;
    EXPECT_HR(S_OK, createProvider(provider));
    return provider;
}

HRESULT InstalledServer::canUnloadNow() const {
    return exportOf<HRESULT(STDAPICALLTYPE*)()>("DllCanUnloadNow")();
}

HRESULT InstalledServer::install(bool isInstalled, const wchar_t* options) const {
    using Install = HRESULT(STDAPICALLTYPE*)(BOOL, const wchar_t*);
    return exportOf<Install>("DllInstall")(isInstalled, options);
}

bool InstalledServer::hasLoadedLibrary() const {
    return GetModuleHandleW((m_file.parent_path() / kLibrary).c_str()) != nullptr;
}

}  // namespace zr::test
