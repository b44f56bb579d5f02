// zrkey file exists: checks whether a token has a file.
#include "host/commands/file_command.h"

namespace zr::host {
namespace {

Report fileExists(const FileOptions& options) {
    PinEntry pin(options.pin, PinEntry::Need::kOnRequest);
    const TokenSession session(options);
    const bool isLoggedIn = session.login(pin);
    zrkey::Variant exists;
    const HRESULT result = session->FileExists(zrkey::Text(options.name).get(), exists.receive());
    if (FAILED(result)) {
        throw libraryFailure(kExitNotFound, "find the file " + options.name, result,
                             fileAdvice(isLoggedIn));
    }
    return {options.name + " exists\n", {{"name", options.name}, {"exists", true}}};
}

}  // namespace

void addFileExistsCommand(CLI::App& command, Action& action) {
    const auto options = setBody(command, action, "file exists", fileExists);
    addFileOptions(command, *options);
}

}  // namespace zr::host
