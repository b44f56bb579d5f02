// The smallest host by zrkey.hpp, in C++20: makes a provider and prints its name.
#include <cstdio>

#include <zrkey/zrkey.hpp>

int main() {
    zrkey::ComRef<ITokenProvider> provider;
    zrkey::Text name;
    if (zrkey::Result(zrkey::createProvider(provider)).failed() ||
        zrkey::Result(provider->GetName(name.receive())).failed()) {
        return 1;
    }
    std::printf("%s", name.utf8().c_str());
    return 0;
}
