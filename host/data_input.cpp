// Bytes that a command takes in and hands to the library.
#include "data_input.h"

#include "byte_io.h"
#include "failure.h"

namespace zr::host {

void readData(const std::string& path, Variant& data) {
    const std::string place = path == kStandardStream ? "standard input" : inQuotes(path);
    const std::optional<std::string> bytes = readBytes(path);
    if (!bytes) {
        throw failed(kExitFailure, "read " + place, "the system refused it",
                     "look whether it is there and readable");
    }
    if (!makeByteArray(*bytes, *data.receive())) {
        throw failed(kExitFailure, "take in " + place, "it is longer than 2 GiB",
                     "split it: the library takes it in one piece");
    }
}

}  // namespace zr::host
