// The entries of this server in the registry.
#include "host/automation/registration.h"

#include <cwchar>
#include <filesystem>
#include <new>
#include <string>
#include <vector>

#include "host/automation/library_loader.h"
#include "host/automation/own_file.h"
#include "host/automation/registry_entries.h"

namespace zr::automation {
namespace {

/// HKEY_CLASSES_ROOT is a view of both of these.
constexpr const wchar_t* kClasses = L"Software\\Classes";

/// An open key. Numbers are results of the system.
class Key {
public:
    Key() = default;
    ~Key() {
        if (m_key) {
            RegCloseKey(m_key);
        }
    }
    Key(const Key&) = delete;
    Key& operator=(const Key&) = delete;

    LSTATUS open(HKEY parent, const std::wstring& path, REGSAM access) {
        return RegOpenKeyExW(parent, path.c_str(), 0, access, &m_key);
    }
    /// Makes it if needed.
    LSTATUS create(HKEY parent, const std::wstring& path) {
        return RegCreateKeyExW(parent, path.c_str(), 0, nullptr, REG_OPTION_NON_VOLATILE, KEY_WRITE,
                               nullptr, &m_key, nullptr);
    }
    LSTATUS write(const std::wstring& name, const std::wstring& value) const {
        const auto size = static_cast<DWORD>((value.size() + 1) * sizeof(wchar_t));
        return RegSetValueExW(m_key, name.c_str(), 0, REG_SZ,
                              reinterpret_cast<const BYTE*>(value.c_str()), size);
    }
    /// Reads the default value, a text.
    LSTATUS read(std::wstring& value) const {
        DWORD size = 0;
        LSTATUS result =
            RegGetValueW(m_key, nullptr, nullptr, RRF_RT_REG_SZ, nullptr, nullptr, &size);
        if (result == ERROR_SUCCESS) {
            value.resize(size / sizeof(wchar_t));
            result =
                RegGetValueW(m_key, nullptr, nullptr, RRF_RT_REG_SZ, nullptr, value.data(), &size);
        }
        value.resize(wcsnlen(value.c_str(), value.size()));
        return result;
    }
    LSTATUS removeValue(const std::wstring& name) const {
        return RegDeleteValueW(m_key, name.c_str());
    }
    bool isEmpty() const {
        DWORD keys = 0;
        DWORD values = 0;
        return RegQueryInfoKeyW(m_key, nullptr, nullptr, nullptr, &keys, nullptr, nullptr, &values,
                                nullptr, nullptr, nullptr, nullptr) == ERROR_SUCCESS &&
               keys == 0 && values == 0;
    }
    HKEY get() const { return m_key; }

private:
    HKEY m_key = nullptr;
};

HKEY rootOf(Scope scope) {
    return scope == Scope::kMachine ? HKEY_LOCAL_MACHINE : HKEY_CURRENT_USER;
}

LSTATUS writeEntry(HKEY classes, const RegistryEntry& entry) {
    Key key;
    const LSTATUS result = key.create(classes, entry.key);
    return result == ERROR_SUCCESS ? key.write(entry.name, entry.value) : result;
}

/// @return true when the key is not there.
bool isMissing(LSTATUS result) {
    return result == ERROR_FILE_NOT_FOUND || result == ERROR_PATH_NOT_FOUND;
}

LSTATUS removeEntry(HKEY classes, const RegistryEntry& entry) {
    Key key;
    LSTATUS result = key.open(classes, entry.key, KEY_WRITE);
    if (result == ERROR_SUCCESS) {
        result = key.removeValue(entry.name);
    }
    return isMissing(result) ? ERROR_SUCCESS : result;
}

/// Removes a key and those around it, as long as they are empty, down to one of this server's own.
void removeEmptyKeys(HKEY classes, std::wstring path) {
    while (!isSharedKey(path)) {
        {
            Key key;
            if (key.open(classes, path, KEY_READ) != ERROR_SUCCESS || !key.isEmpty()) {
                return;
            }
        }
        if (RegDeleteKeyW(classes, path.c_str()) != ERROR_SUCCESS) {
            return;
        }
        const std::size_t end = path.find_last_of(L'\\');
        if (end == std::wstring::npos) {
            return;
        }
        path.resize(end);
    }
}

LSTATUS removeEntries(HKEY classes, const std::vector<RegistryEntry>& entries) {
    LSTATUS first = ERROR_SUCCESS;
    for (const RegistryEntry& entry : entries) {
        const LSTATUS result = removeEntry(classes, entry);
        first = first == ERROR_SUCCESS ? result : first;
    }
    for (auto entry = entries.rbegin(); entry != entries.rend(); ++entry) {
        removeEmptyKeys(classes, entry->key);
    }
    return first;
}

LSTATUS writeEntries(HKEY classes, const std::vector<RegistryEntry>& entries) {
    for (const RegistryEntry& entry : entries) {
        if (const LSTATUS result = writeEntry(classes, entry); result != ERROR_SUCCESS) {
            removeEntries(classes, entries);
            return result;
        }
    }
    return ERROR_SUCCESS;
}

bool isLibraryHere() {
    const DWORD attributes = GetFileAttributesW((ownFolder() + kLibraryName).c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && !(attributes & FILE_ATTRIBUTE_DIRECTORY);
}

/// Whether the entries are those of another copy of this DLL.
bool isOfAnotherCopy(HKEY classes) {
    Key key;
    std::wstring file;
    if (key.open(classes, serverFileKey(), KEY_READ) != ERROR_SUCCESS ||
        key.read(file) != ERROR_SUCCESS) {
        return false;
    }
    // Two paths may name one file; for a deleted file only the paths can be compared.
    std::error_code error;
    return CompareStringOrdinal(file.c_str(), -1, ownFile().c_str(), -1, TRUE) != CSTR_EQUAL &&
           !std::filesystem::equivalent(file, ownFile(), error);
}

}  // namespace

HRESULT registerServer(Scope scope) noexcept {
    try {
        if (!isLibraryHere()) {
            return HRESULT_FROM_WIN32(ERROR_MOD_NOT_FOUND);
        }
        const std::vector<RegistryEntry> entries = registryEntries(ownFile());
        Key classes;
        LSTATUS result = classes.create(rootOf(scope), kClasses);
        if (result == ERROR_SUCCESS) {
            result = writeEntries(classes.get(), entries);
        }
        return HRESULT_FROM_WIN32(result);
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    }
}

HRESULT unregisterServer(Scope scope) noexcept {
    try {
        const std::vector<RegistryEntry> entries = registryEntries(ownFile());
        Key classes;
        LSTATUS result = classes.open(rootOf(scope), kClasses, KEY_READ);
        if (result == ERROR_SUCCESS && !isOfAnotherCopy(classes.get())) {
            result = removeEntries(classes.get(), entries);
        }
        return HRESULT_FROM_WIN32(isMissing(result) ? ERROR_SUCCESS : result);
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    }
}

}  // namespace zr::automation
