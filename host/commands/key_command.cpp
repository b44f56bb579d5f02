// What sign and verify share.
#include "host/commands/key_command.h"

#include <algorithm>

#include "host/system/byte_io.h"
#include "host/system/system.h"

namespace zr::host {

void addKeyOptions(CLI::App& command, KeyOptions& options) {
    addTokenOptions(command, options);
    addPinOptions(command, options.pin);
    addCertificateOptions(command, options.certificate);
    addInputOption(command, options.input);
}

void checkStreams(const KeyOptions& options, const std::vector<std::string>& inputs) {
    const std::optional<PinSource>& source = options.pin.source;
    const bool isPinInput = source && source->kind == PinSource::Kind::kDescriptor &&
                            source->descriptor == kStandardInput;
    const auto uses = std::count(inputs.begin(), inputs.end(), kStandardStream);
    if (uses + (isPinInput ? 1 : 0) > 1) {
        throw commandFailure(kExitUsage, "read standard input twice",
                             "its data can be read only once",
                             "name a file with -i, or give another source for the PIN");
    }
}

}  // namespace zr::host
