// What the commands that use the key of a certificate share.
#pragma once

#include <string>
#include <vector>

#include "command_frame.h"
#include "token_session.h"

namespace zr::host {

/// What the library does whatever it is asked for.
inline constexpr const char* kSignAlgorithm = "SHA1WithRSA";

/// The library's answer without a login.
inline constexpr HRESULT kLoginNeeded = RPC_E_CANTCALLOUT_INEXTERNALCALL;

struct KeyOptions : TokenOptions {
    PinOptions pin;
    CertificateChoice certificate;
    std::string input = "-";
};

void addKeyOptions(CLI::App& command, KeyOptions& options);

/// Throws a Failure when standard input is to give more than one of PIN and inputs.
void checkStreams(const KeyOptions& options, const std::vector<std::string>& inputs);

}  // namespace zr::host
