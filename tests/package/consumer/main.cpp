// The smallest host: makes a provider and prints its name.
#include <zrkey/zrkey.h>

#include <cstdio>

int main() {
    IClassFactory* factory = nullptr;
    if (FAILED(ZCLGetClassObject(LIBID_ZRKey, IID_IClassFactory,
                                 reinterpret_cast<void**>(&factory)))) {
        return 1;
    }
    ITokenProvider* provider = nullptr;
    const HRESULT hr =
        factory->CreateInstance(nullptr, IID_ITokenProvider, reinterpret_cast<void**>(&provider));
    factory->Release();
    BSTR name = nullptr;
    if (FAILED(hr) || FAILED(provider->GetName(&name))) {
        return 1;
    }
    for (UINT i = 0; i < SysStringLen(name); ++i) {
        std::putchar(static_cast<char>(name[i]));
    }
    SysFreeString(name);
    provider->Release();
    return 0;
}
