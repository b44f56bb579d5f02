// The C++ layer for hosts: what each class owns, lends, takes over and gives up. Compiled as C++17.
#include <zrkey/zrkey.hpp>

#include <gtest/gtest.h>

#include <cstring>
#include <type_traits>

namespace {

using zrkey::ArrayLock;
using zrkey::ByteArray;
using zrkey::ComRef;
using zrkey::Result;
using zrkey::Text;
using zrkey::Variant;

/// An object that counts its references and is not freed by the last.
class CountingObject : public IDispatch {
public:
    virtual ~CountingObject() = default;
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void** object) override {
        *object = this;
        AddRef();
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++references; }
    ULONG STDMETHODCALLTYPE Release() override { return --references; }
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*,
                                     UINT*) override {
        return E_NOTIMPL;
    }

    ULONG references = 1;
};

/// Hands out a reference through a typed out argument.
HRESULT handOut(CountingObject& object, IDispatch** out) {
    object.AddRef();
    *out = &object;
    return S_OK;
}

SAFEARRAY* makeArray(VARTYPE type, ULONG size) {
    SAFEARRAYBOUND bound = {size, 0};
    return SafeArrayCreate(type, 1, &bound);
}

template <class Owner>
constexpr bool kMovesOnly =
    std::is_nothrow_move_constructible<Owner>::value&&
        std::is_nothrow_move_assignable<Owner>::value &&
    !std::is_copy_constructible<Owner>::value && !std::is_copy_assignable<Owner>::value;
static_assert(kMovesOnly<Text> && kMovesOnly<Variant> && kMovesOnly<ByteArray>,
              "owners of values are not copied by accident");

TEST(ComRefTest, ResetTakesOverTheReferenceAndReleasesTheOld) {
    CountingObject first;
    CountingObject second;
    ComRef<IDispatch> ref;
    EXPECT_FALSE(ref);
    EXPECT_EQ(nullptr, ref.get());
    ref.reset(&first);
    EXPECT_EQ(1U, first.references);
    EXPECT_TRUE(ref);
    EXPECT_EQ(&first, ref.get());
    ref.reset(&second);
    EXPECT_EQ(0U, first.references);
    ref.reset();
    EXPECT_EQ(0U, second.references);
    EXPECT_FALSE(ref);
}

TEST(ComRefTest, DestructionReleasesTheReference) {
    CountingObject object;
    {
        ComRef<IDispatch> ref;
        ref.reset(&object);
    }
    EXPECT_EQ(0U, object.references);
}

TEST(ComRefTest, CopyAddsAReferenceAndMoveDoesNot) {
    CountingObject object;
    ComRef<IDispatch> ref;
    ref.reset(&object);
    ComRef<IDispatch> copy(ref);
    EXPECT_EQ(2U, object.references);
    const ComRef<IDispatch> moved(std::move(copy));
    EXPECT_EQ(2U, object.references);
    EXPECT_EQ(&object, moved.get());
    CountingObject other;
    ref.reset(&other);
    EXPECT_EQ(1U, object.references);
    ref = moved;
    EXPECT_EQ(0U, other.references);
    EXPECT_EQ(2U, object.references);
    ComRef<IDispatch>& same = ref;
    ref = same;
    EXPECT_EQ(2U, object.references);
    EXPECT_EQ(&object, ref.get());
}

TEST(ComRefTest, ReleaseGivesUpTheReference) {
    CountingObject object;
    ComRef<IDispatch> ref;
    ref.reset(&object);
    EXPECT_EQ(&object, ref.release());
    EXPECT_FALSE(ref);
    EXPECT_EQ(1U, object.references);
}

TEST(ComRefTest, ReceiveReleasesTheOldAndTakesOverTheNewFromUntypedArgument) {
    CountingObject first;
    CountingObject second;
    ComRef<IDispatch> ref;
    ref.reset(&first);
    EXPECT_EQ(S_OK, second.QueryInterface(IID_IDispatch, ref.receive()));
    EXPECT_EQ(0U, first.references);
    EXPECT_EQ(2U, second.references);
    EXPECT_EQ(&second, ref.get());
    ref.reset();
    EXPECT_EQ(1U, second.references);
}

TEST(ComRefTest, ReceiveTakesOverFromTypedArgument) {
    CountingObject object;
    ComRef<IDispatch> ref;
    EXPECT_EQ(S_OK, handOut(object, ref.receive()));
    EXPECT_EQ(&object, ref.get());
    EXPECT_EQ(2U, object.references);
}

TEST(ComRefTest, ReceiveLeavesNullWhenTheCallSetsNothing) {
    CountingObject object;
    ComRef<IDispatch> ref;
    ref.reset(&object);
    void** const untouched = ref.receive();
    EXPECT_EQ(nullptr, *untouched);
    EXPECT_FALSE(ref);
}

TEST(TextTest, NullIsNotTheEmptyText) {
    const Text none;
    EXPECT_FALSE(none);
    EXPECT_EQ(nullptr, none.get());
    EXPECT_EQ("", none.utf8());
    EXPECT_FALSE(Text(static_cast<const OLECHAR*>(nullptr)));
    for (const Text& empty : {Text(""), Text(OLESTR("")), Text(std::string_view())}) {
        EXPECT_TRUE(empty);
        EXPECT_EQ(0U, SysStringLen(empty.get()));
    }
}

TEST(TextTest, WideTextIsCopiedUpToItsTerminator) {
    const Text text(OLESTR("abc\0def"));
    EXPECT_EQ(3U, SysStringLen(text.get()));
    EXPECT_EQ("abc", text.utf8());
}

