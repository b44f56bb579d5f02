// The registry entries of this server, as data.
#include "host/automation/registry_entries.h"

#include "host/automation/interfaces.h"

namespace zr::automation {
namespace {

constexpr const wchar_t* kName = L"ZRKey token provider";
constexpr const wchar_t* kProgId = L"ZRKey.TokenProvider.1";
constexpr const wchar_t* kProgIdOfAnyVersion = L"ZRKey.TokenProvider";
constexpr const wchar_t* kVersion = L"1.0";
/// The system's marshaler for interfaces that a type library describes.
constexpr const wchar_t* kTypeLibraryMarshaler = L"{00020424-0000-0000-C000-000000000046}";

struct InterfaceRow {
    const IID& id;
    const wchar_t* name;
};

const InterfaceRow kInterfaces[] = {{IID_IZRTokenProvider, L"IZRTokenProvider"},
                                    {IID_IZRToken, L"IZRToken"},
                                    {IID_IZRFile, L"IZRFile"},
                                    {IID_IZRContainer, L"IZRContainer"},
                                    {IID_IZRCertificate, L"IZRCertificate"},
                                    {IID_IZRCollection, L"IZRCollection"}};

std::wstring textOf(const GUID& id) {
    wchar_t text[40];
    StringFromGUID2(id, text, sizeof text / sizeof *text);
    return text;
}

std::wstring classKey() {
    return L"CLSID\\" + textOf(CLSID_TokenProvider);
}

void addClass(std::vector<RegistryEntry>& entries, const std::wstring& file) {
    const std::wstring key = classKey();
    entries.push_back({key, L"", kName});
    entries.push_back({serverFileKey(), L"", file});
    // The free-threaded marshaler of each object lets other apartments call it directly.
    entries.push_back({serverFileKey(), L"ThreadingModel", L"Apartment"});
    entries.push_back({key + L"\\ProgID", L"", kProgId});
    entries.push_back({key + L"\\TypeLib", L"", textOf(LIBID_ZRKeyAutomation)});
    entries.push_back({key + L"\\Version", L"", kVersion});
    entries.push_back({key + L"\\VersionIndependentProgID", L"", kProgIdOfAnyVersion});
}

void addProgIds(std::vector<RegistryEntry>& entries) {
    for (const std::wstring name : {kProgIdOfAnyVersion, kProgId}) {
        entries.push_back({name, L"", kName});
        entries.push_back({name + L"\\CLSID", L"", textOf(CLSID_TokenProvider)});
    }
    entries.push_back({std::wstring(kProgIdOfAnyVersion) + L"\\CurVer", L"", kProgId});
}

void addTypeLibrary(std::vector<RegistryEntry>& entries, const std::wstring& file) {
    const std::wstring key = L"TypeLib\\" + textOf(LIBID_ZRKeyAutomation) + L"\\" + kVersion;
    entries.push_back({key, L"", L"ZRKey"});
    // The language-neutral one, in the resources of this DLL.
    entries.push_back({key + L"\\0\\win64", L"", file});
    entries.push_back({key + L"\\FLAGS", L"", L"0"});
}

void addInterface(std::vector<RegistryEntry>& entries, const InterfaceRow& row) {
    const std::wstring key = L"Interface\\" + textOf(row.id);
    entries.push_back({key, L"", row.name});
    entries.push_back({key + L"\\ProxyStubClsid32", L"", kTypeLibraryMarshaler});
    entries.push_back({key + L"\\TypeLib", L"", textOf(LIBID_ZRKeyAutomation)});
    entries.push_back({key + L"\\TypeLib", L"Version", kVersion});
}

}  // namespace

std::wstring serverFileKey() {
    return classKey() + L"\\InprocServer32";
}

bool isSharedKey(const std::wstring& key) {
    return key == L"CLSID" || key == L"TypeLib" || key == L"Interface";
}

std::vector<RegistryEntry> registryEntries(const std::wstring& file) {
    std::vector<RegistryEntry> entries;
    addClass(entries, file);
    addProgIds(entries);
    addTypeLibrary(entries, file);
    for (const InterfaceRow& row : kInterfaces) {
        addInterface(entries, row);
    }
    return entries;
}

}  // namespace zr::automation
