// zrkey file delete: takes a file off a token.
#include "token_files.h"
#include "variant.h"

namespace zr::host {
namespace {

Result deleteFile(const FileOptions& options) {
    PinEntry pin(options.pin, PinEntry::Need::kIfPossible);
    const TokenSession session(options);
    const bool isLoggedIn = session.login(pin);
    // DeleteFile does not tell a missing file from a refused deletion.
    ComRef<IKeyFile> file;
    HRESULT result = session->OpenFile(Text(options.name).get(), file.receive());
    if (FAILED(result)) {
        throw refused(kExitNotFound, "find the file " + options.name, result,
                      fileAdvice(isLoggedIn));
    }
    file.reset(nullptr);
    result = session->DeleteFile(Text(options.name).get());
    const std::string asked = "delete the file " + options.name;
    if (FAILED(result) && !isLoggedIn) {
        throw refused(kExitLoginNeeded, asked, result, "log in for it: give --pin");
    }
    if (FAILED(result)) {
        throw refused(kExitFailure, asked, result, "the file may be protected");
    }
    return {"deleted " + options.name + '\n', {{"name", options.name}}};
}

}  // namespace

void addFileDeleteCommand(CLI::App& parent, Action& action) {
    const auto [command, options] =
        addCommand(parent, action, "file delete", "Takes a file off the token", deleteFile);
    addFileOptions(*command, *options);
}

}  // namespace zr::host
