/* The smallest host in C: makes a provider and prints its name. */
#include <stdio.h>
#include <zrkey/zrkey_c.h>

int main(void) {
    IClassFactory* factory = NULL;
    ITokenProvider* provider = NULL;
    BSTR name = NULL;
    UINT i;
    HRESULT hr;
    if (FAILED(ZCLGetClassObject(&LIBID_ZRKey, &IID_IClassFactory, (void**)&factory))) {
        return 1;
    }
    hr = factory->lpVtbl->CreateInstance(factory, NULL, &IID_ITokenProvider, (void**)&provider);
    factory->lpVtbl->Release(factory);
    if (FAILED(hr) || FAILED(provider->lpVtbl->GetName(provider, &name))) {
        return 1;
    }
    for (i = 0; i < SysStringLen(name); ++i) {
        putchar((char)name[i]);
    }
    SysFreeString(name);
    provider->lpVtbl->Release(provider);
    return 0;
}
