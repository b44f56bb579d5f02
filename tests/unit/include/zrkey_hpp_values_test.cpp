// The C++ layer for hosts: values of every type in Variant, ByteArray and ArrayLock. Compiled as
// C++17.
#include <zrkey/zrkey.hpp>

#include <gtest/gtest.h>

#include <cstring>

#include "tests/unit/include/counting_object.h"

namespace {

using zr::test::CountingObject;
using zrkey::ArrayLock;
using zrkey::ByteArray;
using zrkey::ComRef;
using zrkey::Text;
using zrkey::Variant;

SAFEARRAY* makeArray(VARTYPE type, ULONG size) {
    SAFEARRAYBOUND bound = {size, 0};
    return SafeArrayCreate(type, 1, &bound);
}

TEST(VariantTest, FromFunctionsSetTypeAndValue) {
    EXPECT_EQ(VT_EMPTY, Variant().type());
    const Variant number = Variant::fromNumber(-5);
    EXPECT_EQ(VT_I4, number.type());
    EXPECT_EQ(-5, number.get().lVal);
    const Variant real = Variant::fromReal(0.5);
    EXPECT_EQ(VT_R8, real.type());
    EXPECT_EQ(0.5, real.get().dblVal);
    const Variant yes = Variant::fromBool(true);
    EXPECT_EQ(VT_BOOL, yes.type());
    EXPECT_EQ(VARIANT_TRUE, yes.get().boolVal);
    EXPECT_EQ(VARIANT_FALSE, Variant::fromBool(false).get().boolVal);
}

TEST(VariantTest, TextIsTakenOver) {
    Text text("container");
    const BSTR content = text.get();
    const Variant value = Variant::fromText(std::move(text));
    EXPECT_FALSE(text);
    EXPECT_EQ(VT_BSTR, value.type());
    EXPECT_EQ(content, value.get().bstrVal);
    EXPECT_EQ("container", value.toText());
    EXPECT_EQ("", Variant::fromText(Text()).toText());
}

TEST(VariantTest, FromObjectTakesTheReferenceAndToObjectAddsOne) {
    CountingObject object;
    ComRef<IDispatch> ref;
    ref.reset(&object);
    {
        const Variant value = Variant::fromObject(std::move(ref));
        EXPECT_EQ(VT_DISPATCH, value.type());
        EXPECT_EQ(1U, object.references);
        const ComRef<IDispatch> read = value.toObject();
        EXPECT_EQ(&object, read.get());
        EXPECT_EQ(2U, object.references);
    }
    EXPECT_EQ(0U, object.references);
    EXPECT_FALSE(Variant::fromObject({}).toObject());
    EXPECT_FALSE(Variant::fromNumber(1).toObject());
}

TEST(VariantTest, IntegersOfEveryTypeAreRead) {
    const auto read = [](VARTYPE type, long long bits) {
        Variant value;
        value.get().vt = type;
        value.get().llVal = bits;
        return value.toNumber();
    };
    for (const VARTYPE type : {VT_I1, VT_I2, VT_I4, VT_INT, VT_I8}) {
        EXPECT_EQ(-2, read(type, -2)) << type;
    }
    EXPECT_EQ(0xFE, read(VT_UI1, -2));
    EXPECT_EQ(0xFFFE, read(VT_UI2, -2));
    EXPECT_EQ(0xFFFFFFFE, read(VT_UI4, -2));
    EXPECT_EQ(0xFFFFFFFE, read(VT_UINT, -2));
    EXPECT_EQ(7, read(VT_UI8, 7));
    EXPECT_EQ(std::nullopt, read(VT_UI8, -1));
    for (const VARTYPE type : {VT_EMPTY, VT_NULL, VT_R8, VT_BOOL, VT_ERROR}) {
        EXPECT_EQ(std::nullopt, read(type, 0)) << type;
    }
}

TEST(VariantTest, ReadersReturnNulloptForAnotherType) {
    const Variant empty;
    EXPECT_EQ(std::nullopt, empty.toBool());
    EXPECT_EQ(std::nullopt, empty.toReal());
    EXPECT_EQ(std::nullopt, empty.toText());
    EXPECT_EQ(std::nullopt, empty.toTexts());
    EXPECT_EQ(true, Variant::fromBool(true).toBool());
    EXPECT_EQ(false, Variant::fromBool(false).toBool());
    EXPECT_EQ(0.5, Variant::fromReal(0.5).toReal());
    Variant single;
    single.get().vt = VT_R4;
    single.get().fltVal = 0.25F;
    EXPECT_EQ(0.25, single.toReal());
    EXPECT_EQ(std::nullopt, Variant::fromArray(VT_UI1, makeArray(VT_UI1, 1)).toTexts());
}

TEST(VariantTest, ArrayOfTextsIsReadInItsOrder) {
    SAFEARRAY* const array = makeArray(VT_BSTR, 3);
    const Variant value = Variant::fromArray(VT_BSTR, array);
    EXPECT_EQ(VT_ARRAY | VT_BSTR, value.type());
    {
        const ArrayLock lock(array);
        const auto elements = static_cast<BSTR*>(lock.data());
        elements[0] = Text("first").release();
        elements[2] = Text("\xC3\xA9").release();
    }
    EXPECT_EQ((std::vector<std::string>{"first", "", "\xC3\xA9"}), value.toTexts());
    EXPECT_EQ(0U, array->cLocks);
    EXPECT_EQ(std::nullopt, Variant::fromArray(VT_BSTR, nullptr).toTexts());
}

TEST(VariantTest, OwnershipPassesByResetReleaseReceiveAndMove) {
    CountingObject object;
    ComRef<IDispatch> ref;
    ref.reset(&object);
    Variant value = Variant::fromObject(std::move(ref));
    Variant moved(std::move(value));
    EXPECT_EQ(VT_EMPTY, value.type());
    value = std::move(moved);
    const VARIANT given = value.release();
    EXPECT_EQ(VT_EMPTY, value.type());
    EXPECT_EQ(1U, object.references);
    Variant other = Variant::fromNumber(1);
    other.reset(given);
    EXPECT_EQ(VT_DISPATCH, other.type());
    EXPECT_EQ(VT_EMPTY, other.receive()->vt);
    EXPECT_EQ(0U, object.references);
    other.receive()->vt = VT_NULL;
    EXPECT_EQ(VT_NULL, other.type());
    other.reset();
    EXPECT_EQ(VT_EMPTY, other.type());
}

TEST(ArrayLockTest, LocksOneDimensionUntilDestruction) {
    SAFEARRAY* const array = makeArray(VT_UI1, 4);
    {
        const ArrayLock lock(array);
        EXPECT_TRUE(lock);
        EXPECT_EQ(4U, lock.size());
        EXPECT_NE(nullptr, lock.data());
        EXPECT_EQ(DISP_E_ARRAYISLOCKED, SafeArrayDestroy(array));
    }
    EXPECT_EQ(S_OK, SafeArrayDestroy(array));
}

TEST(ArrayLockTest, LocksNoOtherArray) {
    SAFEARRAYBOUND bounds[] = {{2, 0}, {2, 0}};
    SAFEARRAY* const matrix = SafeArrayCreate(VT_UI1, 2, bounds);
    for (SAFEARRAY* const array : {static_cast<SAFEARRAY*>(nullptr), matrix}) {
        const ArrayLock lock(array);
        EXPECT_FALSE(lock);
        EXPECT_EQ(0U, lock.size());
        EXPECT_EQ(nullptr, lock.data());
    }
    EXPECT_EQ(0U, matrix->cLocks);
    EXPECT_EQ(S_OK, SafeArrayDestroy(matrix));
}

TEST(ByteArrayTest, BytesAreCopiedInAndOut) {
    const std::string bytes("a\0\xFF", 3);
    const ByteArray array(bytes);
    EXPECT_EQ(VT_ARRAY | VT_UI1, array.get().vt);
    VARTYPE element = VT_EMPTY;
    EXPECT_EQ(S_OK, SafeArrayGetVartype(array.get().parray, &element));
    EXPECT_EQ(VT_UI1, element);
    EXPECT_EQ(bytes, array.bytes());
    EXPECT_EQ("", ByteArray("").bytes());
}

TEST(ByteArrayTest, BytesOfSignedAndUnsignedElementsAreRead) {
    for (const VARTYPE element : {VT_I1, VT_UI1}) {
        for (const VARTYPE type : {VT_I1, VT_UI1}) {
            SAFEARRAY* const made = makeArray(element, 2);
            {
                const ArrayLock lock(made);
                std::memcpy(lock.data(),
                            "\xFE"
                            "b",
                            2);
            }
            ByteArray array;
            array.reset(Variant::fromArray(type, made).release());
            EXPECT_EQ(
                "\xFE"
                "b",
                array.bytes())
                << element << ' ' << type;
        }
    }
}

TEST(ByteArrayTest, BytesOfAValueWithoutAByteArrayReturnNullopt) {
    EXPECT_EQ(std::nullopt, ByteArray().bytes());
    ByteArray array;
    array.reset(Variant::fromArray(VT_UI1, nullptr).release());
    EXPECT_EQ(std::nullopt, array.bytes());
    // The type of the variant lies about the array behind it.
    array.reset(Variant::fromArray(VT_UI1, makeArray(VT_I4, 1)).release());
    EXPECT_EQ(std::nullopt, array.bytes());
    array.reset(Variant::fromArray(VT_I4, makeArray(VT_I4, 1)).release());
    EXPECT_EQ(std::nullopt, array.bytes());
}

TEST(ByteArrayTest, OwnershipPassesByReleaseReceiveAndMove) {
    ByteArray array("abc");
    ByteArray moved(std::move(array));
    EXPECT_EQ("abc", moved.bytes());
    *array.receive() = moved.release();
    EXPECT_EQ(std::nullopt, moved.bytes());
    EXPECT_EQ("abc", array.bytes());
    EXPECT_EQ(VT_EMPTY, array.receive()->vt);
    array = ByteArray("d");
    array.reset();
    EXPECT_EQ(VT_EMPTY, array.get().vt);
}

}  // namespace
