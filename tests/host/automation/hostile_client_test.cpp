// A client that makes calls nobody expects. Windows only, as Automation is.
#include <psapi.h>

#include <limits>
#include <random>

#include "tests/host/automation/automation_test.h"
#include "tests/host/automation/script_array.h"

namespace zr::test {
namespace {

class HostileClientTest : public AutomationTokenTest {};

TEST_F(HostileClientTest, ObjectThatIsClosedWhileItsArgumentIsReadRefusesTheCall) {
    ScriptArray array;
    array.set(L"length", integer(1));
    array.set(L"0", integer(7));
    array.set(L"push", Variant());
    array.setCallback([&] { EXPECT_ANSWER("B:true", call(token, "Close")); });
    EXPECT_EXCEPTION(E_UNEXPECTED, call(token, "DigestData", text("MD5"), array.argument()));
}

TEST_F(HostileClientTest, ObjectThatIsReleasedWhileItsArgumentIsReadEndsTheCallFirst) {
    ScriptArray array;
    array.set(L"length", integer(1));
    array.set(L"0", integer(7));
    array.set(L"push", Variant());
    array.setCallback([&] { provider.reset(); });
    // Not through ComRef, which this call empties.
    IDispatch* const object = provider.get();
    Variant argument;
    argument.get() = array.argument();
    const Answer answer =
        invoke(object, findId(object, "toHex"), DISPATCH_METHOD, {&argument.get(), nullptr, 1, 0});
    argument.release();
    EXPECT_ANSWER("S:07", answer);
    EXPECT_FALSE(provider);
}

TEST_F(HostileClientTest, ArgumentThatCallsTheSameObjectIsRead) {
    ScriptArray array;
    array.set(L"length", integer(1));
    array.set(L"0", integer(7));
    array.setCallback([&] { EXPECT_ANSWER("L:S:a ", call(token, "EnumContainer")); });
    EXPECT_ANSWER("S:07", call(provider, "toHex", array.argument()));
}

/// Random calls, the same ones in each run.
class RandomCalls {
public:
    /// @param random  borrowed.
    RandomCalls(const AutomationObjects& objects, std::mt19937& random) : m_random(random) {
        for (const auto& [name, object] : objects) {
            m_objects.push_back(object);
        }
        m_array.set(L"length", integer(2));
        m_array.set(L"0", integer(1));
    }

    void callOnce() {
        std::vector<Variant> owned;
        std::vector<VARIANT> arguments;
        const std::size_t count = below(3) ? below(3) : below(6);
        // References into it stay valid.
        arguments.reserve(count + 1);
        for (std::size_t i = 0; i < count; ++i) {
            owned.push_back(value());
            arguments.push_back(owned.back());
        }
        for (VARIANT& argument : arguments) {
            // References to the others, and to themselves.
            argument = below(8) == 0 ? referenceTo(arguments[below(count)]) : argument;
        }
        arguments.push_back(below(2) ? m_array.argument() : missing());
        std::vector<DISPID> names(below(4) ? 0 : below(3), static_cast<DISPID>(below(7)) - 1);
        names.resize(std::min(names.size(), count));
        check(invoke(m_objects[below(m_objects.size())].get(), member(), flags(),
                     {arguments.data(), names.data(), static_cast<UINT>(count + (below(4) ? 0 : 1)),
                      static_cast<UINT>(names.size())}));
    }

    int successes() const { return m_successes; }

private:
    std::size_t below(std::size_t limit) { return m_random() % limit; }

    DISPID member() {
        const auto number = static_cast<DISPID>(below(42));
        return below(4) ? number : below(2) ? 1000 + number : 3 - number;
    }

    WORD flags() {
        return static_cast<WORD>(below(4) ? DISPATCH_METHOD | DISPATCH_PROPERTYGET : below(16));
    }

