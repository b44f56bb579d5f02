// A site: what may ask for a token, as browsers name it.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace zr::host {

/// https with any host and port, or http with localhost or 127.0.0.1. Two are equal when scheme, host and
/// port are.
class Origin {
public:
    /// Reads an origin as a browser writes it, or as a person does: letters of any case, the default
    /// port, one "/" at the end.
    /// @param problem  set when the result is nullopt: "has a path", ...; it follows the text in a
    ///                 message.
    static std::optional<Origin> read(std::string_view text, std::string& problem);

    /// As browsers write it: "https://example.com:8443", in lower case, without the default port.
    const std::string& text() const { return m_text; }
    bool operator==(const Origin& other) const = default;

private:
    explicit Origin(std::string text) : m_text(std::move(text)) {}

    std::string m_text;
};

}  // namespace zr::host
