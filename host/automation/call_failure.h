// Why a call of a member failed, in the forms in which Automation reports it: EXCEPINFO for
// late-bound calls, the error object of the thread for early-bound ones.
#pragma once

#include <zrkey/zrkey.hpp>

#include <optional>
#include <string>

#include "host/objects/member.h"

namespace zr::automation {

/// An argument that cannot be used, or a wrong number of them.
struct WrongArgument {
    HRESULT result;                ///< DISP_E_TYPEMISMATCH, ...
    std::optional<UINT> position;  ///< in rgvarg, from its beginning
    std::string text;              ///< "argument 2 is not a text"; empty: nothing is known
};

struct CallFailure {
    /// What Invoke returns. DISP_E_EXCEPTION: the result and the description are in EXCEPINFO.
    HRESULT invokeResult;
    HRESULT result;           ///< what an early-bound call returns
    std::string description;  ///< in UTF-8
    std::optional<UINT> position = std::nullopt;
};

/// The failure that the exception being handled stands for. Call it in a catch block.
/// @param member  "VerifyPIN".
/// @throws std::bad_alloc
CallFailure currentFailure(const char* member);

/// "ZRKey.Token"
std::string sourceOf(host::ObjectClass objectClass);

/// @param info      of Invoke; may be null. Written for DISP_E_EXCEPTION alone.
/// @param position  of Invoke; may be null.
/// @return what Invoke returns.
HRESULT report(const CallFailure& failure, host::ObjectClass objectClass, EXCEPINFO* info,
               UINT* position);

/// Leaves an error object for the thread.
/// @param iid  of the interface that was called.
/// @return what the call returns.
HRESULT reportEarly(const CallFailure& failure, host::ObjectClass objectClass, REFIID iid);

}  // namespace zr::automation
