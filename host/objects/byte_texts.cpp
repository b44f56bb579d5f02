// Members of the provider that convert bytes.
#include "host/objects/byte_texts.h"

#include "host/output/encoding.h"

namespace zr::host {
namespace {

Value decoded(const Arguments& arguments, ByteFormat format, const char* problem) {
    const std::optional<std::string> bytes = decode(toUtf8(arguments.text(0)), format);
    if (!bytes) {
        throw arguments.wrong(0, problem);
    }
    return toBytes(*bytes);
}

}  // namespace

Value bytesToHex(ProviderObject&, const Arguments& arguments) {
    return toWideText(toHex(arguments.bytes(0)));
}

Value hexToBytes(ProviderObject&, const Arguments& arguments) {
    return decoded(arguments, ByteFormat::kHex, "is not hex");
}

Value bytesToBase64(ProviderObject&, const Arguments& arguments) {
    return toWideText(toBase64(arguments.bytes(0)));
}

Value base64ToBytes(ProviderObject&, const Arguments& arguments) {
    return decoded(arguments, ByteFormat::kBase64, "is not base64");
}

Value bytesToText(ProviderObject&, const Arguments& arguments) {
    return toWideText(arguments.bytes(0));
}

Value textToBytes(ProviderObject&, const Arguments& arguments) {
    return toBytes(toUtf8(arguments.text(0)));
}

}  // namespace zr::host
