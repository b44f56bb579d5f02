// The trace without PINs: whatever the parts in which it comes, and whatever a token puts into it.
#include "host/output/trace_filter.h"

#include <gtest/gtest.h>

namespace zr::host {
namespace {

std::string filtered(const std::string& trace) {
    TraceFilter filter;
    const std::string shown = filter.add(trace);
    return shown + filter.finish();
}

std::string block(const std::string& call, const std::string& arguments) {
    return "\n7: " + call + "\n2026-11-22 11:51:14.230\n" + arguments + "Returned:  0 CKR_OK\n";
}

std::string hiddenBlock(const std::string& call) {
    return "\n7: " + call + "\n(arguments are not shown)\nReturned:  0 CKR_OK\n";
}

const std::string kPinDump =
    "[in] pPin[ulPinLen] 00007fff62781932 / 4\n"
    "    00000000  31 32 33 34                                      1234            \n";

TEST(TraceFilterTest, ArgumentsOfCallsWithAPinAreDropped) {
    for (const char* call : {"C_Login", "C_LoginUser", "C_SetPIN", "C_InitPIN", "C_InitToken"}) {
        EXPECT_EQ(hiddenBlock(call),
                  filtered(block(call, "[in] hSession = 0x1\n" + kPinDump + "more\n")));
    }
}

TEST(TraceFilterTest, OtherCallsAreShown) {
    const std::string trace = block("C_Sign",
                                    "[in] hSession = 0x1\n[in] pData[ulDataLen] 1 / 4\n"
                                    "    00000000  31 32 33 34     1234\n");
    EXPECT_EQ(trace, filtered(trace));
    EXPECT_EQ(block("C_Logins", "a\n"), filtered(block("C_Logins", "a\n")));
}

TEST(TraceFilterTest, PartsOfAnySizeGiveTheSame) {
    const std::string trace =
        block("C_GetSlotList", "a\n") + block("C_Login", kPinDump) + block("C_Sign", "b\n");
    const std::string whole = filtered(trace);
    EXPECT_EQ(std::string::npos, whole.find("1234"));
    for (std::size_t size = 1; size < trace.size(); ++size) {
        TraceFilter filter;
        std::string shown;
        for (std::size_t begin = 0; begin < trace.size(); begin += size) {
            shown += filter.add(std::string_view(trace).substr(begin, size));
        }
        EXPECT_EQ(whole, shown + filter.finish()) << size;
    }
}

TEST(TraceFilterTest, TraceThatEndsAnywhereShowsNoPin) {
    const std::string trace = block("C_Login", kPinDump);
    for (std::size_t size = 0; size < trace.size(); ++size) {
        const std::string shown = filtered(trace.substr(0, size));
        EXPECT_EQ(std::string::npos, shown.find("12")) << shown;
        EXPECT_EQ(std::string::npos, shown.find("31 32")) << shown;
    }
}

TEST(TraceFilterTest, PinInAnotherCallIsDropped) {
    EXPECT_EQ(block("C_Unknown", "[in] hSession = 0x1\n[out] x = 1\n"),
              filtered(block("C_Unknown", "[in] hSession = 0x1\n" + kPinDump +
                                              "[in] pOldPin[ulOldLen] 1 / 20\n"
                                              "    00000000  31 32 33 34     1234\n"
                                              "    00000010  35 36           56\n"
                                              "[out] x = 1\n")));
}

TEST(TraceFilterTest, LabelWithLineEndsRevealsNothing) {
    const std::string label = "      label:                  'a\n7: C_GetInfo\nReturned:  0\n'\n";
    const std::string trace = block("C_GetTokenInfo", label) + block("C_Login", kPinDump);
    EXPECT_EQ(block("C_GetTokenInfo", label) + hiddenBlock("C_Login"), filtered(trace));
    // A false beginning of a login hides the rest of its block.
    EXPECT_EQ(
        "\n7: C_GetTokenInfo\n2026-11-22 11:51:14.230\n'a\n1: C_Login\n(arguments are not "
        "shown)\nReturned:  0 CKR_OK\n" +
            hiddenBlock("C_Login"),
        filtered(block("C_GetTokenInfo", "'a\n1: C_Login\nb'\n") + block("C_Login", kPinDump)));
}

TEST(TraceFilterTest, ControlCharactersAreReplaced) {
    EXPECT_EQ("label '?[2J?'\n", filtered("label '\x1b[2J\r'\n"));
}

TEST(TraceFilterTest, LineWithoutAnEndIsCut) {
    const std::string shown = filtered(std::string(200000, 'a') + "\nnext\n");
    EXPECT_EQ(std::string(65536, 'a') + "...\nnext\n", shown);
}

TEST(TraceFilterTest, LastLineNeedsNoEnd) {
    EXPECT_EQ("a\nb\n", filtered("a\nb"));
    EXPECT_EQ("", filtered(""));
}

}  // namespace
}  // namespace zr::host
