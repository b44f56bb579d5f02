// Bytes on their way to the library and back.
#include "host/commands/byte_arrays.h"

#include <limits>
#include <new>
#include <optional>
#include <system_error>
#include <utility>

#include "host/output/failure.h"
#include "host/output/printable.h"
#include "host/system/byte_io.h"

namespace zr::host {

zrkey::ByteArray readInput(const std::string& path) {
    const std::string place = path == kStandardStream ? "standard input" : inQuotes(path);
    std::error_code error;
    const ErasedBytes bytes = readBytes(path, error);
    if (error) {
        throw systemFailure(kExitFailure, "read " + place, error,
                            "check the path and its permissions");
    }
    if (bytes.size() > static_cast<std::size_t>(std::numeric_limits<LONG>::max())) {
        throw commandFailure(kExitFailure, "use " + place, "it is larger than 2 GiB",
                             "split it: the library takes the data of a call in one array");
    }
    return zrkey::ByteArray(viewOf(bytes));
}

std::string takeBytes(const zrkey::ByteArray& result) {
    std::optional<std::string> bytes = result.bytes();
    if (!bytes) {
        throw std::bad_alloc();
    }
    return std::move(*bytes);
}

}  // namespace zr::host
