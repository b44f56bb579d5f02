// Numbers and layouts of the automation types, which are the same on both targets.
#include <gtest/gtest.h>
#include <zrkey/automation.h>

#include <utility>

namespace zr::test {
namespace {

TEST(AutomationLayoutTest, ResultsHaveTheirNumbers) {
    const std::pair<unsigned int, HRESULT> results[] = {
        {0, S_OK},
        {1, S_FALSE},
        {0x80004001, E_NOTIMPL},
        {0x80004002, E_NOINTERFACE},
        {0x80004003, E_POINTER},
        {0x80004005, E_FAIL},
        {0x8000FFFF, E_UNEXPECTED},
        {0x8007000E, E_OUTOFMEMORY},
        {0x80070057, E_INVALIDARG},
        {0x80010005, RPC_E_CANTCALLOUT_INEXTERNALCALL},
        {0x80020005, DISP_E_TYPEMISMATCH},
        {0x80020008, DISP_E_BADVARTYPE},
        {0x80020009, DISP_E_EXCEPTION},
        {0x8002000A, DISP_E_OVERFLOW},
        {0x8002000B, DISP_E_BADINDEX},
        {0x8002000D, DISP_E_ARRAYISLOCKED},
    };
    for (const auto& [expected, result] : results) {
        EXPECT_EQ(expected, static_cast<unsigned int>(result));
    }
    EXPECT_TRUE(SUCCEEDED(S_FALSE));
    EXPECT_FALSE(SUCCEEDED(E_FAIL));
    EXPECT_TRUE(FAILED(E_FAIL));
    EXPECT_FALSE(FAILED(S_OK));
}

TEST(AutomationLayoutTest, TypesHaveTheirNumbers) {
    const std::pair<int, int> types[] = {
        {0, VT_EMPTY},       {1, VT_NULL},       {2, VT_I2},         {3, VT_I4},
        {4, VT_R4},          {5, VT_R8},         {6, VT_CY},         {7, VT_DATE},
        {8, VT_BSTR},        {9, VT_DISPATCH},   {10, VT_ERROR},     {11, VT_BOOL},
        {12, VT_VARIANT},    {13, VT_UNKNOWN},   {14, VT_DECIMAL},   {16, VT_I1},
        {17, VT_UI1},        {18, VT_UI2},       {19, VT_UI4},       {20, VT_I8},
        {21, VT_UI8},        {22, VT_INT},       {23, VT_UINT},      {24, VT_VOID},
        {25, VT_HRESULT},    {26, VT_PTR},       {27, VT_SAFEARRAY}, {36, VT_RECORD},
        {4096, VT_VECTOR},   {8192, VT_ARRAY},   {16384, VT_BYREF},  {32768, VT_RESERVED},
        {4095, VT_TYPEMASK}, {-1, VARIANT_TRUE}, {0, VARIANT_FALSE},
    };
    for (const auto& [expected, type] : types) {
        EXPECT_EQ(expected, type);
    }
}

TEST(AutomationLayoutTest, FlagsHaveTheirNumbers) {
    const std::pair<int, int> flags[] = {
        {1, VARIANT_NOVALUEPROP}, {2, VARIANT_ALPHABOOL},    {16, VARIANT_LOCALBOOL},
        {1, DISPATCH_METHOD},     {2, DISPATCH_PROPERTYGET}, {4, DISPATCH_PROPERTYPUT},
        {0x1, FADF_AUTO},         {0x2, FADF_STATIC},        {0x4, FADF_EMBEDDED},
        {0x10, FADF_FIXEDSIZE},   {0x40, FADF_HAVEIID},      {0x80, FADF_HAVEVARTYPE},
        {0x100, FADF_BSTR},       {0x200, FADF_UNKNOWN},     {0x400, FADF_DISPATCH},
        {0x800, FADF_VARIANT},
    };
    for (const auto& [expected, flag] : flags) {
        EXPECT_EQ(expected, flag);
    }
}

TEST(AutomationLayoutTest, StructuresAreLaidOutAsOnWindows) {
    EXPECT_EQ(16u, sizeof(GUID));
    EXPECT_EQ(4u, offsetof(GUID, Data2));
    EXPECT_EQ(6u, offsetof(GUID, Data3));
    EXPECT_EQ(8u, offsetof(GUID, Data4));
    EXPECT_EQ(24u, sizeof(VARIANT));
    EXPECT_EQ(8u, offsetof(VARIANT, lVal));
    EXPECT_EQ(8u, offsetof(SAFEARRAYBOUND, lLbound) + sizeof(LONG));
    EXPECT_EQ(32u, sizeof(SAFEARRAY));
    EXPECT_EQ(2u, offsetof(SAFEARRAY, fFeatures));
    EXPECT_EQ(4u, offsetof(SAFEARRAY, cbElements));
    EXPECT_EQ(8u, offsetof(SAFEARRAY, cLocks));
    EXPECT_EQ(16u, offsetof(SAFEARRAY, pvData));
    EXPECT_EQ(24u, offsetof(SAFEARRAY, rgsabound));
    EXPECT_EQ(24u, sizeof(DISPPARAMS));
    EXPECT_EQ(8u, offsetof(DISPPARAMS, rgdispidNamedArgs));
    EXPECT_EQ(16u, offsetof(DISPPARAMS, cArgs));
    EXPECT_EQ(20u, offsetof(DISPPARAMS, cNamedArgs));
    EXPECT_EQ(64u, sizeof(EXCEPINFO));
    EXPECT_EQ(8u, offsetof(EXCEPINFO, bstrSource));
    EXPECT_EQ(16u, offsetof(EXCEPINFO, bstrDescription));
    EXPECT_EQ(24u, offsetof(EXCEPINFO, bstrHelpFile));
    EXPECT_EQ(32u, offsetof(EXCEPINFO, dwHelpContext));
    EXPECT_EQ(56u, offsetof(EXCEPINFO, scode));
}

}  // namespace
}  // namespace zr::test
