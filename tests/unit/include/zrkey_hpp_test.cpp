// The C++ layer for hosts: what each class owns, lends, takes over and gives up. Compiled as C++17.
#include <zrkey/zrkey.hpp>

#include <gtest/gtest.h>

#include <type_traits>

#include "tests/unit/include/counting_object.h"

namespace {

using zr::test::CountingObject;
using zrkey::ByteArray;
using zrkey::ComRef;
using zrkey::Result;
using zrkey::Text;
using zrkey::Variant;

/// Hands out a reference through a typed out argument.
HRESULT handOut(CountingObject& object, IDispatch** out) {
    object.AddRef();
    *out = &object;
    return S_OK;
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
