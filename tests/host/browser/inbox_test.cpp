// The queue between the reader, the worker and the attendant.
#include "host/browser/inbox.h"

#include <gtest/gtest.h>

#include <thread>

#include "host/browser/malformed.h"
#include "tests/host/browser/fake_prompt.h"

namespace zr::test {
namespace {

using host::Attention;
using host::CancelMessage;
using host::HelloMessage;
using host::Inbox;
using host::Malformed;
using host::RequestMessage;
using Changes = std::vector<host::UploadChange>;
using std::chrono::milliseconds;
using std::chrono::seconds;

class InboxTest : public testing::Test {
protected:
    InboxTest() {
        inbox.add(HelloMessage{1, "https://example.com"});
        EXPECT_TRUE(inbox.takeHello());
    }

    void ask(std::uint64_t id, nlohmann::json arguments = nlohmann::json::array()) {
        inbox.add(RequestMessage{id, 1, "member", std::move(arguments), false});
    }
    /// The number of the next request; 0: the end.
    std::uint64_t take() {
        const std::optional<RequestMessage> request = inbox.take(changes);
        return request ? request->id : 0;
    }
    /// "7 aborted", ...
    std::vector<std::string> earlyAnswers() {
        std::vector<std::string> lines;
        for (const host::EarlyAnswer& answer : inbox.attend().answers) {
            lines.push_back(std::to_string(answer.id) + ' ' + answer.code);
        }
        return lines;
    }
    using Lines = std::vector<std::string>;

