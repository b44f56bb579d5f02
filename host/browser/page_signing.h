// Signatures for a page, each of which the user confirms.
#pragma once

#include <functional>
#include <string_view>
#include <vector>

#include "host/browser/call_time.h"
#include "host/browser/page_objects.h"
#include "host/browser/site_prompts.h"

namespace zr::host {

/// Whether a member of a token makes a signature: "SignData" and "sign".
bool isSigning(std::string_view member);

/// Shows what is to be signed, and signs it when the user confirms. Throws a PageError, a CallError or
/// a Failure.
/// @param values    the arguments of the member.
/// @param objects   of the connection.
/// @param noteConfirmed  called between the answer of the user and the signature.
Value signByPrompt(PageToken& token, const Member& member, const std::vector<Value>& values,
                   const PageObjects& objects, SitePrompts& prompts, const TimedCalls& timed,
                   const Activation& activation, const std::function<void()>& noteConfirmed);

}  // namespace zr::host
