// The trace of a PKCS #11 module, as OpenSC's spy module writes it, without PINs.
//
// The spy writes a block for each call: an empty line, "7: C_Login", lines for the arguments, and
// "Returned:  0 CKR_OK". Texts of tokens may contain line ends, so a line may pretend to be another:
// a false beginning hides more than it has to, and no text of a token is written between the PIN of
// a call and its "Returned:".
#pragma once

#include <string>
#include <string_view>

#include "host/system/erasing_allocator.h"

namespace zr::host {

class TraceFilter {
public:
    /// Adds bytes as they come, also parts of lines.
    /// @return the lines that may be shown, without control characters.
    std::string add(std::string_view bytes);
    /// @return the rest when nothing more comes.
    std::string finish();

private:
    std::string show(std::string_view line);

    ErasedBytes m_line;
    bool m_isTooLong = false;  ///< the rest of the line is dropped
    bool m_isSecret = false;   ///< within a call with a PIN
    bool m_isPinDump = false;  ///< within the bytes of an argument that is a PIN
};

}  // namespace zr::host
