// Late-bound calls on every object, with any names, ids, flags and arguments.
#include <cstring>
#include <vector>

#include "tests/fuzz/any_variant.h"
#include "tests/fuzz/fuzz_module.h"
#include "tests/fuzz/objects.h"

namespace zr::fuzz {
namespace {

void lookUp(Input& input, IDispatch* object) {
    static const char* const names[] = {"Load",      "OpenKey",    "GetLabel",
                                        "VerifyPIN", "GetKeyCert", "GetCertData"};
    const Text any = textOfUnits(input.text());
    const Text known(names[input.below(std::size(names))]);
    LPOLESTR list[] = {input.flag() ? any.get() : known.get(), any.get()};
    DISPID ids[2] = {-7, -7};
    const HRESULT hr =
        object->GetIDsOfNames(IID_NULL, list, 1 + static_cast<UINT>(input.below(2)), 0, ids);
    expect(hr == S_OK ? ids[0] > 0 : hr == E_FAIL && ids[0] == -7);
    expect(ids[1] == -7);
}

void call(Input& input, std::vector<IDispatch*>& objects) {
    IDispatch* object = objects[input.below(objects.size())];
    if (input.byte() < 30) {
        lookUp(input, object);
        return;
    }
    const DISPID id =
        input.byte() < 250 ? static_cast<DISPID>(input.below(33)) : input.number<LONG>();
    AnyVariants variants(input, objects);
    std::vector<VARIANT> arguments(input.below(5));
    for (VARIANT& argument : arguments) {
        argument = variants.make();
    }
    std::vector<VARIANT> passed = arguments;
    DISPID named[] = {input.number<LONG>(), 0, -3};
    DISPPARAMS params = {};
    params.rgvarg = input.byte() < 250 ? passed.data() : nullptr;
    params.cArgs = static_cast<UINT>(passed.size());
    params.rgdispidNamedArgs = named;
    params.cNamedArgs = static_cast<UINT>(input.below(std::size(named) + 1));
    Variant result;
    EXCEPINFO excep = {};
    UINT argErr = 7;
    const std::uint8_t given = input.byte();
    const WORD flags =
        input.byte() < 250 ? static_cast<WORD>(input.below(16)) : input.number<WORD>();
    object->Invoke(id, IID_NULL, 0, flags, (given & 1) != 0 ? nullptr : &params,
                   (given & 2) != 0 ? nullptr : result.receive(),
                   (given & 4) != 0 ? nullptr : &excep, (given & 8) != 0 ? nullptr : &argErr);
    expect(argErr == 7);
    expect(passed.empty() ||
               std::memcmp(passed.data(), arguments.data(), passed.size() * sizeof(VARIANT)) == 0,
           "arguments stay as they are");
    ComRef<IDispatch> made = result.toObject();
    if (made && objects.size() < 16) {
        objects.push_back(made.release());
    }
}

/// The objects of a session, each with one reference.
std::vector<IDispatch*> openObjects() {
    ComRef<ITokenProvider> provider = makeProvider();
    expect(provider->Load(Text(modulePath()).get()) == S_OK);
    ComRef<IKeyObject> token;
    ComRef<IKeyFile> file;
    ComRef<IKeyContainer> container;
    ComRef<IKeyCertificate> certificate;
    expect(provider->OpenKey(0, token.receive()) == S_OK);
    expect(token->OpenFile(Text("7").get(), file.receive()) == S_OK);
    expect(token->OpenContainer(Variant::fromNumber(0), container.receive()) == S_OK);
    expect(container->GetKeyCert(true, certificate.receive()) == S_OK);
    return {provider.release(), token.release(), file.release(), container.release(),
            certificate.release()};
}

}  // namespace
}  // namespace zr::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace zr::fuzz;
    static const bool isPrepared = (writeConfig("<driver><algo>a</algo></driver>"), true);
    expect(isPrepared && !modulePath().empty());
    answerFrom(nullptr);
    std::vector<IDispatch*> objects = openObjects();
    Input input(data, size);
    while (!input.isAtEnd()) {
        call(input, objects);
    }
    for (auto object = objects.rbegin(); object != objects.rend(); ++object) {
        // An object is younger than those it keeps.
        expect((*object)->Release() == 0, "no call keeps a reference");
    }
    return 0;
}
