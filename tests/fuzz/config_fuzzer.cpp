// "config.xml" of any content: Load answers one of two results, and the lists stay in their fields.
#include "tests/fuzz/fuzz_module.h"
#include "tests/fuzz/objects.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace zr::fuzz;
    writeConfig({reinterpret_cast<const char*>(data), size});
    const String path = String::ascii(modulePath());
    answerFrom(nullptr);
    Ref<ITokenProvider> provider;
    makeProvider(&provider);
    const HRESULT hr = provider->Load(path);
    expect(hr == S_OK || hr == E_FAIL);
    // Also without a configuration the module stays loaded.
    Ref<IKeyObject> token;
    expect(provider->OpenKey(0, token.out()) == S_OK && token);
    BSTR list = nullptr;
    if (token->GetSignAlgo(&list) == S_OK) {
        expect(SysStringLen(list) < 500);
        SysFreeString(list);
    }
    return 0;
}
