// The method tables of the classes, row by row: hosts read names, ids and types from them.
#include "tests/support/fixtures/objects.h"

namespace zr::test {
namespace {

struct Row {
    const char* name;
    VARTYPE result;
    std::vector<int> arguments;
};

void expectTable(ZComponentImpl& object, const std::vector<Row>& expected) {
    ASSERT_EQ(static_cast<int>(expected.size()), object.GetSelfGetDispatchInfoCount());
    const DispatchInfo* rows = object.GetSelfDispatchInfo();
    for (std::size_t i = 0; i < expected.size(); ++i) {
        SCOPED_TRACE(expected[i].name);
        EXPECT_EQ(static_cast<int>(i) + 1, int{rows[i].nId});
        EXPECT_STREQ(expected[i].name, rows[i].szName);
        EXPECT_EQ(1, int{rows[i].nType});
        EXPECT_NE(nullptr, PFNDISPATCH{rows[i].pfnInvoke});
        EXPECT_EQ(expected[i].result, VARTYPE{rows[i].vtResult});
        for (std::size_t k = 0; k < sizeof rows[i].vtArgs; ++k) {
            const std::vector<int>& arguments = expected[i].arguments;
            EXPECT_EQ(k < arguments.size() ? arguments[k] : 0, int{rows[i].vtArgs[k]});
        }
    }
}

TEST_F(ObjectsTest, MethodTableOfTheProviderIsComplete) {
    expectTable(
        *provider,
        {{"Load", 11, {14}}, {"Unload", 11, {}}, {"OpenKey", 9, {3}}, {"GetKeyCount", 3, {}}});
}

TEST_F(ObjectsTest, MethodTableOfTheTokenIsComplete) {
    expectTable(*token, {
                            {"GetSerialNumber", 8, {}},   {"SetLabel", 11, {14}},
                            {"GetLabel", 8, {}},          {"GetManufacturerID", 8, {}},
                            {"GetModelID", 8, {}},        {"GetTotalSize", 3, {}},
                            {"GetFreeSize", 3, {}},       {"ModifyPIN", 11, {14, 14, 3}},
                            {"GetMaxRetryCount", 3, {3}}, {"GetRemainRetryCount", 3, {3}},
                            {"IsDefaultPIN", 11, {3}},    {"VerifyPIN", 11, {14, 3}},
                            {"UnlockPIN", 11, {14, 14}},  {"Lock", 11, {}},
                            {"Unlock", 11, {}},           {"CreateFile", 24, {}},
                            {"FileExists", 11, {14}},     {"OpenFile", 24, {}},
                            {"EnumFiles", 24, {}},        {"DeleteFile", 24, {}},
                            {"GetDigestMethod", 8, {}},   {"DigestData", 24, {}},
                            {"CreateContainer", 24, {}},  {"GetContainerCount", 24, {}},
                            {"OpenContainer", 24, {}},    {"DeleteContainer", 24, {}},
                            {"EnumContainer", 24, {}},    {"SignData", 24, {}},
                            {"VerifyData", 24, {}},       {"GetSignAlgo", 8, {}},
                        });
}

TEST_F(ObjectsTest, MethodTablesOfContainerAndCertificateAreComplete) {
    expectTable(*container, {{"GetKeyCert", 9, {11}}});
    expectTable(*certificate, {{"GetCertID", 8, {}}, {"GetCertData", 12, {}}});
    EXPECT_EQ(0, file->GetSelfGetDispatchInfoCount());
}

}  // namespace
}  // namespace zr::test
