// The native messaging host: any frames and messages of a page, any answers of the person at the prompts,
// over a module whose answers come from the input.
#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "host/browser/base64url.h"
#include "host/browser/complaint.h"
#include "host/browser/connection.h"
#include "host/browser/frames.h"
#include "host/browser/malformed.h"
#include "host/output/failure.h"
#include "host/system/byte_io.h"
#include "host/system/system.h"
#include "tests/fuzz/expect.h"
#include "tests/fuzz/fuzz_module.h"
#include "tests/fuzz/objects.h"

namespace zr::fuzz {
namespace {

using host::PageMessage;
using nlohmann::json;

constexpr const char* kFuzzSite = "https://example.com";

/// Answers as the input says.
class FuzzPrompt final : public host::Prompt {
public:
    explicit FuzzPrompt(Input& input) : m_input(input) {}

    host::PromptEnd askPin(const host::PinQuestion&, host::Pin& pin) override {
        for (const char byte : m_input.text(m_input.below(130))) {
            pin.append(byte);
        }
        return end();
    }
    host::PromptEnd confirm(const host::Confirmation& shown) override {
        expect(shown.lines.size() >= 3, "a confirmation says what it is for");
        return end();
    }
    void abort() override { m_isAborted = true; }
    void resume() override { m_isAborted = false; }

private:
    host::PromptEnd end() {
        // Mostly the person agrees.
        const std::size_t choice = m_isAborted ? 3 : m_input.below(20);
        return choice > 4 ? host::PromptEnd::kAnswered : static_cast<host::PromptEnd>(choice);
    }

    Input& m_input;
    bool m_isAborted = false;
};

/// Messages as the page library writes them, with any names and values.
class PageWords {
public:
    explicit PageWords(Input& input) : m_input(input) {}

    std::string message() {
        switch (m_input.below(12)) {
            case 0:
                return m_input.text();
            case 1:
                return json{{"cancel", m_input.below(20)}}.dump();
            default:
                return request().dump(-1, ' ', false, json::error_handler_t::replace);
        }
    }

private:
    json request() {
        static const char* const members[] = {
            "tokens",      "OpenKey",  "GetLabel",      "GetSerialNumber", "EnumContainer",
            "login",       "logout",   "certificates",  "SignData",        "sign",
            "VerifyData",  "verify",   "OpenContainer", "GetKeyCert",      "GetCertData",
            "GetCertID",   "subject",  "pem",           "Close",           "upload",
            "discard",     "GetName",  "GetKeyCount",   "DigestData",      "GetPubKeyData",
            "GetFreeSize", "VerifyPIN"};
        json arguments = json::array();
        for (std::size_t count = m_input.below(5); count > 0; --count) {
            arguments.push_back(argument());
        }
        m_id += 1 + (m_input.byte() >= 250 ? m_input.below(3) : 0);
        return {{"id", m_id},
                {"object", m_input.below(8)},
                {"member", members[m_input.below(std::size(members))]},
                {"arguments", std::move(arguments)},
                {"active", m_input.byte() < 200}};
    }

    json argument() {
        switch (m_input.below(9)) {
            case 0:
                return nullptr;
            case 1:
                return m_input.flag();
            case 2:
                return static_cast<int>(m_input.below(20)) - 1;
            case 3:
                return {{"upload", m_input.below(18)}};
            case 4:
                return "rsa-sha512";
            case 5:
                return m_input.text(m_input.below(9));
            case 6:
                return {{"bytes", host::toBase64Url(m_input.text(m_input.below(40)))}};
            default:
                return {{"object", m_input.below(8)}};
        }
    }

    Input& m_input;
    std::uint64_t m_id = 0;
};

/// Reads what the host wrote: whole frames of valid replies, one for each request.
class ReplyCheck {
public:
    void expectReply(std::uint64_t id) { ++m_expected[id]; }

