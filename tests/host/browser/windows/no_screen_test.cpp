// Without a screen there is no prompt; on Windows only, where prompts are dialogs of our own. The tests
// run under Wine without a screen.
#include <gtest/gtest.h>

#include "host/browser/prompt.h"

namespace zr::host {
namespace {

TEST(NoScreenTest, PromptIsUnavailable) {
    const std::unique_ptr<Prompt> prompt = makePrompt("");
    Pin pin;
    EXPECT_EQ(PromptEnd::kUnavailable,
              prompt->askPin({"https://shop.example", "x", "1", "log in", "", {}}, pin));
    EXPECT_EQ(PromptEnd::kUnavailable, prompt->confirm({"https://shop.example", "x", {}, "", "y"}));
}

}  // namespace
}  // namespace zr::host
