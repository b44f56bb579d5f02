// TokenProvider_pkcs11: reading "config.xml" of the current directory.
#include <tinyxml2.h>

#include <cstdio>
#include <cstring>
#include <memory>
#include <new>
#include <optional>
#include <string>
#include <utility>

#include "model/log_scope.h"
#include "pkcs11/provider_pkcs11.h"
#include "platform/files.h"
#include "runtime/bounded_text.h"

namespace {

constexpr std::size_t kMostBytes = 1 << 20;

/// Appends the text of a child element to a list: every further Load appends the lists once more.
/// A missing element changes nothing, nor does a text for which the list has no room any more: a
/// host that loads again and again must not fail one day.
/// @return false when the text alone is too long; the list is then unchanged.
template <std::size_t Size>
bool appendChildText(const tinyxml2::XMLElement& driver, const char* name, char (&list)[Size],
                     const LogScope& scope, unsigned int sourceLine = __builtin_LINE()) {
    const tinyxml2::XMLElement* child = driver.FirstChildElement(name);
    const char* text = child ? child->GetText() : nullptr;
    if (!text) {
        return true;
    }
    if (std::strlen(text) >= Size) {
        return false;
    }
    zr::appendText(list, text);
    char line[1024];
    std::snprintf(line, sizeof line, "%sList=[%s]\n", name, list);
    scope.message(line, sourceLine);
    return true;
}

/// @return nothing when there is no such regular file, or when it is larger than kMostBytes.
std::optional<std::string> readConfig() {
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(zr::openRegularFile("config.xml"),
                                                               std::fclose);
    if (!file) {
        return std::nullopt;
    }
    std::string text;
    char part[4096];
    while (const std::size_t read = std::fread(part, 1, sizeof part, file.get())) {
        text.append(part, read);
        if (text.size() > kMostBytes) {
            return std::nullopt;
        }
    }
    return std::ferror(file.get()) ? std::nullopt : std::optional(std::move(text));
}

}  // namespace

bool TokenProvider_pkcs11::LoadConfig() {
    const LogScope scope = LogScope::withoutBegin(GetLog(), "LoadConfig");
    try {
        const std::optional<std::string> text = readConfig();
        tinyxml2::XMLDocument document(true, tinyxml2::PRESERVE_WHITESPACE);
        if (!text || document.Parse(text->data(), text->size()) != tinyxml2::XML_SUCCESS) {
            return false;
        }
        const tinyxml2::XMLElement* driver = document.FirstChildElement("driver");
        return driver && appendChildText(*driver, "algo", m_szAlgoList, scope) &&
               appendChildText(*driver, "digest", m_szDigestList, scope);
    } catch (const std::bad_alloc&) {
        return false;
    }
}
