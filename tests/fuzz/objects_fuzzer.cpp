// The object model by name: any members of any objects with any values, over a module whose answers
// come from the input.
#include "host/objects/provider_object.h"

#include <limits>
#include <vector>

#include "host/objects/collection_object.h"
#include "tests/fuzz/expect.h"
#include "tests/fuzz/fuzz_module.h"
#include "tests/fuzz/objects.h"

namespace zr::fuzz {
namespace {

using host::CallError;
using host::Kind;
using host::Member;
using host::ObjectRef;
using host::ParameterKind;
using host::Value;

constexpr std::size_t kMostObjects = 12;

class ObjectHost {
public:
    explicit ObjectHost(Input& input) : m_input(input) {
        std::shared_ptr<host::ProviderObject> provider;
        expect(SUCCEEDED(host::ProviderObject::create(provider)));
        m_objects.push_back(provider);
        call(provider, *host::findMember(host::ObjectClass::kProvider, "Load"),
             {host::toWideText(modulePath())});
        call(provider, *host::findMember(host::ObjectClass::kProvider, "OpenKey"), {0.0});
    }

    void step() {
        const ObjectRef object = m_objects[m_input.below(m_objects.size())];
        const auto members = host::membersOf(object->objectClass());
        const Member& member = members[m_input.below(members.size())];
        call(object, member, arguments(member));
    }

private:
    std::vector<Value> arguments(const Member& member) {
        std::vector<Value> values;
        for (const host::Parameter& parameter : member.usedParameters()) {
            values.push_back(m_input.byte() < 230 ? fitting(parameter.kind) : any());
        }
        if (m_input.byte() >= 240) {
            values.push_back(any());
        }
        return values;
    }

    Value fitting(ParameterKind kind) {
        switch (kind) {
            case ParameterKind::kInteger:
                return static_cast<double>(m_input.below(6)) - 1;
            case ParameterKind::kBytes:
                return host::toBytes(m_input.text());
            case ParameterKind::kCertificate:
                return m_objects[m_input.below(m_objects.size())];
            default:
                return text();
        }
    }

    Value text() {
        static const char* const texts[] = {
            "1", "7", "1234", "12345678", "rsa-sha256", "ecdsa-sha256", "MD5", "6162"};
        const std::size_t choice = m_input.below(std::size(texts) + 4);
        return host::toWideText(choice < std::size(texts) ? texts[choice] : m_input.text());
    }

    Value any() {
        switch (m_input.below(9)) {
            case 0:
                return host::Nothing();
            case 1:
                return host::Null();
            case 2:
                return m_input.flag();
            case 3:
                return m_input.number<double>();
            case 4:
                return static_cast<double>(m_input.number<int>());
            case 5:
                return host::toBytes(m_input.text());
            case 6:
                return host::WideTexts{host::toWideText(m_input.text())};
            case 7:
                return m_objects[m_input.below(m_objects.size())];
            default:
                return text();
        }
    }

    void call(const ObjectRef& object, const Member& member, const std::vector<Value>& values) {
        const bool wasClosed = object->isClosed();
        try {
            take(member, host::callMember(*object, member, values));
            expect(!wasClosed || member.isForClosed, "a closed object does nothing");
        } catch (const CallError& error) {
            expect(error.member() == member.name, "an error names its member");
            expect(error.result().failed(), "an error has a failure");
            expect(error.kind() != CallError::Kind::kArgument || error.argument() < values.size(),
                   "the argument at fault was given");
        }
    }

    void take(const Member& member, const Value& value) {
        const Kind kind = host::kindOf(value);
        expect(kind == member.result || (kind == Kind::kNull && member.mayBeNull),
               "a result is of the kind in the table");
        if (kind != Kind::kObject) {
            return;
        }
        const ObjectRef& object = std::get<ObjectRef>(value);
        if (object->objectClass() == host::ObjectClass::kCollection) {
            for (const ObjectRef& item :
                 static_cast<const host::CollectionObject&>(*object).items()) {
                keep(item);
            }
        }
        keep(object);
    }

    void keep(const ObjectRef& object) {
        m_objects.push_back(object);
        if (m_objects.size() > kMostObjects) {
            // In any order: what is used on may come from it.
            m_objects.erase(m_objects.begin() +
                            static_cast<std::ptrdiff_t>(m_input.below(kMostObjects)));
        }
    }

    Input& m_input;
    std::vector<ObjectRef> m_objects;
};

}  // namespace
}  // namespace zr::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace zr::fuzz;
    static const bool isPrepared = (writeConfig("<driver><algo>a</algo></driver>"), true);
    expect(isPrepared && !modulePath().empty());
    Input input(data, size);
    answerFrom(&input);
    {
        ObjectHost objects(input);
        while (!input.isAtEnd()) {
            objects.step();
        }
    }
    answerFrom(nullptr);
    return 0;
}
