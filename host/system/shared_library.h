// A shared library, loaded as the system loads it for the library; one implementation per target.
#pragma once

#include <string>
#include <string_view>

namespace zr::host {

/// The platform of this command, in the words of platformOf.
std::string_view ownPlatform();

/// A shared library, loaded until destruction. One that is in the process already is the same one.
class SharedLibrary {
public:
    /// @param path  absolute, in UTF-8.
    explicit SharedLibrary(const std::string& path);
    ~SharedLibrary();
    SharedLibrary(const SharedLibrary&) = delete;
    SharedLibrary& operator=(const SharedLibrary&) = delete;

    bool isLoaded() const { return m_handle != nullptr; }
    /// Why it is not loaded, in the system's own words.
    const std::string& problem() const { return m_problem; }
    /// @return null when it has no such function.
    void* find(const char* function) const;

private:
    void* m_handle;
    std::string m_problem;
};

}  // namespace zr::host
