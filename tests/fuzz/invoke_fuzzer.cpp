// Late-bound calls on every object, with any names, ids, flags and arguments.
#include <memory>
#include <vector>

#include "tests/fuzz/fuzz_module.h"
#include "tests/fuzz/objects.h"

namespace zr::fuzz {
namespace {

/// What arguments point to; lives as long as the call.
struct Storage {
    std::vector<std::unique_ptr<VARIANT>> variants;
    ~Storage() {
        for (const auto& variant : variants) {
            VariantClear(variant.get());
        }
    }
    VARIANT* add() {
        variants.push_back(std::make_unique<VARIANT>());
        VariantInit(variants.back().get());
        return variants.back().get();
    }
};

SAFEARRAY* makeArray(Input& input, VARTYPE element) {
    SAFEARRAYBOUND bounds[3];
    const std::size_t dimensions = 1 + input.below(3);
    for (std::size_t i = 0; i < dimensions; ++i) {
        bounds[i] = {static_cast<ULONG>(input.below(5)), static_cast<LONG>(input.below(9)) - 4};
    }
    return SafeArrayCreate(element, static_cast<UINT>(dimensions), bounds);
}

/// Sets an argument of any type; what it points to is always there.
void setArgument(Input& input, VARIANT* variant, Storage& storage,
                 const std::vector<IDispatch*>& objects, int depth) {
    static constexpr VARTYPE types[] = {VT_EMPTY, VT_NULL, VT_I2,    VT_I4,   VT_R4,  VT_R8,
                                        VT_CY,    VT_DATE, VT_ERROR, VT_BOOL, VT_I1,  VT_UI1,
                                        VT_UI2,   VT_UI4,  VT_I8,    VT_UI8,  VT_INT, VT_UINT};
    switch (input.below(8)) {
        case 0:
            variant->vt = VT_BSTR;
            variant->bstrVal = nullptr;
            if (input.flag()) {
                const std::string bytes = input.text();
                variant->bstrVal = SysAllocStringLen(nullptr, static_cast<UINT>(bytes.size() / 2));
                bytes.copy(reinterpret_cast<char*>(variant->bstrVal), bytes.size() / 2 * 2);
            }
            break;
        case 1:
            variant->vt = input.flag() ? VT_DISPATCH : VT_UNKNOWN;
            variant->pdispVal = input.flag() ? objects[input.below(objects.size())] : nullptr;
            if (variant->pdispVal) {
                variant->pdispVal->AddRef();
            }
            break;
        case 2: {
            static constexpr VARTYPE elements[] = {VT_UI1, VT_I1, VT_I4, VT_BSTR, VT_VARIANT};
            const VARTYPE element = elements[input.below(std::size(elements))];
            variant->vt = static_cast<VARTYPE>(VT_ARRAY | element);
            variant->parray = input.flag() ? makeArray(input, element) : nullptr;
            break;
        }
        case 3:
            if (depth < 3) {
                VARIANT* target = storage.add();
                setArgument(input, target, storage, objects, depth + 1);
                variant->vt = VT_BYREF | VT_VARIANT;
                variant->pvarVal = target;
                break;
            }
            [[fallthrough]];
        case 4: {
            VARIANT* target = storage.add();
            target->vt = types[2 + input.below(std::size(types) - 2)];
            target->llVal = input.number<LONGLONG>();
            variant->vt = static_cast<VARTYPE>(VT_BYREF | target->vt);
            variant->byref = &target->llVal;
            break;
        }
        default:
            variant->vt = types[input.below(std::size(types))];
            variant->llVal = input.number<LONGLONG>();
    }
}

void lookUp(Input& input, IDispatch* object) {
    static const char* const names[] = {"Load",      "OpenKey",    "GetLabel",
                                        "VerifyPIN", "GetKeyCert", "GetCertData"};
    const std::string bytes = input.text();
    const String any(bytes);
    const String known = String::ascii(names[input.below(std::size(names))]);
    LPOLESTR list[] = {input.flag() ? BSTR(any) : BSTR(known), any};
    DISPID ids[2] = {-7, -7};
    const HRESULT hr =
        object->GetIDsOfNames(IID_NULL, list, 1 + static_cast<UINT>(input.below(2)), 0, ids);
    expect(hr == S_OK ? ids[0] > 0 : hr == E_FAIL && ids[0] == -7);
    expect(ids[1] == -7);
}

void call(Input& input, std::vector<IDispatch*>& objects) {
    Storage storage;
    IDispatch* object = objects[input.below(objects.size())];
    if (input.byte() < 30) {
        lookUp(input, object);
        return;
    }
    const DISPID id =
        input.byte() < 250 ? static_cast<DISPID>(input.below(33)) : input.number<LONG>();
    std::vector<VARIANT> arguments(input.below(5));
    for (VARIANT& argument : arguments) {
        VariantInit(&argument);
        setArgument(input, &argument, storage, objects, 0);
    }
    DISPPARAMS params = {};
    params.rgvarg = arguments.data();
    params.cArgs = static_cast<UINT>(arguments.size());
    DISPID named = input.number<LONG>();
    params.rgdispidNamedArgs = &named;
    params.cNamedArgs = static_cast<UINT>(input.below(2));
    Variant result;
    EXCEPINFO excep = {};
    UINT argErr = 7;
    const std::uint8_t given = input.byte();
    object->Invoke(id, IID_NULL, 0, static_cast<WORD>(input.below(16)),
                   (given & 1) != 0 ? nullptr : &params, (given & 2) != 0 ? nullptr : result.get(),
                   (given & 4) != 0 ? nullptr : &excep, (given & 8) != 0 ? nullptr : &argErr);
    expect(argErr == 7);
    if (result->vt == VT_DISPATCH && result->pdispVal && objects.size() < 16) {
        objects.push_back(result->pdispVal);
        result->vt = VT_EMPTY;
    }
    for (VARIANT& argument : arguments) {
        VariantClear(&argument);
    }
}

/// The objects of a session, each with one reference.
std::vector<IDispatch*> openObjects() {
    Ref<ITokenProvider> provider;
    makeProvider(&provider);
    const String path = String::ascii(modulePath());
    expect(provider->Load(path) == S_OK);
    IKeyObject* token = nullptr;
    IKeyFile* file = nullptr;
    IKeyContainer* container = nullptr;
    IKeyCertificate* certificate = nullptr;
    Variant which;
    which->vt = VT_I4;
    which->lVal = 0;
    expect(provider->OpenKey(0, reinterpret_cast<void**>(&token)) == S_OK);
    expect(token->OpenFile(String::ascii("7"), reinterpret_cast<void**>(&file)) == S_OK);
    expect(token->OpenContainer(which, reinterpret_cast<void**>(&container)) == S_OK);
    expect(container->GetKeyCert(true, reinterpret_cast<void**>(&certificate)) == S_OK);
    provider->AddRef();
    return {provider.get(), token, file, container, certificate};
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
        (*object)->Release();
    }
    return 0;
}
