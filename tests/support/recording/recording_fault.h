// The fault of one call of the recording module, and the answer of each call. Plain types: they
// cross the module's border.
#pragma once

#include <cstddef>

#include "pkcs11/cryptoki_types.h"

/// A fault of one call. A false number is only reported: nothing is written outside the
/// caller's buffers.
struct RecordingFault {
    enum Kind {
        kNone,
        kFailure,      ///< the call does nothing and returns result
        kLateFailure,  ///< the call does everything and then returns result
        kLengthLess,   ///< a length one too small; so are the others of their kind
        kLengthMore,
        kLengthZero,
        kLengthUnavailable,  ///< CK_UNAVAILABLE_INFORMATION
        kLengthLargest,      ///< the largest number below it
        kLengthPastRoom,     ///< one more than the caller's buffer holds
        kCountZero,
        kCountMore,     ///< one more than there are
        kCountLargest,  ///< the largest number
        kListCleared,   ///< the function list, handed out before, is zeroed
        kUnterminated,  ///< text fields and values filled to the last byte
    };
    Kind kind;
    unsigned int nth;   ///< of all calls, from 1
    CK_RV result;       ///< of a failure
    std::size_t index;  ///< of the attribute, or of the length, that is false
};

/// The answer of a call. Pointers are valid until the calls are cleared.
struct RecordingAnswer {
    static constexpr std::size_t kMostValues = 4;
    struct Value {
        CK_ULONG length;             ///< as reported
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
