// zrkey file exists: whether a token holds a file.
#include "token_files.h"
#include "variant.h"

namespace zr::host {
namespace {

Result fileExists(const FileOptions& options) {
    PinEntry pin(options.pin, PinEntry::Need::kOnRequest);
    const TokenSession session(options);
    const bool isLoggedIn = session.login(pin);
    Variant exists;
    const HRESULT result = session->FileExists(Text(options.name).get(), exists.receive());
    if (FAILED(result)) {
        throw refused(kExitNotFound, "find the file " + options.name, result,
                      fileAdvice(isLoggedIn));
    }
    return {options.name + " exists\n", {{"name", options.name}, {"exists", true}}};
}

}  // namespace

void addFileExistsCommand(CLI::App& parent, Action& action) {
    const auto [command, options] =
        addCommand(parent, action, "file exists", "Tells whether a file is there", fileExists);
    addFileOptions(*command, *options);
}

}  // namespace zr::host
