// Every member with bad input, called as Automation clients call it: directly and by reference. The
// expected answers are those that scripts of the command are compared with. Windows only, as
// Automation is.
#include <functional>
#include <limits>

#include "tests/host/automation/automation_test.h"
#include "tests/host/automation/clients/expected_calls.h"
#include "tests/host/automation/script_array.h"

namespace zr::test {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
const std::string kLongText(1048576, 'x');

/// How the arguments of a call are passed.
enum class Form { kDirect, kReference, kReferenceTwice, kTypedReference };
constexpr Form kForms[] = {Form::kDirect, Form::kReference, Form::kReferenceTwice,
                           Form::kTypedReference};

Variant wide(const std::wstring& units) {
    Variant value = Variant::fromText(zrkey::Text());
    value.get().bstrVal = SysAllocStringLen(units.data(), static_cast<UINT>(units.size()));
    return value;
}

Variant null() {
    Variant value;
    value.get().vt = VT_NULL;
    return value;
}

Variant listOfTexts() {
    SAFEARRAY* array = SafeArrayCreateVector(VT_BSTR, 0, 1);
    LONG first = 0;
    SafeArrayPutElement(array, &first, Text("1234").get());
    return Variant::fromArray(VT_BSTR, array);
}

Variant scriptObject(ScriptArray& array) {
    array.AddRef();
    Variant value;
    value.get() = array.argument();
    return value;
}

class BadArgumentsTest : public LoadedAutomationTest {
protected:
    BadArgumentsTest() {
        // Found by the texts and numbers that stand for good ones.
        module.addCertificate("1234", "A");
        module.addKey(CKO_PRIVATE_KEY, "1234");
        module.addKey(CKO_PUBLIC_KEY, "1234");
        module.addData("1233", "content");
        provider.reset();
        for (const LONG number : {1, 2, 3}) {
            m_numbers.set(std::to_wstring(number - 1), integer(number));
        }
        m_numbers.set(L"length", integer(3));
    }

    /// An object of a class, the same one until forget.
    ComRef<IDispatch> get(const std::string& className) {
        ComRef<IDispatch>& found = m_objects[className];
        if (!found) {
            found = make(className);
            EXPECT_TRUE(found) << "no " << className;
        }
        return found;
    }
    void forget() { m_objects.clear(); }

    Answer callWith(const ComRef<IDispatch>& object, const std::string& member, const Words& names,
                    Form form);
    void check(const ExpectedCall& call, const Words& names, Form form = Form::kDirect);
    void checkCounts(const ExpectedCall& call);
    void checkValues(const ExpectedCall& call, const Words& good);
    void checkClosed(const ExpectedCall& call);

    ExpectedAnswers expected;
    std::size_t calls = 0;

private:
    ComRef<IDispatch> make(const std::string& className);
    ComRef<IDispatch> closedCertificate();
    Variant valueNamed(const std::string& name);

