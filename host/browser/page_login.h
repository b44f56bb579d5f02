// Logs in with the PIN that the user enters in a prompt.
#pragma once

#include "host/browser/call_time.h"
#include "host/browser/page_objects.h"
#include "host/browser/site_prompts.h"
#include "host/objects/arguments.h"

namespace zr::host {

/// The members of a token that only pages have.
const Member& loginMember();
const Member& logoutMember();

/// Asks for the PIN and tries it once. Throws a PageError, a CallError or a Failure.
void logInByPrompt(PageToken& token, const Arguments& arguments, SitePrompts& prompts,
                   const TimedCalls& timed, const Activation& activation);

/// Throws a CallError.
void logOut(PageToken& token, const Arguments& arguments);

}  // namespace zr::host
