// A host that calls the operations of all objects in any order, chosen by the input.
#pragma once

#include <deque>

#include "tests/fuzz/any_variant.h"
#include "tests/fuzz/input.h"
#include "tests/fuzz/objects.h"

namespace zr::fuzz {

class Session {
public:
    explicit Session(Input& input);

    /// One call of one operation.
    void step();

private:
    template <class Interface>
    using Refs = std::deque<ComRef<Interface>>;
    template <class Interface>
    Interface* any(const Refs<Interface>& objects) {
        return objects.empty() ? nullptr : objects[m_input.below(objects.size())].get();
    }
    /// Calls an operation that opens an object, and keeps the object.
    /// @return the result.
    template <class Interface, class Call>
    HRESULT open(Refs<Interface>& objects, Call call);
    template <class Call>
    void readText(Call call);
    template <class Call>
    void readValue(Call call);

    void useProvider();
    void useToken(IKeyObject& token);
    void openOfToken(IKeyObject& token);
    void useCertificateOf(IKeyObject& token);
    void askToken(IKeyObject& token);
    void useFile(IKeyFile& file);
    void useContainer(IKeyContainer& container);
    void useCertificate(IKeyCertificate& certificate);
    void releaseOne();

    BSTR text();
    /// Mostly byte data.
    const VARIANT& data();

    Input& m_input;
    ComRef<ITokenProvider> m_provider;
    Refs<IKeyObject> m_tokens;
    Refs<IKeyContainer> m_containers;
    Refs<IKeyCertificate> m_certificates;
    Refs<IKeyFile> m_files;
    std::vector<IDispatch*> m_none;
    /// Owns the arguments of the current call.
    std::deque<Variant> m_arguments;
    AnyVariants* m_variants = nullptr;
};

}  // namespace zr::fuzz