    FakePrompt prompt;
    Inbox inbox{prompt};
    Changes changes;
};

TEST_F(InboxTest, KeepsTheOrder) {
    ask(1);
    ask(5);
    EXPECT_EQ(1u, take());
    EXPECT_EQ(5u, take());
}

TEST_F(InboxTest, NeedsOneHandshakeFirst) {
    EXPECT_THROW(inbox.add(HelloMessage{1, "https://example.com"}), Malformed);
    Inbox other(prompt);
    EXPECT_THROW(other.add(CancelMessage{1}), Malformed);
    EXPECT_THROW(other.add(RequestMessage{1, 1, "m", {}, false}), Malformed);
}

TEST_F(InboxTest, NeedsGrowingNumbers) {
    ask(7);
    EXPECT_THROW(ask(7), Malformed);
    EXPECT_THROW(ask(6), Malformed);
    ask(8);
}

TEST_F(InboxTest, LetsSixteenWait) {
    for (std::uint64_t id = 1; id <= 18; ++id) {
        ask(id);
    }
    EXPECT_EQ(Lines({"17 too-many", "18 too-many"}), earlyAnswers());
    EXPECT_EQ(1u, take());
    ask(19);
    for (std::uint64_t id = 2; id <= 16; ++id) {
        EXPECT_EQ(id, take());
    }
    EXPECT_EQ(19u, take());
}

TEST_F(InboxTest, DropsTheUploadsOfRequestsThatItAnswers) {
    for (std::uint64_t id = 1; id <= 16; ++id) {
        ask(id, {{{"upload", id}}});
    }
    ask(17, {{{"upload", 9}}, {{"upload", 3}}});
    inbox.add(CancelMessage{1});
    EXPECT_EQ(Lines({"17 too-many", "1 aborted"}), earlyAnswers());
    EXPECT_EQ(2u, take());
    EXPECT_EQ(Changes({{1, false}}), changes);
    changes.clear();
    for (std::uint64_t id = 3; id <= 16; ++id) {
        EXPECT_EQ(id, take());
    }
    ask(18);
    EXPECT_EQ(18u, take());
    EXPECT_EQ(Changes({{9, false}, {3, false}}), changes);
}

TEST_F(InboxTest, SpoilsTheUploadOfBytesThatItRefuses) {
    const auto askOwn = [this](std::uint64_t id, const char* member, nlohmann::json arguments) {
        inbox.add(RequestMessage{id, 0, member, std::move(arguments), false});
    };
    ask(1);
    askOwn(2, "upload", {5U, {{"bytes", "YQ"}}});
    askOwn(3, "discard", {6U});
    askOwn(4, "upload", {"x"});
    askOwn(5, "upload", nlohmann::json::array());
    for (std::uint64_t id = 2; id <= 5; ++id) {
        inbox.add(CancelMessage{id});
    }
    ask(6);
    EXPECT_EQ(1u, take());
    EXPECT_EQ(6u, take());
    EXPECT_EQ(Changes({{5, true}, {6, false}}), changes);
}

TEST_F(InboxTest, CancelsAWaitingRequestOnce) {
    ask(1);
    ask(2);
    inbox.add(CancelMessage{1});
    inbox.add(CancelMessage{1});
    inbox.add(CancelMessage{3});
    EXPECT_EQ(Lines({"1 aborted"}), earlyAnswers());
    EXPECT_EQ(2u, take());
    EXPECT_FALSE(inbox.isCancelled());
}

TEST_F(InboxTest, CancelsTheCurrentRequest) {
    ask(1);
    ask(2);
    EXPECT_EQ(1u, take());
    inbox.add(CancelMessage{1});
    EXPECT_TRUE(inbox.isCancelled());
    host::Pin pin;
    EXPECT_EQ(host::PromptEnd::kAborted, prompt.askPin({}, pin));
    EXPECT_EQ(2u, take());
    EXPECT_FALSE(inbox.isCancelled());
    prompt.answer(host::PromptEnd::kAnswered);
    EXPECT_EQ(host::PromptEnd::kAnswered, prompt.askPin({}, pin));
}

TEST_F(InboxTest, EndsWithTheInput) {
    ask(1);
    inbox.end(1);
    inbox.end(0);
    EXPECT_EQ(0u, take());
    EXPECT_TRUE(inbox.isCancelled());
    EXPECT_EQ(1, inbox.exitCode());
    host::Pin pin;
    EXPECT_EQ(host::PromptEnd::kAborted, prompt.askPin({}, pin));
    EXPECT_FALSE(inbox.awaitFinish(milliseconds(1)));
    inbox.finish();
    EXPECT_TRUE(inbox.awaitFinish(milliseconds(1)));
    EXPECT_TRUE(inbox.attend().isFinished);
}

TEST_F(InboxTest, GivesTheHandshakeOutAlsoAfterTheEnd) {
    Inbox other(prompt);
    other.add(HelloMessage{1, "https://example.com"});
    other.end(0);
    EXPECT_TRUE(other.takeHello());
    EXPECT_FALSE(other.takeHello());
}

TEST_F(InboxTest, ReportsALateCall) {
    ask(3);
    EXPECT_EQ(3u, take());
    inbox.beginCall(seconds(0));
    const Attention attention = inbox.attend();
    ASSERT_TRUE(attention.late);
    EXPECT_EQ(3u, attention.late->id);
    EXPECT_EQ("member", attention.late->member);
}

TEST_F(InboxTest, SaysThatACallIsLateForLong) {
    std::thread worker([this] {
        inbox.beginCall(seconds(0));
        // It never returns.
    });
    EXPECT_TRUE(inbox.awaitLate(milliseconds(1)));
    worker.join();
    inbox.endCall();
    inbox.finish();
    EXPECT_FALSE(inbox.awaitLate(milliseconds(1)));
}

TEST_F(InboxTest, ReportsALateEndWithoutARequest) {
    ask(3);
    EXPECT_EQ(3u, take());
    inbox.beginClose();
    inbox.beginCall(seconds(0));
    EXPECT_EQ(0u, inbox.attend().late.value().id);
}

TEST_F(InboxTest, StampsTheArrivalOfRequests) {
    const auto before = Inbox::Clock::now();
    ask(1);
    EXPECT_GE(inbox.take(changes).value().arrival, before);
}

TEST_F(InboxTest, DoesNotReportACallThatReturned) {
    inbox.beginCall(seconds(0));
    inbox.endCall();
    inbox.finish();
    EXPECT_FALSE(inbox.attend().late);
}

TEST_F(InboxTest, RefusesAFloodThatNobodyReads) {
    const auto flood = [this] {
        for (std::uint64_t id = 1; id <= Inbox::kMostEarlyAnswers + 100; ++id) {
            ask(id, {{{"upload", 1}}});
        }
    };
    EXPECT_THROW(flood(), Malformed);
    EXPECT_LE(Inbox::kMostEarlyAnswers, 1024u);
}

}  // namespace
}  // namespace zr::test