TEST(TextTest, Utf8OfEveryLengthConvertsToUtf16AndBack) {
    const std::string utf8(
        "a\0\x7F\xC2\x80\xDF\xBF\xE0\xA0\x80\xED\x9F\xBF\xEE\x80\x80\xEF\xBF\xBF"
        "\xF0\x90\x80\x80\xF4\x8F\xBF\xBFz",
        28);
    const OLECHAR units[] = {'a',    0,      0x7F,   0x80,   0x7FF,  0x800,  0xD7FF,
                             0xE000, 0xFFFF, 0xD800, 0xDC00, 0xDBFF, 0xDFFF, 'z'};
    const Text text(utf8);
    ASSERT_EQ(sizeof units / sizeof *units, SysStringLen(text.get()));
    EXPECT_EQ(0, std::memcmp(units, text.get(), sizeof units));
    EXPECT_EQ(utf8, text.utf8());
}

TEST(TextTest, MalformedUtf8GivesANullText) {
    for (const char* const malformed :
         {"\x80", "a\xC3", "a\xE2\x82", "\xF0\x9F\x98", "\xC0\x80", "\xE0\x9F\xBF",
          "\xF0\x8F\xBF\xBF", "\xF4\x90\x80\x80", "\xF8\x88\x80\x80\x80", "\xFFz", "\xC2\x7F",
          "\xED\xA0\x80", "\xED\xBF\xBF", "\xED\xA0\xBD\xED\xB4\x91", "ab\xE2(z"}) {
        EXPECT_FALSE(Text(malformed)) << malformed;
    }
}

TEST(TextTest, LoneSurrogateBecomesTheReplacementCharacterInUtf8) {
    const OLECHAR units[] = {'a', 0xD83D, 'b', 0xDD11, 0xD83D, 0xD83D, 0xDD11, 0xDC00, 0xDBFF, 0};
    EXPECT_EQ(
        "a\xEF\xBF\xBD"
        "b\xEF\xBF\xBD\xEF\xBF\xBD\xF0\x9F\x94\x91\xEF\xBF\xBD\xEF\xBF\xBD",
        Text(units).utf8());
}

TEST(TextTest, OwnershipPassesByResetReleaseReceiveAndMove) {
    Text text;
    const BSTR taken = SysAllocString(OLESTR("taken"));
    text.reset(taken);
    EXPECT_EQ(taken, text.get());
    Text moved(std::move(text));
    EXPECT_EQ(taken, moved.get());
    text = std::move(moved);
    EXPECT_EQ(taken, text.get());
    Text other("other");
    other.reset(text.release());
    EXPECT_FALSE(text);
    EXPECT_EQ("taken", other.utf8());
    BSTR* const out = other.receive();
    EXPECT_EQ(nullptr, *out);
    *out = SysAllocString(OLESTR("new"));
    EXPECT_EQ("new", other.utf8());
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

TEST(ResultTest, KnownCodeHasNameAndNumber) {
    const Result result = E_FAIL;
    EXPECT_EQ(E_FAIL, result.code());
    EXPECT_TRUE(result.failed());
    EXPECT_FALSE(result.succeeded());
    EXPECT_EQ("E_FAIL", result.name());
    EXPECT_EQ("0x80004005", result.hex());
    EXPECT_EQ("E_FAIL (0x80004005)", result.text());
    EXPECT_EQ("S_OK (0x00000000)", Result().text());
    EXPECT_TRUE(Result(S_FALSE).succeeded());
}

TEST(ResultTest, EveryCodeOfTheLibraryHasItsName) {
    const std::pair<HRESULT, const char*> codes[] = {
        {S_OK, "S_OK"},
        {S_FALSE, "S_FALSE"},
        {E_NOTIMPL, "E_NOTIMPL"},
        {E_NOINTERFACE, "E_NOINTERFACE"},
        {E_POINTER, "E_POINTER"},
        {E_FAIL, "E_FAIL"},
        {E_UNEXPECTED, "E_UNEXPECTED"},
        {E_OUTOFMEMORY, "E_OUTOFMEMORY"},
        {E_INVALIDARG, "E_INVALIDARG"},
        {RPC_E_CANTCALLOUT_INEXTERNALCALL, "RPC_E_CANTCALLOUT_INEXTERNALCALL"},
        {DISP_E_TYPEMISMATCH, "DISP_E_TYPEMISMATCH"},
        {DISP_E_BADVARTYPE, "DISP_E_BADVARTYPE"},
        {DISP_E_EXCEPTION, "DISP_E_EXCEPTION"},
        {DISP_E_OVERFLOW, "DISP_E_OVERFLOW"},
        {DISP_E_BADINDEX, "DISP_E_BADINDEX"},
        {DISP_E_ARRAYISLOCKED, "DISP_E_ARRAYISLOCKED"}};
    for (const auto& [code, name] : codes) {
        EXPECT_EQ(name, Result(code).name());
    }
}

TEST(ResultTest, UnknownCodeHasItsNumberOnly) {
    const Result result = static_cast<HRESULT>(0x8123ABCDU);
    EXPECT_EQ("", result.name());
    EXPECT_EQ("0x8123ABCD", result.text());
}

TEST(CreateProviderTest, GetNameOfTheNewProviderReturnsItsName) {
    ComRef<ITokenProvider> provider;
    ASSERT_EQ(S_OK, zrkey::createProvider(provider));
    ASSERT_TRUE(provider);
    Text name;
    EXPECT_EQ(S_OK, provider->GetName(name.receive()));
    EXPECT_EQ("PKCS#11", name.utf8());
    ComRef<IKeyObject> token;
    EXPECT_EQ(E_FAIL, provider->OpenKey(0, token.receive()));
    EXPECT_FALSE(token);
    EXPECT_EQ(E_FAIL, provider->Load(Text("\xFF").get()));
}

}  // namespace
