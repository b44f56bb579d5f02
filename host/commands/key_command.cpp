// What the commands that use the key of a certificate share.
#include "key_command.h"

#include <algorithm>

#include "byte_io.h"
#include "system.h"

namespace zr::host {

void addKeyOptions(CLI::App& command, KeyOptions& options) {
    addTokenOptions(command, options);
    addPinOptions(command, options.pin);
    addCertificateOptions(command, options.certificate);
    addInputOption(command, options.input);
}

void checkStreams(const KeyOptions& options, const std::vector<std::string>& inputs) {
    const std::optional<PinSource>& source = options.pin.source;
    const bool isPinThere = source && source->kind == PinSource::Kind::kDescriptor &&
                            source->descriptor == kStandardInput;
    const auto uses = std::count(inputs.begin(), inputs.end(), kStandardStream);
    if (uses + (isPinThere ? 1 : 0) > 1) {
        throw failed(kExitUsage, "read standard input twice", "it gives its bytes once",
                     "name a file by -i, or take the PIN from elsewhere");
    }
}

}  // namespace zr::host
