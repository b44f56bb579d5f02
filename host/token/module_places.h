// The places where modules are looked for: folders, p11-kit's configuration, and the settings files
// of the command.
#pragma once

#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zr::host {

struct ModulePlaces {
    std::vector<std::filesystem::path> folders;
    /// Folders of p11-kit's files NAME.module; an earlier one has precedence.
    std::vector<std::filesystem::path> configurations;
};

/// Those of the system, or what replaced them.
ModulePlaces modulePlaces();
/// For tests.
/// @param places  nullopt: those of the system again.
void replaceModulePlaces(std::optional<ModulePlaces> places);

/// Keys and values of a file with a line "KEY SEPARATOR VALUE" for each. Blank lines and those that
/// begin with "#" are left out. Of two lines with one key the last one counts.
/// @param badLine  set to the number of the first other line, from 1; 0 when there is none.
std::map<std::string, std::string> parseKeys(std::string_view text, char separator, int& badLine);

/// A module that p11-kit is configured to use in this command.
struct KnownModule {
    std::string name;  ///< of its configuration, without ".module"
    std::filesystem::path file;
};

/// In the order of their names; each file once. Without those that only say whom to trust, which
/// have no tokens of users.
std::vector<KnownModule> knownModules(const ModulePlaces& places);

/// The file of a module by its name in p11-kit's configuration, or the name of its file in one of
/// the folders, with or without "lib" before it and its ending behind it.
std::optional<std::filesystem::path> findModule(const ModulePlaces& places,
                                                const std::string& name);

}  // namespace zr::host
