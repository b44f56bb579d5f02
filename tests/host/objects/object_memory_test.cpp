// Thousands of rounds with the object model leave no memory behind: the blocks of this program, which
// the object model is linked into, are counted.
#include "host/objects/provider_object.h"
#include "tests/host/objects/counted_blocks.h"
#include "tests/support/fixtures/token.h"

namespace zr::test {
namespace {

using host::ObjectRef;
using host::Value;

constexpr int kRounds = 1000;

class ObjectMemoryTest : public ModuleTest {
protected:
    ObjectMemoryTest() {
        module.addCertificate("a", "A");
        module.addData("6", "content");
    }

    static Value call(const ObjectRef& object, const char* name,
                      const std::vector<Value>& arguments = {}) {
        return host::callMember(*object, *host::findMember(object->objectClass(), name), arguments);
    }
    static ObjectRef open(const ObjectRef& object, const char* name,
                          const std::vector<Value>& arguments = {}) {
        return std::get<ObjectRef>(call(object, name, arguments));
    }
    ObjectRef load() const {
        std::shared_ptr<host::ProviderObject> provider;
        EXPECT_EQ(S_OK, host::ProviderObject::create(provider));
        call(provider, "Load", {host::toWideText(module.path())});
        return provider;
    }
    /// A day's work, with failures.
    static void work(const ObjectRef& provider) {
        const ObjectRef token = open(provider, "OpenKey", {0.0});
        call(token, "VerifyPIN", {host::toWideText("1234")});
        const ObjectRef file = open(token, "OpenFile", {host::toWideText("7")});
        EXPECT_EQ(Value(host::toBytes("content")).index(), call(file, "readAll").index());
        const ObjectRef certificate = open(open(token, "OpenContainer", {0.0}), "GetKeyCert");
        call(certificate, "pem");
        open(token, "certificates");
        EXPECT_THROW(call(token, "Lock"), host::CallError);
        EXPECT_THROW(call(token, "SignData", {1.0}), host::CallError);
        EXPECT_THROW(call(token, "OpenFile", {host::toWideText("no")}), host::CallError);
    }
    /// @param round  takes the module's record of calls, which grows otherwise.
    template <class Round>
    static void expectFlat(int rounds, Round round) {
        round();
        const long before = liveBlocks();
        for (int i = 0; i < rounds; ++i) {
            round();
        }
        EXPECT_EQ(before, liveBlocks());
    }
};

TEST_F(ObjectMemoryTest, BlocksOfThisProgramAreCounted) {
    const long before = liveBlocks();
    const auto provider = load();
    EXPECT_LT(before, liveBlocks());
}

TEST_F(ObjectMemoryTest, ProvidersLeaveNothing) {
    expectFlat(kRounds, [this] {
        work(load());
        module.takeCalls();
    });
}

TEST_F(ObjectMemoryTest, TokensOfOneProviderLeaveNothing) {
    const ObjectRef provider = load();
    expectFlat(kRounds, [&] {
        work(provider);
        module.takeCalls();
    });
}

TEST_F(ObjectMemoryTest, ThousandsOfObjectsAreKeptAndReleasedInAnyOrder) {
    const ObjectRef provider = load();
    expectFlat(2, [&] {
        std::vector<ObjectRef> kept;
        for (int i = 0; i < kRounds; ++i) {
            kept.push_back(open(provider, "OpenKey", {0.0}));
            kept.push_back(open(kept.back(), "OpenContainer", {0.0}));
            kept.push_back(open(kept.back(), "GetKeyCert"));
        }
        // Every seventh, round and round: children before and after what they come from.
        for (std::size_t i = 0; i < kept.size(); ++i) {
            kept[i * 7 % kept.size()].reset();
        }
        module.takeCalls();
    });
}

}  // namespace
}  // namespace zr::test
