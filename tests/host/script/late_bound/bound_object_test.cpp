// Objects of the library in scripts: members, conversion of arguments and results, errors,
// lifetime.
#include "host/script/late_bound/bound_object.h"

#include "host/script/context.h"
#include "host/script/late_bound/members.h"
#include "host/script/late_bound/values.h"
#include "host/script/script_values.h"
#include "tests/host/script/scripted_object.h"

#include <gtest/gtest.h>

namespace zr::host {
namespace {

/// Evaluates script text with a ScriptedObject as the global "object".
class ScriptObjectTest : public testing::Test {
protected:
    void SetUp() override {
        m_heap = duk_create_heap(nullptr, nullptr, nullptr, &m_context, nullptr);
        addLateBoundObjects(m_heap);
        zrkey::ComRef<IDispatch> object;
        object.reset(new zr::test::ScriptedObject);
        pushLateBound(m_heap, std::move(object));
        duk_put_global_string(m_heap, "object");
    }

    void TearDown() override {
        closeHeap();
        EXPECT_EQ(zr::test::ScriptedObject::living(), 0);
    }

    void closeHeap() {
        duk_destroy_heap(m_heap);
        m_heap = nullptr;
    }

    /// The value of an expression as text, or the error it throws.
    std::string evaluate(const std::string& expression) {
        duk_peval_lstring(m_heap, expression.data(), expression.size());
        std::string text = duk_safe_to_string(m_heap, -1);
        duk_pop(m_heap);
        return text;
    }