    void check(std::string_view bytes) {
        while (!bytes.empty()) {
            std::uint32_t size = 0;
            expect(bytes.size() >= sizeof size, "a frame is whole");
            bytes.copy(reinterpret_cast<char*>(&size), sizeof size);
            bytes.remove_prefix(sizeof size);
            expect(size > 0 && size <= host::kLongestFrameOut && size <= bytes.size(),
                   "a frame is as long as it says");
            take(json::parse(bytes.substr(0, size), nullptr, false));
            bytes.remove_prefix(size);
        }
        for (const auto& [id, count] : m_expected) {
            expect(count == 0, "every request has one reply");
        }
    }

private:
    void take(const json& reply) {
        expect(reply.is_object(), "a reply is an object");
        if (reply.contains("hello") || (reply.contains("part") && !reply.at("last").get<bool>())) {
            return;
        }
        expect(reply.contains("part") || reply.contains("value") || reply.contains("error"),
               "a reply says how it went");
        --m_expected[reply.at("id").get<std::uint64_t>()];
    }

    std::map<std::uint64_t, int> m_expected;
};

host::SitePolicy policy() {
    host::BrowserSettings settings;
    std::string problem;
    settings.module = std::filesystem::absolute(modulePath()).string();
    settings.allow = {*host::Origin::read(kFuzzSite, problem)};
    settings.callSeconds = 600;
    return {{}, settings};
}

class FuzzedHost {
public:
    FuzzedHost(Input& input, int output)
        : m_input(input),
          m_prompt(input),
          m_inbox(m_prompt),
          m_replies(output),
          m_surroundings{m_prompt, policy, [] { return std::filesystem::absolute("state"); }},
          m_connection(m_inbox, m_replies, m_surroundings) {}

    void run() {
        try {
            if (m_input.byte() >= 240) {
                readFrames();
            } else {
                serve(host::readMessage(
                    json{{"hello", {{"protocol", 1}, {"origin", kFuzzSite}}}}.dump()));
                PageWords words(m_input);
                while (!m_input.isAtEnd()) {
                    serve(host::readMessage(words.message()));
                }
            }
        } catch (const host::Malformed& malformed) {
            expect(!malformed.problem.empty(), "what ends the process has a reason");
        }
        m_inbox.end(0);
        m_connection.close();
        answerEarly();
    }

    ReplyCheck replies;

private:
    /// The rest of the input as the browser's bytes.
    void readFrames() {
        host::writeFile("frames", m_input.rest());
        std::error_code error;
        const int file = host::openForReading("frames", error);
        try {
            while (const std::optional<std::string> frame = host::readFrame(file)) {
                serve(host::readMessage(*frame));
            }
        } catch (...) {
            host::closeDescriptor(file);
            throw;
        }
        host::closeDescriptor(file);
    }

    void serve(PageMessage message) {
        if (m_isGreeted && !m_isOpen) {
            // The process has ended.
            return;
        }
        const auto* const request = std::get_if<host::RequestMessage>(&message);
        const std::uint64_t id = request ? request->id : 0;
        m_inbox.add(std::move(message));
        if (const std::optional<host::HelloMessage> hello =
                id == 0 && !m_isGreeted ? m_inbox.takeHello() : std::nullopt) {
            m_isGreeted = true;
            m_isOpen = m_connection.greet(*hello);
        } else if (id != 0) {
            replies.expectReply(id);
            std::vector<host::UploadChange> changes;
            const std::optional<host::RequestMessage> taken = m_inbox.take(changes);
            m_connection.changeUploads(changes);
            m_connection.serve(*taken);
        }
    }

    /// As the attendant does.
    void answerEarly() {
        for (const host::EarlyAnswer& answer : m_inbox.attend().answers) {
            m_replies.refuse(answer.id, answer.member, {answer.code, "early"});
        }
    }

    Input& m_input;
    FuzzPrompt m_prompt;
    host::Inbox m_inbox;
    host::Replies m_replies;
    host::Surroundings m_surroundings;
    host::Connection m_connection;
    bool m_isGreeted = false;
    bool m_isOpen = false;
};

}  // namespace
}  // namespace zr::fuzz

/// In place of the host's own: standard error is the fuzzer's.
void zr::host::complain(const std::string&) {}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace zr::fuzz;
    namespace fs = std::filesystem;
    fs::remove_all("state");
    fs::create_directory("state");
    fs::remove("replies");
    std::error_code error;
    const int output = zr::host::openNewForWriting("replies", error);
    Input input(data, size);
    answerFrom(&input);
    {
        FuzzedHost host(input, output);
        host.run();
        zr::host::closeDescriptor(output);
        host.replies.check(zr::host::viewOf(zr::host::readBytes("replies", error)));
    }
    answerFrom(nullptr);
    return 0;
}
