// zrkey file delete: deletes a file of a token.
#include "host/commands/file_command.h"

namespace zr::host {
namespace {

Report deleteFile(const FileOptions& options) {
    PinEntry pin(options.pin, PinEntry::Need::kIfPossible);
    const TokenSession session(options);
    const bool isLoggedIn = session.login(pin);
    // DeleteFile returns the same result for a missing file and a refused deletion.
    zrkey::ComRef<IKeyFile> file;
    HRESULT result = session->OpenFile(zrkey::Text(options.name).get(), file.receive());
    if (FAILED(result)) {
        throw libraryFailure(kExitNotFound, "find the file " + options.name, result,
                             fileAdvice(isLoggedIn));
    }
    file.reset();
    result = session->DeleteFile(zrkey::Text(options.name).get());
    const std::string asked = "delete the file " + options.name;
    if (FAILED(result) && !isLoggedIn) {
        throw libraryFailure(kExitLoginNeeded, asked, result, "log in first: give --pin");
    }
    if (FAILED(result)) {
        throw libraryFailure(kExitFailure, asked, result, "the file may be protected");
    }
    return {"deleted " + options.name + '\n', {{"name", options.name}}};
}

}  // namespace

void addFileDeleteCommand(CLI::App& command, Action& action) {
    const auto options = setBody(command, action, "file delete", deleteFile);
    addFileOptions(command, *options);
}

}  // namespace zr::host
