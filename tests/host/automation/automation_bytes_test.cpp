// Bytes as Automation clients pass them. Windows only, as Automation is.
#include <cmath>
#include <limits>

#include "tests/host/automation/automation_test.h"
#include "tests/host/automation/script_array.h"

namespace zr::test {
namespace {

/// toHex(bytes) shows what arrived.
class AutomationBytesTest : public AutomationTest {
protected:
    template <class Argument>
    Answer toHex(const Argument& argument) {
        return call(provider, "toHex", argument);
    }
    template <class Argument>
    void expectMismatch(const Argument& argument) {
        const Answer answer = toHex(argument);
        EXPECT_HR(DISP_E_TYPEMISMATCH, answer.result);
        EXPECT_EQ(0u, answer.position);
    }
};

/// A one-dimensional array with these elements, which are raw values of the type.
template <class T>
Variant arrayOf(VARTYPE type, const std::vector<T>& elements, LONG lowerBound = 0) {
    SAFEARRAY* const array =
        SafeArrayCreateVector(type, lowerBound, static_cast<ULONG>(elements.size()));
    std::copy(elements.begin(), elements.end(), static_cast<T*>(array->pvData));
    return Variant::fromArray(type, array);
}

Variant arrayOfVariants(std::vector<Variant> elements) {
    SAFEARRAY* const array =
        SafeArrayCreateVector(VT_VARIANT, 0, static_cast<ULONG>(elements.size()));
    for (std::size_t i = 0; i < elements.size(); ++i) {
        static_cast<VARIANT*>(array->pvData)[i] = elements[i].release();
    }
    return Variant::fromArray(VT_VARIANT, array);
}

Variant oneVariant(Variant element) {
    std::vector<Variant> elements;
    elements.push_back(std::move(element));
    return arrayOfVariants(std::move(elements));
}

Variant twoVariants(Variant first, Variant second) {
    std::vector<Variant> elements;
    elements.push_back(std::move(first));
    elements.push_back(std::move(second));
    return arrayOfVariants(std::move(elements));
}

void fill(ScriptArray& array, const std::vector<double>& elements) {
    array.set(L"push", Variant());  // a function; nothing calls it
    array.set(L"length", integer(static_cast<LONG>(elements.size())));
    for (std::size_t i = 0; i < elements.size(); ++i) {
        array.set(std::to_wstring(i), Variant::fromReal(elements[i]));
    }
}

TEST_F(AutomationBytesTest, ArrayOfBytesIsReadWhateverItsLowerBound) {
    EXPECT_ANSWER("S:00ff7f", toHex(bytes(std::string("\0\xff\x7f", 3))));
    EXPECT_ANSWER("S:0102", toHex(arrayOf<char>(VT_UI1, {1, 2}, 5)));
    EXPECT_ANSWER("S:ff", toHex(arrayOf<char>(VT_I1, {-1}, -3)));
    EXPECT_ANSWER("S:", toHex(bytes("")));
}

TEST_F(AutomationBytesTest, ArrayThatHasNoElementsYetIsEmpty) {
    EXPECT_ANSWER("S:", toHex(Variant::fromArray(VT_UI1, nullptr)));
    EXPECT_ANSWER("S:", toHex(Variant::fromArray(VT_VARIANT, nullptr)));
}

TEST_F(AutomationBytesTest, ArrayOfNumbersIsRead) {
    EXPECT_ANSWER("S:00ff", toHex(arrayOf<short>(VT_I2, {0, 255})));
    EXPECT_ANSWER("S:0102", toHex(arrayOf<LONG>(VT_I4, {1, 2})));
    EXPECT_ANSWER("S:03", toHex(arrayOf<double>(VT_R8, {3})));
}

TEST_F(AutomationBytesTest, ArrayOfVariantsIsRead) {
    EXPECT_ANSWER("S:01ff", toHex(twoVariants(integer(1), Variant::fromReal(255))));
    EXPECT_ANSWER("S:", toHex(arrayOfVariants({})));
}

TEST_F(AutomationBytesTest, ArrayOfRecordsIsNotAnArrayOfVariants) {
    // As large as a variant; these bytes would read as the number 7.
    VARIANT record = integer(7).release();
    SAFEARRAY array = {};
    array.cDims = 1;
    array.fFeatures = FADF_RECORD;
    array.cbElements = sizeof(VARIANT);
    array.pvData = &record;
    array.rgsabound[0] = {1, 0};
    VARIANT argument = {};
    argument.vt = VT_ARRAY | VT_VARIANT;
    argument.parray = &array;
    expectMismatch(argument);
}

TEST_F(AutomationBytesTest, ArrayOfReferencesIsRead) {
    VARIANT seven = integer(7).release();
    Variant reference;
    reference.get() = referenceTo(seven);
    EXPECT_ANSWER("S:07", toHex(oneVariant(std::move(reference))));
}

TEST_F(AutomationBytesTest, ReferenceToAnArrayIsRead) {
    Variant array = bytes("a");
    EXPECT_ANSWER("S:61", toHex(referenceTo(VT_ARRAY | VT_UI1, &array.get().parray)));
    VARIANT once = referenceTo(array.get());
    EXPECT_ANSWER("S:61", toHex(once));
    EXPECT_ANSWER("S:61", toHex(referenceTo(once)));
}

TEST_F(AutomationBytesTest, LockedArrayIsReadAndStaysLockedAsItWas) {
    Variant array = bytes("a");
    SafeArrayLock(array.get().parray);
    EXPECT_ANSWER("S:61", toHex(array));
    EXPECT_EQ(1u, array.get().parray->cLocks);
    SafeArrayUnlock(array.get().parray);
}

TEST_F(AutomationBytesTest, ArrayWithTheLargestNumberOfLocksIsRefused) {
    Variant array = bytes("a");
    const USHORT most = std::numeric_limits<USHORT>::max();
    array.get().parray->cLocks = most;
    expectMismatch(array);
    EXPECT_EQ(most, array.get().parray->cLocks);
    array.get().parray->cLocks = 0;
}

TEST_F(AutomationBytesTest, LargeArrayIsRead) {
    const std::string large(2'000'000, 'a');
    EXPECT_EQ(2 + 2 * large.size(), shown(toHex(bytes(large)).value).size());
}

TEST_F(AutomationBytesTest, ArrayWithOtherElementsIsRefused) {
    expectMismatch(arrayOf<short>(VT_I2, {256}));
    expectMismatch(arrayOf<short>(VT_I2, {-1}));
    expectMismatch(arrayOf<double>(VT_R8, {1.5}));
    expectMismatch(arrayOf<double>(VT_R8, {std::nan("")}));
    expectMismatch(arrayOf<BSTR>(VT_BSTR, {nullptr}));
    expectMismatch(arrayOf<VARIANT_BOOL>(VT_BOOL, {VARIANT_TRUE}));
    expectMismatch(oneVariant(text("1")));
    expectMismatch(oneVariant(Variant()));
    expectMismatch(oneVariant(bytes("a")));
    expectMismatch(oneVariant(object(provider)));
}

TEST_F(AutomationBytesTest, ArrayOfTwoDimensionsIsRefused) {
    SAFEARRAYBOUND bounds[] = {{2, 0}, {2, 0}};
    expectMismatch(Variant::fromArray(VT_UI1, SafeArrayCreate(VT_UI1, 2, bounds)));
}

TEST_F(AutomationBytesTest, ArrayWhoseElementsHaveAnotherSizeIsRefused) {
    Variant array = arrayOf<LONG>(VT_I4, {1, 2});
    array.get().vt = VT_ARRAY | VT_UI1;
    expectMismatch(array);
    array.get().vt = VT_ARRAY | VT_R8;
    expectMismatch(array);
    array.get().vt = VT_ARRAY | VT_I4;
}

TEST_F(AutomationBytesTest, OtherValuesAreRefused) {
    expectMismatch(text("616263"));
    expectMismatch(integer(1));
    expectMismatch(Variant::fromBool(true));
    expectMismatch(Variant::fromObject({}));
    expectMismatch(object(provider));
    VARIANT other = {};
    other.vt = VT_NULL;
    expectMismatch(other);
    other.vt = VT_ERROR;
    other.scode = E_FAIL;
    expectMismatch(other);
}

TEST_F(AutomationBytesTest, ReferencesThatLeadNowhereAreRefused) {
    VARIANT circle = {};
    circle = referenceTo(circle);
    expectMismatch(circle);
    expectMismatch(referenceTo(VT_VARIANT, nullptr));
    expectMismatch(referenceTo(VT_ARRAY | VT_UI1, nullptr));
    BSTR text = nullptr;
    expectMismatch(referenceTo(VT_EMPTY, &text));
    VARIANT illegal = {};
    illegal.vt = static_cast<VARTYPE>(VT_ILLEGAL);
    illegal.byref = &text;
    expectMismatch(illegal);
}

TEST_F(AutomationBytesTest, ArrayOfAScriptIsReadAndReleased) {
    ScriptArray array;
    fill(array, {0, 1, 255});
    EXPECT_ANSWER("S:0001ff", toHex(array.argument()));
    EXPECT_ANSWER("S:0001ff", toHex(array.argument(VT_UNKNOWN)));
    EXPECT_EQ(1u, array.references());
    ScriptArray empty;
    fill(empty, {});
    EXPECT_ANSWER("S:", toHex(empty.argument()));
}

TEST_F(AutomationBytesTest, ArrayOfAScriptWithOtherElementsIsRefused) {
    for (const double element : {-1.0, 256.0, 0.5, std::nan("")}) {
        ScriptArray array;
        fill(array, {0, element});
        expectMismatch(array.argument());
        EXPECT_EQ(1u, array.references());
    }
}

TEST_F(AutomationBytesTest, ArrayOfAScriptWithoutAnElementIsRefused) {
    ScriptArray array;
    array.set(L"length", integer(2));
    array.set(L"1", integer(1));
    expectMismatch(array.argument());
    array.setThrowing(L"0");
    expectMismatch(array.argument());
}

TEST_F(AutomationBytesTest, ObjectWithAnotherLengthIsRefused) {
    ScriptArray without;
    expectMismatch(without.argument());
    ScriptArray throwing;
    throwing.setThrowing(L"length");
    expectMismatch(throwing.argument());
    for (const double length : {-1.0, 0.5, std::nan("")}) {
        ScriptArray array;
        array.set(L"length", Variant::fromReal(length));
        expectMismatch(array.argument());
    }
    ScriptArray named;
    named.set(L"length", text("1"));
    expectMismatch(named.argument());
}

TEST_F(AutomationBytesTest, FunctionWithoutParametersIsRefused) {
    ScriptArray function;
    function.set(L"length", integer(0));
    function.set(L"call", Variant());
    expectMismatch(function.argument());
}

TEST_F(AutomationBytesTest, ObjectWithAHugeLengthOverflowsWithoutALoop) {
    for (const double length : {1e9, 1e300, std::numeric_limits<double>::infinity()}) {
        ScriptArray array;
        array.set(L"length", Variant::fromReal(length));
        EXPECT_REFUSED(DISP_E_OVERFLOW, toHex(array.argument()));
        EXPECT_EQ(1u, array.invocations());
    }
}

}  // namespace
}  // namespace zr::test