    std::map<std::string, ComRef<IDispatch>> m_objects;
    ScriptArray m_numbers;
    ScriptArray m_foreign;
};

ComRef<IDispatch> BadArgumentsTest::make(const std::string& className) {
    if (className == "TokenProvider") {
        ComRef<IDispatch> made = makeAutomationProvider();
        call(made, "Load", text(module.path()));
        return made;
    }
    if (className == "Token") {
        ComRef<IDispatch> made = call(get("TokenProvider"), "OpenKey", integer(0)).value.toObject();
        call(made, "VerifyPIN", text("1234"));
        return made;
    }
    const ComRef<IDispatch> token = get("Token");
    if (className == "File") {
        return call(token, "OpenFile", text("1234")).value.toObject();
    }
    if (className == "Container") {
        return call(token, "OpenContainer", integer(0)).value.toObject();
    }
    const Answer list = call(token, "certificates");
    EXPECT_ANSWER("object", list);
    const ComRef<IDispatch> all = list.value.toObject();
    return className == "Collection" ? all : call(all, "Item", integer(0)).value.toObject();
}

ComRef<IDispatch> BadArgumentsTest::closedCertificate() {
    const ComRef<IDispatch> list = call(get("Token"), "certificates").value.toObject();
    ComRef<IDispatch> certificate = call(list, "Item", integer(0)).value.toObject();
    call(certificate, "Close");
    return certificate;
}

Variant BadArgumentsTest::valueNamed(const std::string& name) {
    using Maker = std::function<Variant()>;
    const std::map<std::string, Maker> makers = {
        {"nothing", [] { return Variant(); }},
        {"null", null},
        {"true", [] { return Variant::fromBool(true); }},
        {"zero", [] { return integer(0); }},
        {"minusOne", [] { return integer(-1); }},
        {"largest", [] { return Variant::fromReal(2147483647.0); }},
        {"smallest", [] { return Variant::fromReal(-2147483648.0); }},
        {"tooLarge", [] { return Variant::fromReal(2147483648.0); }},
        {"tooSmall", [] { return Variant::fromReal(-2147483649.0); }},
        {"huge", [] { return Variant::fromReal(1e300); }},
        {"infinity", [] { return Variant::fromReal(kInfinity); }},
        {"fraction", [] { return Variant::fromReal(1.5); }},
        {"nan", [] { return Variant::fromReal(kNan); }},
        {"digits", [] { return text("1234"); }},
        {"emptyText", [] { return text(""); }},
        {"nulText", [] { return wide(std::wstring(L"1\0002", 3)); }},
        {"halfPair", [] { return wide(std::wstring(1, L'\xD800')); }},
        {"letters", [] { return text("no such thing"); }},
        {"longText", [] { return text(kLongText); }},
        {"bytes", [] { return bytes("\1\2\3"); }},
        {"emptyBytes", [] { return bytes(""); }},
        {"hugeBytes", [] { return bytes(kLongText + "x"); }},
        {"texts", listOfTexts},
        {"numbers", [&] { return scriptObject(m_numbers); }},
        {"token", [this] { return object(get("Token")); }},
        {"certificate", [this] { return object(get("Certificate")); }},
        {"closedCertificate", [this] { return object(closedCertificate()); }},
        {"provider", [this] { return object(get("TokenProvider")); }},
        {"foreign", [&] { return scriptObject(m_foreign); }},
        {"function", [&] { return scriptObject(m_foreign); }},
        {"module", [this] { return text(module.path()); }},
        {"pin", [] { return text("1234"); }},
        {"soPin", [] { return text("12345678"); }}};
    return name.starts_with("text:") ? text(name.substr(5)) : makers.at(name)();
}

/// @param inner  where a reference of the second level is kept.
VARIANT inForm(VARIANT& value, VARIANT& inner, Form form) {
    switch (form) {
        case Form::kDirect:
            return value;
        case Form::kReference:
            return referenceTo(value);
        case Form::kReferenceTwice:
            inner = referenceTo(value);
            return referenceTo(inner);
        default:
            // There is no reference to nothing.
            return value.vt == VT_EMPTY  ? missing()
                   : value.vt == VT_NULL ? value
                                         : referenceTo(value.vt, &value.byref);
    }
}

Answer BadArgumentsTest::callWith(const ComRef<IDispatch>& object, const std::string& member,
                                  const Words& names, Form form) {
    ++calls;
    if (!object) {
        return {};
    }
    std::vector<Variant> values;
    for (const std::string& name : names) {
        values.push_back(valueNamed(name));
    }
    std::vector<VARIANT> inner(values.size());
    std::vector<VARIANT> reversed;
    for (std::size_t i = values.size(); i-- > 0;) {
        reversed.push_back(inForm(values[i].get(), inner[i], form));
    }
    return invokeNamed(object.get(), member, std::move(reversed), {});
}

void BadArgumentsTest::check(const ExpectedCall& call, const Words& names, Form form) {
    const WantedAnswer wanted = call.answerTo(names, form != Form::kTypedReference);
    const Answer answer = callWith(get(call.className()), call.name(), names, form);
    EXPECT_TRUE(call.isWanted(wanted, names, answer))
        << call.className() << "." << call.name() << "(" << joined(names) << ") in form "
        << static_cast<int>(form) << ": wanted " << wanted.kind << " " << wanted.argument
        << ", got " << std::hex << answer.result << " " << answer.code << " " << answer.description
        << " at " << std::dec << answer.position;
    if (wanted.kind == "ok" && call.changesObjects()) {
        forget();
    }
}

void BadArgumentsTest::checkCounts(const ExpectedCall& call) {
    Words all = call.goodNames(true);
    all.resize(all.size() + 3, "zero");
    for (std::size_t count = 0; count <= all.size(); ++count) {
        const Words names = count <= call.used() ? call.goodNames(false) : all;
        check(call, {names.begin(), names.begin() + static_cast<std::ptrdiff_t>(count)});
    }
    all.resize(1000, "zero");
    check(call, all);
}

void BadArgumentsTest::checkValues(const ExpectedCall& call, const Words& good) {
    for (std::size_t position = 0; position < good.size(); ++position) {
        for (const std::string& value : expected.values()) {
            Words names = good;
            names[position] = value;
            for (const Form form : kForms) {
                check(call, names, form);
            }
        }
    }
}

void BadArgumentsTest::checkClosed(const ExpectedCall& call) {
    forget();
    const ComRef<IDispatch> object = get(call.className());
    const Words names = call.goodNames(false);
    if (call.className() == "Token") {
        get("Certificate");  // an argument that lives on
    }
    test::call(object, "Close");
    const Answer answer = callWith(object, call.name(), names, Form::kDirect);
    if (call.isForClosed()) {
        EXPECT_TRUE(call.isWanted({"ok"}, names, answer)) << call.className() << call.name();
    } else {
        EXPECT_EXCEPTION(E_UNEXPECTED, answer) << call.className() << "." << call.name();
    }
    forget();
}

TEST_F(BadArgumentsTest, EveryMemberAnswersAsExpected) {
    for (const auto& [name, member] : expected.members()) {
        const ExpectedCall call(expected, name);
        checkCounts(call);
        checkValues(call, call.goodNames(false));
        if (!member.unused.empty()) {
            checkValues(call, call.goodNames(true));
        }
        checkClosed(call);
        forget();
    }
    EXPECT_LT(5000u, calls);
}

}  // namespace
}  // namespace zr::test