    Variant value() {
        constexpr double kNumbers[] = {0, 1, -1, 255, 0.5, 2147483647, -2147483648, 1e10};
        constexpr const char* kTexts[] = {"", "a", "8", "1234", "MD5", "rsa-sha1", "6162", "../x"};
        switch (below(8)) {
            case 0:
                return number(kNumbers[below(std::size(kNumbers))]);
            case 1:
            case 2:
                return text(kTexts[below(std::size(kTexts))]);
            case 3:
                return bytes(std::string(below(300), 'x'));
            case 4:
            case 5:
                return object(m_objects[below(m_objects.size())]);
            case 6:
                return Variant::fromBool(true);
            default:
                return Variant();
        }
    }

    void check(const Answer& answer) {
        if (SUCCEEDED(answer.result)) {
            ++m_successes;
            keep(answer.value.toObject());
            return;
        }
        constexpr HRESULT kFailures[] = {
            DISP_E_EXCEPTION, DISP_E_TYPEMISMATCH,  DISP_E_BADPARAMCOUNT,   DISP_E_MEMBERNOTFOUND,
            DISP_E_OVERFLOW,  DISP_E_PARAMNOTFOUND, DISP_E_PARAMNOTOPTIONAL};
        EXPECT_NE(std::end(kFailures), std::ranges::find(kFailures, answer.result))
            << answer.result;
        EXPECT_EQ(VT_EMPTY, answer.value.type());
        EXPECT_EQ(answer.result == DISP_E_EXCEPTION, FAILED(answer.code));
        EXPECT_EQ(answer.result == DISP_E_EXCEPTION, !answer.description.empty());
    }

    /// In place of an object of the same class.
    void keep(ComRef<IDispatch> made) {
        if (made) {
            m_objects[below(m_objects.size())] = std::move(made);
        }
    }

    std::mt19937& m_random;
    ScriptArray m_array;
    std::vector<ComRef<IDispatch>> m_objects;
    int m_successes = 0;
};

class RandomClientTest : public AutomationObjectsTest {};

TEST_F(RandomClientTest, CallsFailInKnownWays) {
    constexpr int kRounds = 200;
    constexpr int kCalls = 50;
    std::mt19937 random(7);
    int successes = 0;
    for (int round = 0; round < kRounds; ++round) {
        RandomCalls calls(makeObjects(), random);
        for (int i = 0; i < kCalls; ++i) {
            if (i == kCalls / 2) {
                module->fail(nullptr, static_cast<unsigned int>(round) % 7 + 1, CKR_GENERAL_ERROR);
            }
            calls.callOnce();
        }
        successes += calls.successes();
    }
    EXPECT_LT(kRounds * kCalls / 50, successes);
}

std::size_t privateMemory() {
    PROCESS_MEMORY_COUNTERS_EX counters = {};
    GetProcessMemoryInfo(GetCurrentProcess(), reinterpret_cast<PROCESS_MEMORY_COUNTERS*>(&counters),
                         sizeof counters);
    return counters.PrivateUsage;
}

TEST_F(HostileClientTest, ThousandObjectsLeaveNoMemory) {
    const auto cycle = [&] {
        const ComRef<IDispatch> another = makeAutomationProvider();
        const ComRef<IDispatch> opened = call(provider, "OpenKey", integer(0)).value.toObject();
        const ComRef<IDispatch> list = call(opened, "certificates").value.toObject();
        EXPECT_EXCEPTION(E_INVALIDARG, call(list, "Item", integer(9)));
        EXPECT_ANSWER("object", call(list, "Item", integer(0)));
        EXPECT_HR(S_OK, invoke(list.get(), DISPID_NEWENUM, DISPATCH_METHOD, {}).result);
        EXPECT_ANSWER("L:S:a ", call(opened, "EnumContainer"));
        module.takeCalls();
    };
    for (int i = 0; i < 200; ++i) {
        cycle();
    }
    const std::size_t before = privateMemory();
    for (int i = 0; i < 1000; ++i) {
        cycle();
    }
    constexpr std::size_t kAllowed = 256 * 1024;
    EXPECT_LT(privateMemory(), before + kAllowed);
}

}  // namespace
}  // namespace zr::test
