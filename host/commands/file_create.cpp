// zrkey file create: makes an empty file on a token.
#include "token_files.h"
#include "variant.h"

namespace zr::host {
namespace {

Result createFile(const FileOptions& options) {
    PinEntry pin(options.pin, PinEntry::Need::kIfPossible);
    const TokenSession session(options);
    const bool isLoggedIn = session.login(pin);
    ComRef<IKeyFile> file;
    const HRESULT result =
        session->CreateFile(Text(options.name).get(), 0, 0, 0, 0, file.receive());
    const std::string asked = "create the file " + options.name;
    if (FAILED(result) && !isLoggedIn) {
        throw refused(kExitLoginNeeded, asked, result, "log in for it: give --pin");
    }
    if (FAILED(result)) {
        throw refused(kExitFailure, asked, result,
                      "the token may be full or written by its user only");
    }
    // The library looks for a name under the number before it.
    const std::string foundAs = std::to_string(std::stoul(options.name) + 1);
    return {"created " + options.name + ", found as " + foundAs + '\n',
            {{"name", options.name}, {"foundAs", foundAs}}};
}

}  // namespace

void addFileCreateCommand(CLI::App& parent, Action& action) {
    const auto [command, options] =
        addCommand(parent, action, "file create", "Makes an empty file; as N, it is found as N + 1",
                   createFile);
    // A file made under the last name would be found under none.
    addFileOptions(*command, *options, kLastFileName - 1);
}

}  // namespace zr::host
