// A command's failure: what was asked, why it failed, what to try; and the exit code.
#include "host/output/failure.h"

#include <utility>

#include "host/output/printable.h"

namespace zr::host {

std::string Failure::line() const {
    return printable("zrkey: cannot " + asked + ": " + cause + "; " + advice) + "\n";
}

Failure libraryFailure(int exitCode, std::string asked, zrkey::Result result, std::string advice) {
    return {exitCode, std::move(asked), "the library returned " + result.text(), std::move(advice),
            result};
}

Failure explainedFailure(int exitCode, std::string asked, zrkey::Result result, Cause cause) {
    return {exitCode, std::move(asked), std::move(cause.text), std::move(cause.advice), result};
}

Failure systemFailure(int exitCode, std::string asked, std::error_code error, std::string advice) {
    return {exitCode, std::move(asked), error.message(), std::move(advice), std::nullopt};
}

Failure commandFailure(int exitCode, std::string asked, std::string cause, std::string advice) {
    return {exitCode, std::move(asked), std::move(cause), std::move(advice), std::nullopt};
}

}  // namespace zr::host
