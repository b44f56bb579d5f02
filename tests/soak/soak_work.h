// One full session with a token.
#pragma once

#include <zrkey/zrkey.hpp>

#include <string>

#include "pkcs11/cryptoki_types.h"

namespace zr::test {

/// Works with the token "ZRKey Test" of a module. Every step must succeed: a failure throws
/// an exception that names the step.
class SoakWork {
public:
    explicit SoakWork(const std::string& module);
    SoakWork(const SoakWork&) = delete;
    SoakWork& operator=(const SoakWork&) = delete;
    ~SoakWork();

    /// From Load to Unload; the file is deleted without the library.
    /// @return the sessions that are open when all objects are released.
    CK_ULONG round();
    /// Opens a token, creates a file and deletes it by DeleteFile, in a provider that stays loaded
    /// until finishDeleting.
    /// @return the sessions that are open when all objects are released.
    CK_ULONG deleteByLibrary();
    void finishDeleting();

private:
    zrkey::ComRef<ITokenProvider> load();
    void unload(zrkey::ComRef<ITokenProvider> provider) const;
    zrkey::ComRef<IKeyObject> open(const zrkey::ComRef<ITokenProvider>& provider) const;
    CK_SLOT_ID slot() const;
    CK_ULONG sessions() const;
    void deleteObject(const std::string& label) const;

    std::string m_module;
    std::string m_path;
    void* m_handle = nullptr;
    CK_FUNCTIONS* m_functions = nullptr;  // the module's own, for calls that bypass the library
    zrkey::ComRef<ITokenProvider> m_deleting;
};

}  // namespace zr::test