    duk_context* m_heap = nullptr;

private:
    Console m_console{Diagnostics::kOnStandardError};
    ScriptContext m_context{m_console};
};

TEST_F(ScriptObjectTest, KnownMemberIsAFunctionWithItsName) {
    EXPECT_EQ(evaluate("typeof object.Echo + object.Echo.name"), "functionEcho");
    EXPECT_EQ(evaluate("object.Echo === object.Echo"), "true");
    EXPECT_EQ(evaluate("'Echo' in object"), "true");
}

TEST_F(ScriptObjectTest, UnknownMemberIsUndefined) {
    EXPECT_EQ(evaluate("object.echo"), "undefined");
    EXPECT_EQ(evaluate("'echo' in object"), "false");
    EXPECT_EQ(evaluate("object['Echo\\u0000']"), "undefined");
    EXPECT_EQ(evaluate("[object[''], object[0], object[Symbol.iterator]].join('-')"), "--");
}

TEST_F(ScriptObjectTest, CallOfAnUnknownMemberNamesIt) {
    const std::string error = evaluate("object.echo()");
    EXPECT_EQ(error.find("TypeError: "), 0U) << error;
    EXPECT_NE(error.find("'echo'"), std::string::npos) << error;
}

TEST_F(ScriptObjectTest, ArgumentsArePassedInNaturalOrderWithTheirTypes) {
    EXPECT_EQ(evaluate("object.Types('text', 1, true, null, undefined, object, new Uint8Array(2))"),
              "8 5 11 1 0 9 8209");
}

TEST_F(ScriptObjectTest, SizeOfAnArgumentIsThatOfItsVariantAndItsBytes) {
    const std::pair<const char*, std::size_t> costs[] = {
        {"1", 0}, {"({})", 0}, {"''", 0}, {"'abc'", 6}, {"new Uint8Array(5)", 5}};
    for (const auto& [expression, bytes] : costs) {
        duk_eval_string(m_heap, expression);
        EXPECT_EQ(sizeof(VARIANT) + bytes, argumentSize(m_heap, -1)) << expression;
        duk_pop(m_heap);
    }
}

TEST_F(ScriptObjectTest, ErasedArgumentIsZeroToItsEnd) {
    duk_eval_string(m_heap, "'1234'");
    zrkey::Variant text = readArgument(m_heap, -1).value();
    eraseArgument(text);
    EXPECT_EQ(text.toText(), std::string(4, '\0'));
    duk_eval_string(m_heap, "new Uint8Array([1, 2, 3])");
    zrkey::Variant bytes = readArgument(m_heap, -1).value();
    eraseArgument(bytes);
    const zrkey::ArrayLock lock(bytes.get().parray);
    EXPECT_EQ(std::string(3, '\0'), std::string(static_cast<const char*>(lock.data()), 3));
    duk_pop_2(m_heap);
}

TEST_F(ScriptObjectTest, ErasingAnArgumentWithoutBytesDoesNothing) {
    zrkey::Variant nullText = zrkey::Variant::fromText(zrkey::Text());
    eraseArgument(nullText);
    zrkey::Variant number = zrkey::Variant::fromReal(5);
    eraseArgument(number);
    EXPECT_EQ(number.toReal(), 5.0);
    zrkey::Variant noBytes = zrkey::Variant::fromArray(VT_UI1, nullptr);
    eraseArgument(noBytes);
}

TEST_F(ScriptObjectTest, CallWithoutArgumentsPassesNone) {
    EXPECT_EQ(evaluate("object.Types()"), "");
}

TEST_F(ScriptObjectTest, SimpleValuesAreReturnedUnchanged) {
    EXPECT_EQ(evaluate("object.Echo(-2.5) === -2.5"), "true");
    EXPECT_EQ(evaluate("object.Echo(true) === true && object.Echo(false) === false"), "true");
    EXPECT_EQ(evaluate("object.Echo(null) === null"), "true");
    EXPECT_EQ(evaluate("object.Echo(undefined) === undefined"), "true");
    EXPECT_EQ(evaluate("object.Echo('') === ''"), "true");
}

TEST_F(ScriptObjectTest, TextKeepsEveryUtf16Unit) {
    EXPECT_EQ(evaluate("var text = 'a\\u0000\\u00e9\\u9375\\ud83d\\udd11\\ud83d';"
                       "object.Echo(text) === text"),
              "true");
    EXPECT_EQ(evaluate("object.Units('a\\ud83d\\udd11\\u0000')"), "61 d83d dd11 0");
}

TEST_F(ScriptObjectTest, BytesAreReturnedAsUint8Array) {
    EXPECT_EQ(evaluate("var bytes = object.Echo(new Uint8Array([0, 1, 255]));"
                       "(bytes instanceof Uint8Array) + ' ' + bytes.length + ' ' + bytes[2]"),
              "true 3 255");
    EXPECT_EQ(evaluate("object.Echo(new Uint8Array([7]))[0]"), "7");
    EXPECT_EQ(evaluate("object.Echo(new Uint8Array(0)).length"), "0");
}

TEST_F(ScriptObjectTest, ListOfTextsIsReturnedAsArray) {
    EXPECT_EQ(evaluate("JSON.stringify(object.Texts())"), "[\"one\",\"\",\"three\"]");
}

TEST_F(ScriptObjectTest, NumbersOfEveryTypeAreReturnedAsNumbers) {
    const std::pair<int, const char*> numbers[] = {{VT_I1, "-5"},
                                                   {VT_UI1, "200"},
                                                   {VT_I2, "-300"},
                                                   {VT_UI2, "65535"},
                                                   {VT_I4, "-70000"},
                                                   {VT_INT, "-70001"},
                                                   {VT_UI4, "4294967295"},
                                                   {VT_UINT, "4294967294"},
                                                   {VT_I8, "-1099511627776"},
                                                   {VT_UI8, "9007199254740991"},
                                                   {VT_R4, "0.5"},
                                                   {VT_R8, "0.1"}};
    for (const auto& [type, number] : numbers) {
        EXPECT_EQ(evaluate("object.Number(" + std::to_string(type) + ", " + number + ")"), number);
    }
}

TEST_F(ScriptObjectTest, ObjectIsReturnedAsObject) {
    EXPECT_EQ(evaluate("object.Child().Echo(7)"), "7");
    EXPECT_EQ(evaluate("object.Echo(object.Child()).Echo(8)"), "8");
    EXPECT_EQ(evaluate("object.NullChild() === null"), "true");
}

TEST_F(ScriptObjectTest, ResultOfAnotherTypeIsAnError) {
    EXPECT_EQ(evaluate("object.Odd()"), "TypeError: Odd returned a result of the unknown type 10");
}

TEST_F(ScriptObjectTest, FailingMemberThrowsWithItsResult) {
    EXPECT_EQ(evaluate("object.Fail()"), "Error: Fail failed: E_FAIL (0x80004005)");
    EXPECT_EQ(evaluate("try { object.Fail() } catch (error) { error.hresult }"), "2147500037");
}

TEST_F(ScriptObjectTest, ArgumentThatCannotBePassedIsAnError) {
    const std::string error = "TypeError: Echo: argument 2 has a type that cannot be passed";
    EXPECT_EQ(evaluate("object.Echo(1, {})"), error);
    EXPECT_EQ(evaluate("object.Echo(1, function () {})"), error);
    EXPECT_EQ(evaluate("object.Echo(1, Symbol('s'))"), error);
}

TEST_F(ScriptObjectTest, MemberCalledOnAnotherValueIsAnError) {
    const std::string error = "TypeError: Echo was not called on a token object";
    EXPECT_EQ(evaluate("object.Echo.call({}, 1)"), error);
    EXPECT_EQ(evaluate("object.Echo.call(undefined, 1)"), error);
    EXPECT_EQ(evaluate("object.Echo.call(5, 1)"), error);
    EXPECT_EQ(evaluate("object.Echo.call(object.Child(), 1)"), "1");
}

TEST_F(ScriptObjectTest, ProviderWithoutNewIsAnError) {
    EXPECT_EQ(evaluate("TokenProvider()"), "TypeError: TokenProvider must be called with new");
}

TEST_F(ScriptObjectTest, ReferenceIsReleasedAfterTheLastUse) {
    evaluate("var child = object.Child(); var other = child;");
    EXPECT_EQ(zr::test::ScriptedObject::living(), 2);
    evaluate("child = null;");
    EXPECT_EQ(zr::test::ScriptedObject::living(), 2);
    evaluate("other = null; 0");
    EXPECT_EQ(zr::test::ScriptedObject::living(), 1);
}

TEST_F(ScriptObjectTest, ReferenceInACycleIsReleasedByACollection) {
    evaluate("var holder = { child: object.Child() }; holder.self = holder; holder = null; 0");
    EXPECT_EQ(zr::test::ScriptedObject::living(), 2);
    evaluate("Duktape.gc(); Duktape.gc(); 0");
    EXPECT_EQ(zr::test::ScriptedObject::living(), 1);
}

TEST_F(ScriptObjectTest, ReferencesAreReleasedWithTheEngine) {
    evaluate("var held = [object.Child(), object.Child()]");
    EXPECT_EQ(zr::test::ScriptedObject::living(), 3);
    closeHeap();
    EXPECT_EQ(zr::test::ScriptedObject::living(), 0);
}

TEST_F(ScriptObjectTest, ObjectWhoseFinalizerWasCalledIsDead) {
    evaluate("var child = object.Child(); Duktape.fin(child)(child);");
    EXPECT_EQ(zr::test::ScriptedObject::living(), 1);
    EXPECT_EQ(evaluate("object.Echo.call(child, 1)"),
              "TypeError: Echo was not called on a token object");
    EXPECT_EQ(evaluate("child.Echo"), "undefined");
}

TEST_F(ScriptObjectTest, FailedConversionKeepsNoReference) {
    evaluate("try { object.Echo(object.Child(), 'text', {}) } catch (error) { } 0");
    EXPECT_EQ(zr::test::ScriptedObject::living(), 1);
}

}  // namespace
}  // namespace zr::host
