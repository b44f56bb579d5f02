// "config.xml" with any content: Load returns one of two results, and lists stay in their fields.
// An input that begins with a zero is written as a list and read back.
#include <algorithm>

#include "runtime/string_convert.h"
#include "tests/fuzz/fuzz_module.h"
#include "tests/fuzz/objects.h"

namespace zr::fuzz {
namespace {

constexpr std::size_t kListSize = 500;

std::string escape(const std::string& text) {
    std::string escaped;
    for (const char c : text) {
        escaped += c == '&' ? "&amp;" : c == '<' ? "&lt;" : std::string(1, c);
    }
    return escaped;
}

/// Takes over the string.
std::basic_string<OLECHAR> takeText(BSTR text) {
    std::basic_string<OLECHAR> taken(text, SysStringLen(text));
    SysFreeString(text);
    return taken;
}

/// The algorithm list of a new token.
std::basic_string<OLECHAR> readList(ITokenProvider* provider) {
    // The module stays loaded even without a configuration.
    ComRef<IKeyObject> token;
    expect(provider->OpenKey(0, token.receive()) == S_OK && token);
    BSTR list = nullptr;
    expect(token->GetSignAlgo(&list) == S_OK && list);
    const std::basic_string<OLECHAR> text = takeText(list);
    expect(text.size() < kListSize, "a list stays in its field");
    return text;
}

void loadAny(const std::string& content) {
    writeConfig(content);
    const ComRef<ITokenProvider> provider = makeProvider();
    const HRESULT hr = provider->Load(Text(modulePath()).get());
    expect(hr == S_OK || hr == E_FAIL);
    readList(provider.get());
}

/// Every further Load appends the list once more, as long as it fits. Only a text that is too long
/// by itself is refused.
void loadText(Input& input) {
    const std::size_t loads = 1 + input.below(4);
    std::string text = input.rest();
    // The XML reader changes line ends.
    text.erase(std::remove_if(text.begin(), text.end(), [](char c) { return c == '\r' || !c; }),
               text.end());
    if (text.find_first_not_of(" \t\n\v\f") == text.npos) {
        text.clear();
    }
    writeConfig("<driver><algo>" + escape(text) + "</algo></driver>");
    const ComRef<ITokenProvider> provider = makeProvider();
    std::string list;
    for (std::size_t i = 0; i < loads; ++i) {
        const bool fits = list.size() + text.size() < kListSize;
        expect(
            provider->Load(Text(modulePath()).get()) == (text.size() < kListSize ? S_OK : E_FAIL),
            "a text is refused exactly when it is too long by itself");
        list += fits ? text : "";
        expect(readList(provider.get()) == takeText(ZSysAllocUTF8String(list.c_str())),
               "a list is read as it was written");
    }
}

}  // namespace
}  // namespace zr::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace zr::fuzz;
    answerFrom(nullptr);
    Input input(data, size);
    if (size > 0 && input.byte() == 0) {
        loadText(input);
    } else {
        loadAny({reinterpret_cast<const char*>(data), size});
    }
    return 0;
}
