// zrkey file create: creates an empty file on a token.
#include "host/commands/file_command.h"

namespace zr::host {
namespace {

Report createFile(const FileOptions& options) {
    PinEntry pin(options.pin, PinEntry::Need::kIfPossible);
    const TokenSession session(options);
    const bool isLoggedIn = session.login(pin);
    zrkey::ComRef<IKeyFile> file;
    const HRESULT result =
        session->CreateFile(zrkey::Text(options.name).get(), 0, 0, 0, 0, file.receive());
    const std::string asked = "create the file " + options.name;
    if (FAILED(result) && !isLoggedIn) {
        throw libraryFailure(kExitLoginNeeded, asked, result, "log in first: give --pin");
    }
    if (FAILED(result)) {
        throw libraryFailure(kExitFailure, asked, result,
                             "the token may be full, or allow only its user to write");
    }
    // The library finds file N by the label N - 1.
    const std::string foundAs = std::to_string(std::stoul(options.name) + 1);
    return {"created " + options.name + ", found as " + foundAs + '\n',
            {{"name", options.name}, {"foundAs", foundAs}}};
}

}  // namespace

void addFileCreateCommand(CLI::App& command, Action& action) {
    const auto options = setBody(command, action, "file create", createFile);
    // No name would find a file created under the last number.
    addFileOptions(command, *options, kLastFileName - 1);
}

}  // namespace zr::host
