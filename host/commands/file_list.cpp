// zrkey file list: the files of a token.
#include "host/commands/command_frame.h"
#include "host/token/token_files.h"
#include "host/token/token_session.h"

namespace zr::host {
namespace {

struct FileListOptions : TokenOptions {
    PinOptions pin;
};

Report listAll(const FileListOptions& options) {
    PinEntry pin(options.pin, PinEntry::Need::kOnRequest);
    const TokenSession session(options);
    session.login(pin);
    DirectSession direct(session, "list the files", CryptokiSession::Access::kReadOnly);
    Report report;
    std::vector<Record> rows;
    for (const TokenFile& file : listFiles(direct)) {
        const std::string number = std::to_string(file.number);
        report.output.append(number).append("\t").append(std::to_string(file.size));
        report.output.append(file.isPrivate ? "\tprivate\n" : "\tpublic\n");
        rows.push_back(
            {{"name", number}, {"size", std::uint64_t{file.size}}, {"private", file.isPrivate}});
    }
    report.fields = {{"files", rows}};
    return report;
}

}  // namespace

void addFileListCommand(CLI::App& command, Action& action) {
    const auto options = setBody(command, action, "file list", listAll);
    addTokenOptions(command, *options);
    addPinOptions(command, options->pin);
}

}  // namespace zr::host
