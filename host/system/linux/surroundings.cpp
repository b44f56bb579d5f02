// What a module and the library need of the system, on Linux.
#include "host/system/surroundings.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>

#include <link.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include "host/system/system.h"

namespace fs = std::filesystem;

namespace zr::host {
namespace {

struct LibrarySearch {
    const char* name;
    std::string file;
};

int noteFile(dl_phdr_info* info, std::size_t, void* data) {
    LibrarySearch& search = *static_cast<LibrarySearch*>(data);
    if (info->dlpi_name && std::strstr(info->dlpi_name, search.name)) {
        search.file = info->dlpi_name;
    }
    return 0;
}

/// @param name  begins with "/".
std::string fileOf(const char* name) {
    LibrarySearch search = {name, {}};
    dl_iterate_phdr(noteFile, &search);
    std::error_code error;
    const fs::path file = fs::canonical(search.file, error);
    return error ? search.file : file.string();
}

/// OpenSC loads the library of the service only when it starts.
int noteReaderLibrary(dl_phdr_info* info, std::size_t, void* found) {
    for (const char* name : {"libpcsclite.so", "libopensc.so"}) {
        if (info->dlpi_name && std::strstr(info->dlpi_name, name)) {
            *static_cast<bool*>(found) = true;
        }
    }
    return 0;
}

std::error_code lastError() {
    return {errno, std::generic_category()};
}

std::error_code tryToConnect(const std::string& path) {
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof address.sun_path) {
        return std::make_error_code(std::errc::filename_too_long);
    }
    std::copy(path.begin(), path.end(), address.sun_path);
    const int descriptor = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (descriptor < 0) {
        return lastError();
    }
    const std::error_code error =
        connect(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0
            ? std::error_code()
            : lastError();
    close(descriptor);
    return error;
}

std::string firstLine(const fs::path& file) {
    std::ifstream stream(file);
    std::string line;
    std::getline(stream, line);
    return line;
}

/// The devices on USB with an interface of the class of smart card readers.
std::vector<std::string> usbReaders() {
    constexpr const char* kSmartCard = "0b";
    std::vector<std::string> names;
    std::error_code error;
    for (fs::directory_iterator entry("/sys/bus/usb/devices", error), end; !error && entry != end;
         entry.increment(error)) {
        if (firstLine(entry->path() / "bInterfaceClass") == kSmartCard) {
            // The interface is a folder in that of its device.
            const fs::path device = fs::canonical(entry->path(), error).parent_path();
            const std::string name = firstLine(device / "product");
            names.push_back(name.empty() ? device.filename().string() : name);
        }
    }
    return names;
}

}  // namespace

UsedLibrary zrkeyLibrary() {
    return {fileOf("/libzrkey.so"), {}};
}

UsedLibrary automationLibrary() {
    return {fileOf("/libzrautomation.so"), {}};
}

ReaderService readerService() {
    ReaderService service;
    dl_iterate_phdr(noteReaderLibrary, &service.isNeeded);
    if (service.isNeeded) {
        // The variable is that of the service's own library.
        service.socket =
            environmentVariable("PCSCLITE_CSOCK_NAME").value_or("/run/pcscd/pcscd.comm");
        service.problem = tryToConnect(service.socket);
        service.devices = usbReaders();
    }
    return service;
}

}  // namespace zr::host
