// VariantChangeType, compared with the results of the system's automation.
#include <gtest/gtest.h>

#include "tests/unit/platform/variant_change_type_rows.h"
#include "tests/unit/platform/variant_text.h"

namespace zr::test {
namespace {

void expectRow(const NumericRow& row, VARIANT* source) {
    const std::vector<std::string> types = split(kRowTypes);
    const std::vector<std::string> results = split(row.results);
    ASSERT_GE(results.size(), types.size()) << row.source;
    for (std::size_t i = 0; i < types.size(); ++i) {
        const VARTYPE type = typeNamed(types[i]);
        // Reading a text as a date depends on the locale.
        const bool dateText = source->vt == VT_BSTR && type == VT_DATE;
        if (source->vt == type || dateText) {
            continue;
        }
        EXPECT_PRED3(sameCell, results[i], convertedText(source, type), type)
            << row.source << " to " << types[i];
    }
    EXPECT_EQ(results[4], convertedText(source, VT_INT)) << row.source << " to INT";
    EXPECT_EQ(results[5], convertedText(source, VT_UINT)) << row.source << " to UINT";
}

TEST(VariantChangeTypeTest, NumbersConvertAsInTheTable) {
    for (const NumericRow& row : numberRows()) {
        OwnedVariant source;
        parseVariant(row.source, source.get());
        expectRow(row, source.get());
    }
}

TEST(VariantChangeTypeTest, NumbersConvertToTheTextsOfTheTable) {
    const std::size_t column = split(kRowTypes).size();
    for (const NumericRow& row : numberRows()) {
        OwnedVariant source;
        parseVariant(row.source, source.get());
        const std::vector<std::string> results = split(row.results);
        ASSERT_EQ(column + 1, results.size()) << row.source;
        if (source->vt != VT_DATE) {
            EXPECT_EQ(results[column], convertedText(source.get(), VT_BSTR)) << row.source;
        }
    }
}

TEST(VariantChangeTypeTest, TextsConvertAsInTheTable) {
    for (const NumericRow& row : textRows()) {
        OwnedVariant source;
        source->vt = VT_BSTR;
        source->bstrVal = makeText(row.source);
        expectRow(row, source.get());
    }
}

TEST(VariantChangeTypeTest, TextsWithSignsAndParenthesesConvertAsInTheTable) {
    const std::pair<const char*, const char*> rows[] = {
        {"(-1", "-1"},  {"-(1", "-1"}, {"(1-", "-1"},   {"(1+", "M"},   {"(1))", "-1"},
        {"1)-", "M"},   {"-1+", "-1"}, {"+1-", "-1"},   {"+1+", "M"},   {"1++", "1"},
        {"1--", "-1"},  {"++1", "M"},  {"1,$", "1"},    {"(1),", "-1"}, {"1 $,", "1"},
        {"$1$$", "1"},  {"$$1", "M"},  {"1$2", "M"},    {"$1e1", "M"},  {"1e1$", "10"},
        {"1e1,", "10"}, {"e1", "M"},   {"1e++1", "10"}, {"1e--1", "0"}, {"&H1-", "1"},
        {"&H1$", "M"},  {"$&H1", "M"}, {"&H1,", "M"},   {"(&H1)", "1"}, {"1&H2", "M"}};
    for (const auto& [text, expected] : rows) {
        OwnedVariant source;
        source->vt = VT_BSTR;
        source->bstrVal = makeText(text);
        EXPECT_EQ(expected, convertedText(source.get(), VT_I4)) << text;
    }
}

TEST(VariantChangeTypeTest, TextsThatAreNoDatesAreATypeMismatch) {
    for (const char* text : {"BSTR ", "BSTR abc", "BSTR 5", "BSTR &H10"}) {
        OwnedVariant source;
        parseVariant(text, source.get());
        EXPECT_EQ("M", convertedText(source.get(), VT_DATE)) << text;
    }
}

TEST(VariantChangeTypeTest, KnownDivergencesGiveOneOfTheTwoListedResults) {
    for (const Divergence& row : divergences()) {
        OwnedVariant source;
        parseVariant(row.source, source.get());
        const VARTYPE type = typeNamed(row.type);
        const std::string actual = convertedText(source.get(), type);
        EXPECT_TRUE(sameCell(row.system, actual, type) || sameCell(row.ours, actual, type))
            << row.source << " to " << row.type << " gave " << actual << " (" << row.reason << ")";
    }
}

TEST(VariantChangeTypeTest, TextsWithUnicodeBlanksConvertAndWithUnicodeDigitsDoNot) {
    const std::pair<const OLECHAR*, const char*> rows[] = {
        {OLESTR("\x2003\x35"), "5"}, {OLESTR("\xff11"), "M"}, {OLESTR("\x2212\x31"), "M"}};
    for (const auto& [text, expected] : rows) {
        OwnedVariant source;
        source->vt = VT_BSTR;
        source->bstrVal = SysAllocString(text);
        EXPECT_EQ(expected, convertedText(source.get(), VT_I4));
    }
}

TEST(VariantChangeTypeTest, TextEndsAtItsFirstZero) {
    OwnedVariant source;
    source->vt = VT_BSTR;
    source->bstrVal = SysAllocStringLen(OLESTR("5\0x"), 3);
    EXPECT_EQ("5", convertedText(source.get(), VT_I4));
}

TEST(VariantChangeTypeTest, NullStringConvertsToAnEmptyTextOnly) {
    OwnedVariant source;
    source->vt = VT_BSTR;
    EXPECT_EQ("M", convertedText(source.get(), VT_I4));
    EXPECT_EQ("", convertedText(source.get(), VT_BSTR));
}

TEST(VariantChangeTypeTest, EmptyConvertsToZeroAndEmptyText) {
    OwnedVariant source;
    for (const std::string& type : split(kRowTypes)) {
        EXPECT_EQ("0", convertedText(source.get(), typeNamed(type))) << type;
    }
    EXPECT_EQ("", convertedText(source.get(), VT_BSTR));
    EXPECT_EQ("EMPTY", convertedText(source.get(), VT_EMPTY));
    EXPECT_EQ("NULL", convertedText(source.get(), VT_NULL));
}

TEST(VariantChangeTypeTest, NullToOtherTypesIsATypeMismatch) {
    OwnedVariant source;
    source->vt = VT_NULL;
    for (const char* type : {"EMPTY", "I4", "R8", "BOOL", "BSTR", "CY", "DATE", "ERROR"}) {
        EXPECT_EQ("M", convertedText(source.get(), typeNamed(type))) << type;
    }
    EXPECT_EQ("NULL", convertedText(source.get(), VT_NULL));
}

TEST(VariantChangeTypeTest, ErrorToOtherTypesIsATypeMismatch) {
    OwnedVariant source;
    source->vt = VT_ERROR;
    source->scode = E_FAIL;
    for (const char* type : {"EMPTY", "NULL", "I4", "R8", "BOOL", "BSTR", "CY", "DATE"}) {
        EXPECT_EQ("M", convertedText(source.get(), typeNamed(type))) << type;
    }
    EXPECT_EQ(std::to_string(E_FAIL), convertedText(source.get(), VT_ERROR));
}

TEST(VariantChangeTypeTest, ValuesConvertToEmptyAndNullButNotToObjectsOrErrors) {
    for (const char* text : {"I4 7", "R8 1.5", "BSTR abc", "BOOL -1", "CY 1", "DATE 2"}) {
        OwnedVariant source;
        parseVariant(text, source.get());
        EXPECT_EQ("EMPTY", convertedText(source.get(), VT_EMPTY)) << text;
        EXPECT_EQ("NULL", convertedText(source.get(), VT_NULL)) << text;
        for (const VARTYPE type : {VT_ERROR, VT_UNKNOWN, VT_DISPATCH, VT_VARIANT}) {
            EXPECT_EQ("M", convertedText(source.get(), type)) << text << " to " << type;
        }
    }
}

TEST(VariantChangeTypeTest, InvalidTypesAreRefused) {
    OwnedVariant source;
    source->vt = VT_I4;
    for (const int type :
         std::initializer_list<int>{15, 24, 25, 26, 27, 31, 37, 64, 65, 0xfff, VT_ARRAY, VT_BYREF,
                                    VT_VECTOR | VT_I4, VT_RESERVED | VT_I4, 0x7fff, 0xffff}) {
        EXPECT_EQ("B", convertedText(source.get(), static_cast<VARTYPE>(type))) << type;
        VARIANT other;
        VariantInit(&other);
        other.vt = static_cast<VARTYPE>(type);
        EXPECT_EQ("B", convertedText(&other, VT_I4)) << type;
    }
}

TEST(VariantChangeTypeTest, ValuesToReferencesAreATypeMismatch) {
    OwnedVariant source;
    source->vt = VT_I4;
    for (const int type :
         std::initializer_list<int>{VT_BYREF | VT_I4, VT_BYREF | VT_VARIANT, VT_ARRAY | VT_I4}) {
        EXPECT_EQ("M", convertedText(source.get(), static_cast<VARTYPE>(type))) << type;
    }
}

TEST(VariantChangeTypeTest, BooleansWithTheFlagConvertToWords) {
    for (const auto& [value, word] : {std::pair("BOOL 0", "False"), std::pair("BOOL -1", "True"),
                                      std::pair("BOOL 2", "True")}) {
        OwnedVariant source;
        parseVariant(value, source.get());
        EXPECT_EQ(word, convertedText(source.get(), VT_BSTR, VARIANT_ALPHABOOL));
        EXPECT_EQ(word, convertedText(source.get(), VT_BSTR, VARIANT_LOCALBOOL));
        EXPECT_EQ(std::string(value).substr(5),
                  convertedText(source.get(), VT_BSTR, VARIANT_NOVALUEPROP));
    }
}

TEST(VariantChangeTypeTest, ConversionInPlaceGivesTheSameResult) {
    OwnedVariant variant;
    parseVariant("BSTR 12", variant.get());
    ASSERT_EQ(S_OK, VariantChangeType(variant.get(), variant.get(), 0, VT_I4));
    EXPECT_EQ(VT_I4, variant->vt);
    EXPECT_EQ(12, variant->lVal);
}

TEST(VariantChangeTypeTest, FailingConversionLeavesSourceAndTarget) {
    OwnedVariant variant;
    parseVariant("BSTR abc", variant.get());
    EXPECT_EQ(DISP_E_TYPEMISMATCH, VariantChangeType(variant.get(), variant.get(), 0, VT_I4));
    EXPECT_EQ(VT_BSTR, variant->vt);
    EXPECT_EQ("abc", valueText(*variant.get()));
}

TEST(VariantChangeTypeTest, ConversionClearsTheTarget) {
    OwnedVariant source;
    parseVariant("I4 30", source.get());
    OwnedVariant target;
    parseVariant("BSTR old", target.get());
    ASSERT_EQ(S_OK, VariantChangeType(target.get(), source.get(), 0, VT_UI1));
    EXPECT_EQ("30", valueText(*target.get()));
}

TEST(VariantChangeTypeTest, ConversionIntoAnInvalidTargetFails) {
    OwnedVariant source;
    parseVariant("I4 30", source.get());
    VARIANT target;
    VariantInit(&target);
    target.vt = 0x1234;
    EXPECT_EQ(DISP_E_BADVARTYPE, VariantChangeType(&target, source.get(), 0, VT_UI1));
    EXPECT_EQ(0x1234, target.vt);
}

TEST(VariantChangeTypeTest, ConversionToTheSameTypeMakesADeepCopy) {
    OwnedVariant source;
    parseVariant("BSTR text", source.get());
    OwnedVariant target;
    ASSERT_EQ(S_OK, VariantChangeType(target.get(), source.get(), 0, VT_BSTR));
    EXPECT_NE(source->bstrVal, target->bstrVal);
    EXPECT_EQ("text", valueText(*target.get()));
}

}  // namespace
}  // namespace zr::test
