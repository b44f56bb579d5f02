// Connections: logins, prompts, and what ends a prompt.
#include "tests/host/browser/connection_test.h"

namespace zr::test {
namespace {

// Flags of a token, of its user's PIN.
constexpr CK_FLAGS kFewTries = 0x10000;
constexpr CK_FLAGS kLastTry = 0x20000;
constexpr CK_FLAGS kLocked = 0x40000;

TEST_F(ConnectionTest, LogsInByAPrompt) {
    const std::uint64_t token = openToken();
    prompt().answer(PromptEnd::kAnswered, "1234");
    module.takeCalls();
    EXPECT_EQ("ok", login(token));
    EXPECT_EQ(1u, module.count("C_Login"));
    const host::PinQuestion question = prompt().questions().at(0);
    EXPECT_EQ(kSite, question.origin);
    EXPECT_EQ("Label", question.label);
    EXPECT_EQ("Serial", question.serial);
    EXPECT_EQ("", question.tries);
    EXPECT_EQ(true, page().valueOf(token, "logout"));
    EXPECT_EQ(true, page().valueOf(token, "logout"));
    EXPECT_GE(module.count("C_Logout"), 2u);
}

TEST_F(ConnectionTest, LogsOutAtTheEnd) {
    const std::uint64_t token = openToken();
    prompt().answer(PromptEnd::kAnswered, "1234");
    EXPECT_EQ("ok", login(token));
    module.takeCalls();
    EXPECT_EQ(0, connection().finish());
    EXPECT_EQ(1u, module.count("C_Logout"));
    EXPECT_EQ(1u, module.count("C_Finalize"));
    EXPECT_EQ(0u, module->openSessions());
}

TEST_F(ConnectionTest, NeedsAnActionOfTheUser) {
    const std::uint64_t token = openToken();
    EXPECT_EQ("no-activation", login(token, false));
    EXPECT_EQ(0u, prompt().opened());
    prompt().answer(PromptEnd::kAnswered, "1234");
    EXPECT_EQ("ok", login(token));
    // The answer of the prompt counts.
    prompt().answer(PromptEnd::kAnswered, "1234");
    EXPECT_EQ("ok", login(token, false));
}

TEST_F(ConnectionTest, WaitsAfterACancelledPrompt) {
    const std::uint64_t token = openToken();
    prompt().answer(PromptEnd::kCancelled);
    EXPECT_EQ("cancelled", login(token));
    EXPECT_EQ("wait", login(token));
    EXPECT_EQ(1u, prompt().opened());
    EXPECT_EQ(0u, module.count("C_Login"));
    connection().finish();
    EXPECT_EQ(Lines({"connect ok", "OpenKey ok", "login cancelled", "login wait", "disconnect ok"}),
              audit());
}

TEST_F(ConnectionTest, ShowsOnePromptAtATime) {
    const std::uint64_t token = openToken();
    host::SiteLimits other(state, settings.allow.front());
    {
        const auto turn = other.takePrompt();
        EXPECT_EQ("busy", login(token));
    }
    prompt().answer(PromptEnd::kUnavailable);
    EXPECT_EQ("no-prompt", login(token));
}

TEST_F(ConnectionTest, SaysWhatTheTokenReportsOfAWrongPin) {
    const std::uint64_t token = openToken();
    const auto wrong = [&](CK_FLAGS after) {
        module->fail("C_Login", 1, CKR_PIN_INCORRECT);
        prompt().answer(PromptEnd::kAnswered, "9999");
        CK_FLAGS& flags = module->settings().tokenInfo.flags;
        const CK_FLAGS before = flags;
        // The state is read before and after the try.
        flags |= after;
        if (after & kLastTry) {
            prompt().answer(PromptEnd::kAnswered, "9999");
        }
        const json reply = page().call(token, "login", json::array(), true);
        flags = before;
        return reply.at("error").at("code").get<std::string>() + ": " +
               reply.at("error").at("message").get<std::string>();
    };
    EXPECT_EQ("wrong-pin: the PIN is wrong, or the token could not check it", wrong(0));
    EXPECT_EQ("wrong-pin: the PIN is wrong, and tries are limited", wrong(kFewTries));
    EXPECT_EQ("A wrong PIN was entered since the last login.", prompt().questions().at(1).tries);
    EXPECT_EQ("wrong-pin: the PIN is wrong, and one try is left", wrong(kLastTry));
}

TEST_F(ConnectionTest, DoesNotTryALockedPin) {
    const std::uint64_t token = openToken();
    module->settings().tokenInfo.flags |= kLocked;
    EXPECT_EQ("pin-locked", login(token));
    EXPECT_EQ(0u, prompt().opened());
    EXPECT_EQ(0u, module.count("C_Login"));
}

TEST_F(ConnectionTest, AsksBeforeTheLastTry) {
    const std::uint64_t token = openToken();
    module->settings().tokenInfo.flags |= kLastTry;
    prompt().answer(PromptEnd::kCancelled);
    EXPECT_EQ("cancelled", login(token));
    EXPECT_EQ(1u, prompt().confirmations().size());
    EXPECT_EQ(0u, prompt().questions().size());
    EXPECT_EQ(0u, module.count("C_Login"));
}

TEST_F(ConnectionTest, DoesNotTryAPinThatIsNone) {
    const std::uint64_t token = openToken();
    std::vector<json> replies;
    for (const char* pin : {"", "\xFF\xFE"}) {
        prompt().answer(PromptEnd::kAnswered, pin);
        const json reply = page().call(token, "login", json::array(), true);
        EXPECT_EQ("wrong-pin", PageFrames::outcomeOf(reply));
        replies.push_back(reply.at("error"));
    }
    EXPECT_EQ(0u, module.count("C_Login"));
    // The page sees no difference to a wrong PIN.
    module->fail("C_Login", 1, CKR_PIN_INCORRECT);
    prompt().answer(PromptEnd::kAnswered, "9999");
    const json wrong = page().call(token, "login", json::array(), true).at("error");
    EXPECT_EQ((std::vector<json>{wrong, wrong}), replies);
}

TEST_F(ConnectionTest, ClosesAPromptThatIsCancelled) {
    const std::uint64_t token = openToken();
    const std::uint64_t id = page().ask(token, "login", json::array(), true);
    prompt().awaitOpened(1);
    page().write({{"cancel", id}});
    EXPECT_EQ("aborted", PageFrames::outcomeOf(page().read()));
    EXPECT_EQ(0u, module.count("C_Login"));
    // The page could do this in a loop, also in another connection.
    EXPECT_EQ("wait", login(token));
    host::SiteLimits other(state, settings.allow.front());
    EXPECT_TRUE(other.waitAfterCancel());
    EXPECT_EQ(1u, prompt().opened());
}

TEST_F(ConnectionTest, AnswersAWaitingRequestThatIsCancelledDuringAPrompt) {
    const std::uint64_t token = openToken();
    const std::uint64_t first = page().ask(token, "login", json::array(), true);
    prompt().awaitOpened(1);
    const std::uint64_t second = page().ask(token, "GetLabel");
    page().write({{"cancel", second}});
    json reply = page().read();
    EXPECT_EQ(second, reply.at("id"));
    EXPECT_EQ("aborted", PageFrames::outcomeOf(reply));
    EXPECT_EQ("GetLabel", reply.at("error").at("member"));
    prompt().answer(PromptEnd::kAnswered, "1234");
    reply = page().read();
    EXPECT_EQ(first, reply.at("id"));
    EXPECT_EQ("ok", PageFrames::outcomeOf(reply));
}

TEST_F(ConnectionTest, QueuesSixteenRequestsDuringAPrompt) {
    const std::uint64_t token = openToken();
    page().ask(token, "login", json::array(), true);
    prompt().awaitOpened(1);
    for (std::size_t i = 0; i < host::Inbox::kMostWaiting; ++i) {
        page().ask(token, "GetLabel");
    }
    const std::uint64_t last = page().ask(token, "GetLabel");
    json reply = page().read();
    EXPECT_EQ(last, reply.at("id"));
    EXPECT_EQ("too-many", PageFrames::outcomeOf(reply));
    prompt().answer(PromptEnd::kCancelled);
    EXPECT_EQ("cancelled", PageFrames::outcomeOf(page().read()));
    for (std::size_t i = 0; i < host::Inbox::kMostWaiting; ++i) {
        EXPECT_EQ("ok", PageFrames::outcomeOf(page().read()));
    }
}

TEST_F(ConnectionTest, ClosesThePromptWithTheInput) {
    const std::uint64_t token = openToken();
    page().ask(token, "login", json::array(), true);
    prompt().awaitOpened(1);
    EXPECT_EQ(0, connection().finish());
    EXPECT_EQ(0u, module.count("C_Login"));
}

TEST_F(ConnectionTest, EndsWithAMalformedMessageDuringAPrompt) {
    const std::uint64_t token = openToken();
    page().ask(token, "login", json::array(), true);
    prompt().awaitOpened(1);
    ConsoleCapture console;
    page().write({{"hello", {{"protocol", 1}, {"origin", "https://other.example"}}}});
    EXPECT_EQ(1, connection().finish());
    EXPECT_EQ("zrkey-browser: a second handshake\n", console.stop().error);
    EXPECT_EQ(0u, module.count("C_Login"));
}

}  // namespace
}  // namespace zr::test
