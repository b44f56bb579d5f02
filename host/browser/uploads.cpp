// Bytes that a page sends in pieces.
#include "host/browser/uploads.h"

#include "host/browser/page_error.h"

namespace zr::host {

void Uploads::append(std::uint64_t number, std::string_view bytes) {
    if (m_spoiled.contains(number)) {
        throw PageError(page_code::kArguments, "bytes of the upload were refused; discard it");
    }
    if (bytes.size() > kMostBytes - m_size) {
        throw PageError(page_code::kTooLarge, "all uploads together are larger than 8 MiB");
    }
    m_uploads[number].append(bytes);
    m_size += bytes.size();
}

std::optional<std::string> Uploads::take(std::uint64_t number) {
    m_spoiled.erase(number);
    auto node = m_uploads.extract(number);
    if (node.empty()) {
        return std::nullopt;
    }
    m_size -= node.mapped().size();
    return std::move(node.mapped());
}

void Uploads::spoil(std::uint64_t number) {
    take(number);
    if (number >= 1 && number <= kMostUploads) {
        m_spoiled.insert(number);
    }
}

}  // namespace zr::host
