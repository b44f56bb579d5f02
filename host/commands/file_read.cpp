// zrkey file read: the content of a file of a token.
#include "host/commands/byte_arrays.h"
#include "host/commands/file_command.h"
#include "host/system/interruption.h"

namespace zr::host {
namespace {

struct FileReadOptions : FileOptions {
    ByteOutput output;
};

std::string readWhole(IKeyFile& file, const std::string& name) {
    zrkey::Variant size;
    zrkey::ByteArray content;
    HRESULT result = file.GetSize(size.receive());
    stopIfInterrupted();
    if (SUCCEEDED(result)) {
        result = file.Read(static_cast<ULONG>(size.toNumber().value()), content.receive());
    }
    if (FAILED(result)) {
        throw libraryFailure(kExitFailure, "read the file " + name, result,
                             "check that the token is still connected");
    }
    return takeBytes(content);
}

Report readFile(const FileReadOptions& options) {
    const OpenOutput output = openByteOutput(options.output, options.report);
    PinEntry pin(options.pin, PinEntry::Need::kOnRequest);
    const TokenSession session(options);
    const bool isLoggedIn = session.login(pin);
    zrkey::ComRef<IKeyFile> file;
    const HRESULT result = session->OpenFile(zrkey::Text(options.name).get(), file.receive());
    if (FAILED(result)) {
        throw libraryFailure(kExitNotFound, "open the file " + options.name, result,
                             fileAdvice(isLoggedIn));
    }
    return byteReport("content", readWhole(*file.get(), options.name), output, "DATA");
}

}  // namespace

void addFileReadCommand(CLI::App& command, Action& action) {
    const auto options = setBody(command, action, "file read", readFile);
    addFileOptions(command, *options);
    addByteOutput(command, options->output);
}

}  // namespace zr::host
