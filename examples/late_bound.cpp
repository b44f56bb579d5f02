// Calls a token by the names of its members, as script engines do: GetIDsOfNames and Invoke. C++17.
//
//     g++ late_bound.cpp $(pkg-config --cflags --libs zrkey) -o late_bound
//     ./late_bound MODULE | grep -v '^\['
//
// The lines that begin with [ are the library's own. For MODULE, config.xml and the PIN see
// sign_file.cpp; docs/script-reference.md lists the members.
#include <zrkey/zrkey.hpp>

#include <cstdio>
#include <iostream>
#include <stdexcept>

namespace {

using zrkey::Variant;

void check(const std::string& operation, zrkey::Result result) {
    if (result.failed()) {
        throw std::runtime_error(operation + " failed: " + result.text());
    }
}

/// Calls a member. The first argument is rgvarg[0]: the order is the natural one, while most
/// Automation servers expect the last argument first.
template <class... Arguments>
Variant call(IDispatch& object, const char* name, const Arguments&... arguments) {
    zrkey::Text text(name);
    LPOLESTR names[] = {text.get()};
    DISPID id = 0;
    check(name, object.GetIDsOfNames(IID_NULL, names, 1, 0, &id));

    VARIANT list[] = {arguments.get()..., VARIANT()};  // never empty
    DISPPARAMS parameters = {list, nullptr, sizeof...(arguments), 0};
    Variant result;
    check(name, object.Invoke(id, IID_NULL, 0, DISPATCH_METHOD, &parameters, result.receive(),
                              nullptr, nullptr));
    return result;
}

Variant text(std::string_view utf8) {
    return Variant::fromText(zrkey::Text(utf8));
}

void tour(const char* module) {
    zrkey::ComRef<ITokenProvider> provider;
    check("createProvider", zrkey::createProvider(provider));
    call(*provider.get(), "Load", text(module));
    std::printf("slots with a token: %lld\n",
                call(*provider.get(), "GetKeyCount").toNumber().value_or(0));

    // Numbers are VT_I4. The result may be an empty reference even after a success.
    const Variant opened = call(*provider.get(), "OpenKey", Variant::fromNumber(0));
    const zrkey::ComRef<IDispatch> token = opened.toObject();
    if (!token) {
        throw std::runtime_error("no token any more");
    }
    for (const char* name : {"GetLabel", "GetSerialNumber", "GetManufacturerID"}) {
        const std::string value = call(*token.get(), name).toText().value_or("");
        std::printf("%s: %s\n", name, value.c_str());
    }

    std::string pin;
    std::fputs("user PIN: ", stderr);
    if (!std::getline(std::cin, pin) || pin.empty()) {
        throw std::runtime_error("no PIN on standard input");
    }
    pin.erase(pin.find_last_not_of('\r') + 1);  // the line may end in CR LF
    // The PIN first, then its kind: 0 is the user's.
    call(*token.get(), "VerifyPIN", text(pin), Variant::fromNumber(0));
    std::puts("logged in");
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fputs("usage: late_bound MODULE\n", stderr);
        return 1;
    }
    try {
        tour(argv[1]);
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
}
