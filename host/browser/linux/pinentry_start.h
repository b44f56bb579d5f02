// Starts a pinentry: in a session of its own, with few variables and no other descriptors.
#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

namespace zr::host {

/// @param program     an absolute path; anything else is not started.
/// @param descriptor  becomes its standard input and output.
/// @return its process; -1 when it is not started. A program that is not there ends at once.
pid_t startPinentry(const std::string& program, int descriptor);

/// The variables that it gets, as "NAME=value": where the screen is, and the language.
std::vector<std::string> pinentryVariables();

}  // namespace zr::host
