// What sign and verify share.
#pragma once

#include <string>
#include <vector>

#include "host/commands/command_frame.h"
#include "host/token/token_session.h"

namespace zr::host {

/// The library signs and verifies with this algorithm, whatever it is asked for.
inline constexpr const char* kSignAlgorithm = "SHA1WithRSA";

/// The library's result without a login.
inline constexpr HRESULT kLoginNeeded = RPC_E_CANTCALLOUT_INEXTERNALCALL;

struct KeyOptions : TokenOptions {
    PinOptions pin;
    CertificateChoice certificate;
    std::string input = "-";
};

void addKeyOptions(CLI::App& command, KeyOptions& options);

/// Throws a Failure when more than one of the PIN and the inputs is to be read from standard input.
void checkStreams(const KeyOptions& options, const std::vector<std::string>& inputs);

}  // namespace zr::host
