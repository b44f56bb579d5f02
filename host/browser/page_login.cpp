// Logins that the user's PIN entry in a prompt decides.
#include "host/browser/page_login.h"

#include <utf8cpp/utf8.h>

#include <string>
#include <utility>

#include "host/browser/page_error.h"
#include "host/output/failure.h"

namespace zr::host {
namespace {

/// The table of the library's members does not call these.
Value callNothing(Object&, const Arguments&) {
    return Nothing();
}

Member ownMember(const char* name, const char* help) {
    return {name, {}, Kind::kBoolean, MemberOrigin::kExtension, help, callNothing};
}

/// Throws a PageError when asking for the PIN would be pointless.
void refuseState(PinState state) {
    if (state == PinState::kTokenRemoved) {
        throw PageError(page_code::kTokenRemoved, "the token was removed");
    }
    if (state == PinState::kLocked) {
        throw PageError(page_code::kPinLocked, "the PIN is locked");
    }
}

const char* triesText(PinState state) {
    switch (state) {
        case PinState::kLastTry:
            return "One try is left. Another wrong PIN locks the token.";
        case PinState::kFewTries:
            return "A wrong PIN was entered since the last login.";
        default:
            return "";
    }
}

/// The failure of a login.
/// @param state  of the PIN, after the login.
PageError refusedLogin(PinState state) {
    switch (state) {
        case PinState::kTokenRemoved:
            return {page_code::kTokenRemoved, "the token was removed"};
        case PinState::kLocked:
            return {page_code::kPinLocked, "the PIN is wrong, and it is locked now"};
        case PinState::kNotSet:
            return {page_code::kRefused, "the PIN is not initialised"};
        case PinState::kLastTry:
            return {page_code::kWrongPin, "the PIN is wrong, and one try is left"};
        case PinState::kFewTries:
            return {page_code::kWrongPin, "the PIN is wrong, and tries are limited"};
        default:
            // The library's result is the same for every cause.
            return {page_code::kWrongPin, "the PIN is wrong, or the token could not check it"};
    }
}

Confirmation lastTry(const PageToken& token, const SitePrompts& prompts) {
    Confirmation question;
    question.origin = prompts.origin().text();
    question.title = "Use the last try for the PIN?";
    question.lines = {{"Token", token.row.label},
                      {"Serial number", token.row.serial},
                      {"Tries", "One is left. Another wrong PIN locks the token."}};
    question.yes = "Use it";
    return question;
}

Pin askPin(const PageToken& token, PinState state, const PinLengths& lengths,
           SitePrompts& prompts) {
    if (state == PinState::kLastTry) {
        prompts.confirm(lastTry(token, prompts));
    }
    PinQuestion question;
    question.origin = prompts.origin().text();
    question.label = token.row.label;
    question.serial = token.row.serial;
    question.purpose = "log in to the token";
    question.tries = triesText(state);
    question.lengths = lengths;
    return prompts.askPin(question);
}

}  // namespace

const Member& loginMember() {
    static const Member member = ownMember("login", "Asks the user for the PIN and logs in.");
    return member;
}

const Member& logoutMember() {
    static const Member member = ownMember("logout", "Logs out.");
    return member;
}

void logInByPrompt(PageToken& token, const Arguments& arguments, SitePrompts& prompts,
                   const TimedCalls& timed, const Activation& activation) {
    Pin pin;
    {
        const SitePrompts::Turn turn = prompts.begin(activation);
        PinLengths lengths;
        const PinState state = timed([&] { return token.object->readPin(token.row, &lengths); });
        refuseState(state);
        pin = askPin(token, state, lengths, prompts);
    }
    token.isLoggedIn = false;
    if (pin.view().empty() || !utf8::is_valid(pin.view())) {
        // It costs no try. The page does not learn the difference.
        throw refusedLogin(PinState::kUnknown).withResult(static_cast<std::uint32_t>(E_FAIL));
    }
    timed([&] {
        try {
            token.object->logIn(arguments, std::move(pin));
        } catch (const CallError& error) {
            if (error.kind() != CallError::Kind::kRefused) {
                throw;
            }
            throw refusedLogin(token.object->readPin(token.row))
                .withResult(static_cast<std::uint32_t>(error.result().code()));
        }
    });
    token.isLoggedIn = true;
}

void logOut(PageToken& token, const Arguments& arguments) {
    token.isLoggedIn = false;
    try {
        token.object->logOut(arguments);
    } catch (const Failure& failure) {
        throw arguments.refused(E_FAIL, failure.cause);
    }
}

}  // namespace zr::host
