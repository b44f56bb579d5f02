// Objects are released in every order: the remaining ones stay usable, and releasing the last one
// logs out and unloads the module, once.
#include <algorithm>
#include <array>

#include "tests/host/objects/object_calls.h"

namespace zr::test {
namespace {

using host::ObjectClass;
using host::ObjectRef;

constexpr std::size_t kObjects = 6;
/// A member of each object that needs what the object came from.
constexpr std::array<const char*, kObjects> kUses = {"GetKeyCount", "GetLabel",    "Flush",
                                                     "GetKeyCert",  "GetCertData", "Count"};

class ObjectLivesTest : public ModuleTest {
protected:
    ObjectLivesTest() {
        module.addCertificate("a", "A");
        module.addData("6", "content");
    }

    std::array<ObjectRef, kObjects> openAll() {
        const ObjectRef provider = makeProviderObject();
        call(provider, "Load", {host::toWideText(module.path())});
        module.takeCalls();
        const ObjectRef token = open(provider, "OpenKey", {0.0});
        call(token, "VerifyPIN", {host::toWideText("1234")});
        const ObjectRef container = open(token, "OpenContainer", {0.0});
        return {provider,
                token,
                open(token, "OpenFile", {host::toWideText("7")}),
                container,
                open(container, "GetKeyCert"),
                open(token, "certificates")};
    }

    /// Releases the objects one after the other. Each that is left is used after each step.
    /// @param release  releases one object.
    template <class Release>
    void releaseInEveryOrder(Release release) {
        std::array<std::size_t, kObjects> order = {0, 1, 2, 3, 4, 5};
        do {
            std::array<ObjectRef, kObjects> objects = openAll();
            for (std::size_t step = 0; step < kObjects; ++step) {
                release(objects[order[step]]);
                for (std::size_t rest = step + 1; rest < kObjects; ++rest) {
                    EXPECT_NO_THROW(call(objects[order[rest]], kUses[order[rest]]));
                }
            }
            expectEnd();
        } while (std::next_permutation(order.begin(), order.end()) && !HasFailure());
    }
    void expectEnd() {
        EXPECT_EQ((Lines{"C_Logout(1)", "C_CloseSession(1)", "C_Finalize(null)"}),
                  callsOf(module, {"C_Logout", "C_CloseSession", "C_Finalize"}));
    }
};

TEST_F(ObjectLivesTest, ObjectsAreClosedInEveryOrder) {
    releaseInEveryOrder([](const ObjectRef& object) {
        EXPECT_TRUE(std::get<bool>(call(object, "Close")));
        EXPECT_TRUE(object->isClosed());
        EXPECT_TRUE(std::get<bool>(call(object, "Close")));
    });
}

TEST_F(ObjectLivesTest, ObjectsAreDroppedInEveryOrder) {
    releaseInEveryOrder([](ObjectRef& object) { object.reset(); });
}

TEST_F(ObjectLivesTest, MembersOfAClosedObjectFailAndReachNothing) {
    for (const ObjectRef& object : openAll()) {
        const ObjectClass objectClass = object->objectClass();
        call(object, "Close");
        module.takeCalls();
        for (const host::Member& member : host::membersOf(objectClass)) {
            if (!member.usedParameters().empty() || std::string_view(member.name) == "Close") {
                continue;
            }
            try {
                host::callMember(*object, member, {});
                ADD_FAILURE() << member.name;
            } catch (const host::CallError& error) {
                EXPECT_EQ(host::CallError::Kind::kClosed, error.kind()) << member.name;
                EXPECT_EQ(E_UNEXPECTED, error.result().code());
            }
        }
        EXPECT_EQ(Lines(), module.takeCalls());
    }
}

TEST_F(ObjectLivesTest, TokenOfAnUnloadedModuleAndItsExtensionsFail) {
    std::array<ObjectRef, kObjects> objects = openAll();
    call(objects[0], "Unload");
    module.takeCalls();
    EXPECT_THROW(call(objects[1], "GetLabel"), host::CallError);
    EXPECT_THROW(call(objects[1], "VerifyPIN", {host::toWideText("1234")}), host::CallError);
    EXPECT_THROW(call(objects[1], "writeFile", {host::toWideText("7"), host::toBytes("a")}),
                 host::CallError);
    EXPECT_THROW(call(objects[1], "sign", {host::toBytes("a"), objects[4]}), host::CallError);
    EXPECT_EQ(Lines(), module.takeCalls());
}

}  // namespace
}  // namespace zr::test
