// TokenProvider_pkcs11: reading "config.xml" of the current directory.
#include <tinyxml2.h>

#include <cstdio>
#include <cstring>
#include <memory>
#include <new>

#include "model/log_scope.h"
#include "pkcs11/provider_pkcs11.h"
#include "runtime/bounded_text.h"

namespace {

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

}  // namespace

bool TokenProvider_pkcs11::LoadConfig() {
    const LogScope scope = LogScope::withoutBegin(GetLog(), "LoadConfig");
    try {
        // Opened here: out of memory, the parser would leave a file open that it opened itself.
        const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen("config.xml", "rb"),
                                                                   std::fclose);
        tinyxml2::XMLDocument document(true, tinyxml2::PRESERVE_WHITESPACE);
        if (!file || document.LoadFile(file.get()) != tinyxml2::XML_SUCCESS) {
            return false;
        }
        const tinyxml2::XMLElement* driver = document.FirstChildElement("driver");
        return driver && appendChildText(*driver, "algo", m_szAlgoList, scope) &&
               appendChildText(*driver, "digest", m_szDigestList, scope);
    } catch (const std::bad_alloc&) {
        return false;
    }
}
