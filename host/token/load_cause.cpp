// Why the library could not load a module.
#include "host/token/load_cause.h"

#include <utf8cpp/utf8.h>

#include <array>
#include <optional>
#include <string>
#include <system_error>

#include "host/system/shared_library.h"
#include "host/system/system.h"
#include "host/system/utf8_path.h"
#include "host/token/cryptoki.h"
#include "host/token/cryptoki_names.h"
#include "host/token/pkcs11_header.h"
#include "host/token/platform_of.h"

namespace fs = std::filesystem;

namespace zr::host {
namespace {

/// The library's limit for the current directory and the module path together.
constexpr std::size_t kLongestPath = 259;

/// The first bytes of a file.
std::string readHeader(const std::string& path, std::error_code& error) {
    const int descriptor = openForReading(path, error);
    if (error) {
        return {};
    }
    std::array<char, kHeaderSize> bytes;
    std::size_t size = 0;
    while (size < bytes.size()) {
        const std::size_t count =
            readSome(descriptor, bytes.data() + size, bytes.size() - size, error);
        if (count == 0) {
            break;
        }
        size += count;
    }
    closeDescriptor(descriptor);
    return {bytes.data(), size};
}

/// Whether the library cannot use the paths.
std::optional<Cause> checkPaths(const FailedLoad& load) {
    const std::string loadable = toUtf8(load.loadable);
    if (!utf8::is_valid(loadable)) {
        return Cause{"its path is not valid UTF-8", "rename it, or load it through a link"};
    }
    if (toUtf8(load.folder.path).size() + 1 + loadable.size() > kLongestPath) {
        return Cause{load.folder.what + " and the module path together are longer than 259 bytes",
                     "choose a shorter " + load.folder.alternative};
    }
    return std::nullopt;
}

/// Whether the module does not start. Asks only a module that the library has not initialised.
std::optional<Cause> checkStart(const FailedLoad& load, const Cryptoki& calls) {
    INT count = 0;
    if (SUCCEEDED(load.provider.GetKeyCount(&count))) {
        return std::nullopt;
    }
    const CK_RV result = calls.initialise();
    if (result == CKR_CRYPTOKI_ALREADY_INITIALIZED) {
        return std::nullopt;
    }
    if (result == CKR_OK) {
        calls.finalise();
        return Cause{"the module started only at the second try", "try again"};
    }
    return Cause{"its C_Initialize returned " + resultText(result),
                 "check the module's own settings, and whether its service runs"};
}

}  // namespace

std::optional<Cause> findFileCause(const fs::path& module) {
    std::error_code error;
    const fs::file_status status = fs::status(module, error);
    if (fs::is_directory(status)) {
        return Cause{"it is a folder", "name the file of the module with --module"};
    }
    if (!fs::exists(status)) {
        if (!error) {
            error = std::make_error_code(std::errc::no_such_file_or_directory);
        }
        return Cause{error.message(), "check --module"};
    }
    if (!fs::is_regular_file(status)) {
        return std::nullopt;
    }
    // Only to see whether the file can be read: its platform matters when the system refuses it.
    readHeader(toUtf8(module), error);
    if (error) {
        return Cause{error.message(), "check the permissions of the file"};
    }
    return std::nullopt;
}

std::string platformOfFile(const fs::path& module) {
    std::error_code ignored;
    return platformOf(readHeader(toUtf8(module), ignored));
}

Cause whyNotLoaded(const fs::path& module, const Cryptoki& calls) {
    const std::string platform = platformOfFile(module);
    if (!platform.empty() && platform != ownPlatform()) {
        const std::string own(ownPlatform());
        return {"it is built for " + platform + ", and this program for " + own,
                "name the module for " + own + " with --module"};
    }
    return {calls.library().problem(),
            "check that the module is whole and that the libraries it needs are installed"};
}

Cause findLoadCause(const FailedLoad& load) {
    if (const std::optional<Cause> cause = findFileCause(load.module)) {
        return *cause;
    }
    const Cryptoki calls(toUtf8(load.module));
    if (!calls.library().isLoaded()) {
        return whyNotLoaded(load.module, calls);
    }
    if (const std::optional<Cause> cause = checkPaths(load)) {
        return *cause;
    }
    if (!calls.problem().empty()) {
        return {calls.problem(), "name a PKCS #11 module with --module"};
    }
    if (load.result == E_OUTOFMEMORY) {
        return {"out of memory", "free some memory"};
    }
    if (const std::optional<Cause> cause = checkStart(load, calls)) {
        return *cause;
    }
    return {"the module was loaded, but " + load.configuration.description() + " is not valid",
            "it needs a <driver> element, and lists shorter than 500 bytes"};
}

}  // namespace zr::host
