// zrkey file write: gives a file of a token its content.
#include "host/commands/byte_arrays.h"
#include "host/commands/file_command.h"
#include "host/commands/key_command.h"
#include "host/token/token_files.h"
#include "host/token/token_session.h"

namespace zr::host {
namespace {

struct FileWriteOptions : FileOptions {
    std::string input = "-";
};

Report writeContent(const FileWriteOptions& options) {
    checkStreams(options.pin, {options.input});
    PinEntry pin(options.pin, PinEntry::Need::kIfPossible);
    const std::string content = takeBytes(readInput(options.input, kLargestFile));
    const std::string asked = "write the file " + options.name;
    const TokenSession session(options);
    // A private file is not visible without a login: another one of its number would be made.
    if (!session.login(pin)) {
        throw commandFailure(kExitLoginNeeded, asked, "files are written after a login only",
                             "log in first: give --pin");
    }
    DirectSession direct(session, asked, CryptokiSession::Access::kReadWrite);
    const auto number = static_cast<unsigned>(std::stoul(options.name));
    const WrittenFile written = writeTokenFile(direct, number, content);
    Report report;
    report.output = "wrote " + std::to_string(content.size()) + " bytes to " + options.name;
    report.output += written == WrittenFile::kCreated ? ", a new file\n" : "\n";
    report.fields = {{"name", options.name},
                     {"size", std::uint64_t{content.size()}},
                     {"created", written == WrittenFile::kCreated},
                     {"replaced", written == WrittenFile::kReplaced}};
    return report;
}

}  // namespace

void addFileWriteCommand(CLI::App& command, Action& action) {
    const auto options = setBody(command, action, "file write", writeContent);
    addFileOptions(command, *options);
    addInputOption(command, options->input);
}

}  // namespace zr::host
