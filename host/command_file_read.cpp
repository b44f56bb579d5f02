// zrkey file read: the content of a token's file.
#include "token_files.h"
#include "variant.h"

namespace zr::host {
namespace {

struct FileReadOptions : FileOptions {
    ByteOutput output;
};

std::string readWhole(IKeyFile& file, const std::string& name) {
    Variant size;
    Variant content;
    HRESULT result = file.GetSize(size.receive());
    if (SUCCEEDED(result)) {
        result = file.Read(static_cast<ULONG>(size.get().lVal), content.receive());
    }
    if (FAILED(result)) {
        throw refused(kExitFailure, "read the file " + name, result,
                      "look whether the token is still connected");
    }
    return content.bytes();
}

Result readFile(const FileReadOptions& options) {
    PinEntry pin(options.pin, PinEntry::Need::kOnRequest);
    const TokenSession session(options);
    const bool isLoggedIn = session.login(pin);
    ComRef<IKeyFile> file;
    const HRESULT result = session->OpenFile(Text(options.name).get(), file.receive());
    if (FAILED(result)) {
        throw refused(kExitNotFound, "open the file " + options.name, result,
                      fileAdvice(isLoggedIn));
    }
    return byteResult("content", readWhole(*file.get(), options.name), options.output, "DATA");
}

}  // namespace

void addFileReadCommand(CLI::App& parent, Action& action) {
    const auto [command, options] =
        addCommand(parent, action, "file read", "Writes the content of a file out", readFile);
    addFileOptions(*command, *options);
    addByteOutput(*command, options->output);
}

}  // namespace zr::host
