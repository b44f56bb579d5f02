// One Load of the library, wherever the module and its configuration are: the path and the folder that
// it needs.
#pragma once

#include <zrkey/zrkey.hpp>

#include <filesystem>
#include <optional>
#include <string>

#include "host/output/failure.h"
#include "host/token/configuration.h"
#include "host/token/load_cause.h"

namespace zr::host {

/// The file of a module: absolute, the links in its folder resolved.
std::filesystem::path moduleFile(const std::string& path);

/// The path by which the library loads a module. It is relative to the current directory, which the
/// library puts in front of every path before it resolves "..".
/// @param module  absolute.
/// @param folder  the current directory at the time of the call.
std::filesystem::path loadablePath(const std::filesystem::path& module,
                                   const std::filesystem::path& folder);

class PreparedLoad {
public:
    /// To be called in the folder that is the current one during Load, unless the configuration is
    /// in another place. Throws a Failure when the configuration cannot be read.
    /// @param name    of the module, for messages.
    /// @param module  absolute.
    PreparedLoad(const std::string& name, std::filesystem::path module,
                 ConfigurationPlace configuration);

    /// "load the module "x.dll"", for messages.
    const std::string& asked() const { return m_asked; }
    /// States the file to load: the module, or one that calls it. Throws a Failure when the library
    /// would load another file, or read config.xml from another folder.
    void setFile(const std::filesystem::path& file);
    /// The path for Load, in configurationFolder.
    zrkey::Text path() const;
    /// To be made the current one during Load and explain; empty: the current folder stays.
    const std::string& configurationFolder() const { return m_changedFolder; }
    /// Why Load failed. The module may start once more.
    Failure explain(ITokenProvider& provider, HRESULT result) const;

private:
    std::string m_asked;
    std::filesystem::path m_module;
    ConfigurationPlace m_configuration;
    std::optional<TemporaryConfiguration> m_copy;
    std::string m_changedFolder;
    LoadFolder m_folder;
    std::filesystem::path m_loadable;
};

}  // namespace zr::host
