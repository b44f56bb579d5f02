// One call of the recording module that goes wrong, and what each call answered. Plain types: they
// cross the module's border.
#pragma once

#include <cstddef>

#include "pkcs11/cryptoki.h"

/// A fault of one call. A lie tells a number that is not so; nothing is written for it outside the
/// caller's buffers.
struct RecordingFault {
    enum Kind {
        none,
        failure,      ///< the call does nothing and answers result
        lateFailure,  ///< the call does everything, hands it out, and answers result
        lengthLess,   ///< a length one too small; so are the others of their kind
        lengthMore,
        lengthZero,
        lengthUnavailable,  ///< CK_UNAVAILABLE_INFORMATION
        lengthLargest,      ///< the largest number below it
        lengthPastRoom,     ///< one more than the caller's buffer holds
        countZero,
        countMore,     ///< one more than there are
        countLargest,  ///< the largest number
        listCleared,   ///< the function list, handed out before, is zeroed
        unterminated,  ///< text fields and values filled to the last byte
    };
    Kind kind;
    unsigned int nth;   ///< of all calls, from 1
    CK_RV result;       ///< of a failure
    std::size_t index;  ///< of the attribute, or of the length, that is told wrongly
};

/// What a call answered. Pointers are valid until the calls are cleared.
struct RecordingAnswer {
    static constexpr std::size_t kMostValues = 4;
    struct Value {
        CK_ULONG length;             ///< as told
        const unsigned char* bytes;  ///< the caller's buffer after the call; null when it gave none
        std::size_t room;            ///< bytes of that buffer
    };
    CK_RV result;
    CK_ULONG count;   ///< of slots, of objects
    CK_ULONG handle;  ///< of the session, of the object
    CK_TOKEN_INFO tokenInfo;
    std::size_t valueCount;
    Value values[kMostValues];  ///< attributes; the signature
};
