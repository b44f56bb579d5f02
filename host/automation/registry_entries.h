// The registry entries of this server, as data.
#pragma once

#include <string>
#include <vector>

namespace zr::automation {

struct RegistryEntry {
    std::wstring key;    ///< below Software\Classes
    std::wstring name;   ///< empty: the default value
    std::wstring value;  ///< of type REG_SZ
};

/// All entries. Those of a key come before those of the keys in it.
/// @param file  the full path of this DLL.
/// @throws std::bad_alloc
std::vector<RegistryEntry> registryEntries(const std::wstring& file);

/// The key whose default value is the path of this DLL.
/// @throws std::bad_alloc
std::wstring serverFileKey();

/// Whether a key contains entries of other servers too, such as "CLSID".
bool isSharedKey(const std::wstring& key);

}  // namespace zr::automation
