// When a site may show a prompt.
#include "host/browser/site_prompts.h"

#include "host/browser/page_error.h"
#include "tests/host/browser/fake_prompt.h"
#include "tests/host/browser/state_test.h"

namespace zr::test {
namespace {

using host::PromptEnd;
using host::SitePrompts;
using Clock = SitePrompts::Clock;
using std::chrono::seconds;

class SitePromptsTest : public StateTest {
protected:
    SitePromptsTest() { inbox.add(host::HelloMessage{1, "https://shop.example"}); }

    /// Asks for a confirmation.
    /// @param end       what the person does.
    /// @param isActive  the user has acted in the page.
    /// @param ago       when the request came.
    /// @return "ok" or the code of the error.
    std::string ask(PromptEnd end, bool isActive, seconds ago = {}) {
        try {
            const auto turn = prompts.begin({isActive, Clock::now() - ago});
            prompt.answer(end);
            prompts.confirm({});
            return "ok";
        } catch (const host::PageError& error) {
            return error.code();
        }
    }

    FakePrompt prompt;
    host::Inbox inbox{prompt};
    host::SiteLimits siteLimits = limits();
    std::function<host::SitePolicy()> policy = [] {
        host::BrowserSettings settings;
        settings.allow = {site()};
        return host::SitePolicy({}, settings);
    };
    SitePrompts prompts{site(), {prompt, inbox, siteLimits, policy}};
};

TEST_F(SitePromptsTest, ActionThatIsTooOldDoesNotCount) {
    EXPECT_EQ("no-activation", ask(PromptEnd::kAnswered, true, seconds(6)));
    EXPECT_EQ("no-activation", ask(PromptEnd::kAnswered, false));
    EXPECT_EQ(0u, prompt.opened());
    EXPECT_EQ("ok", ask(PromptEnd::kAnswered, true, seconds(4)));
}

TEST_F(SitePromptsTest, AnswerCountsForTheNextPrompt) {
    EXPECT_EQ("ok", ask(PromptEnd::kAnswered, true));
    EXPECT_EQ("ok", ask(PromptEnd::kAnswered, false));
    EXPECT_EQ("ok", ask(PromptEnd::kAnswered, true, seconds(6)));
    EXPECT_EQ(3u, prompts.count());
}

TEST_F(SitePromptsTest, OneActionOpensOnePrompt) {
    EXPECT_EQ("no-prompt", ask(PromptEnd::kUnavailable, true));
    EXPECT_EQ("no-activation", ask(PromptEnd::kAnswered, true));
    // As if it came later.
    EXPECT_EQ("ok", ask(PromptEnd::kAnswered, true, seconds(-6)));
}

TEST_F(SitePromptsTest, PromptThatIsClosedIsNoAnswer) {
    EXPECT_EQ("ok", ask(PromptEnd::kAnswered, true));
    EXPECT_EQ("aborted", ask(PromptEnd::kAborted, false));
    EXPECT_EQ("no-activation", ask(PromptEnd::kAnswered, false));
    EXPECT_EQ("wait", ask(PromptEnd::kAnswered, true));
    EXPECT_EQ(2u, prompt.opened());
}

}  // namespace
}  // namespace zr::test
