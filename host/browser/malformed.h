// What ends the process: a frame or a message that breaks the protocol.
#pragma once

#include <string>

namespace zr::host {

struct Malformed {
    std::string problem;  ///< "the message is not valid JSON"
};

}  // namespace zr::host
