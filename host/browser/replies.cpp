// The messages from the host.
#include "host/browser/replies.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <utility>

#include "host/browser/base64url.h"
#include "host/browser/frames.h"
#include "host/browser/messages.h"

namespace zr::host {
namespace {

using nlohmann::json;

/// So many bytes of a reply are a part: in base64url, with the keys of the message, they are shorter
/// than a frame.
constexpr std::size_t kPart = 768000;
static_assert(kPart % 3 == 0 && kPart / 3 * 4 + 100 < kLongestFrameOut);

std::string textOf(const json& message) {
    return message.dump(-1, ' ', false, json::error_handler_t::replace);
}

json greeting() {
    return {{"protocol", kProtocolVersion}, {"version", ZRKEY_VERSION}};
}

json refusal(std::uint64_t id, const std::string& member, const PageError& error) {
    return {{"id", id}, {"ok", false}, {"error", error.json(member)}};
}

}  // namespace

void Replies::greet(std::uint64_t provider) {
    json hello = greeting();
    if (provider != 0) {
        hello["provider"] = provider;
    }
    m_isGreeted = true;
    send({{"hello", std::move(hello)}});
}

void Replies::refuseGreeting(const PageError& error) {
    json hello = greeting();
    hello["error"] = error.json({});
    m_isGreeted = true;
    send({{"hello", std::move(hello)}});
}

const char* Replies::answer(std::uint64_t id, const std::string& member, json value) {
    json message = {{"id", id}, {"ok", true}};
    message["value"] = std::move(value);
    const std::string text = textOf(message);
    if (text.size() > kLongestReply) {
        refuse(id, member, {page_code::kTooLarge, "the result is larger than 64 MiB"});
        return page_code::kTooLarge;
    }
    const std::lock_guard lock(m_mutex);
    if (text.size() <= kLongestFrameOut) {
        m_isBroken = m_isBroken || !writeFrame(m_output, text);
    } else {
        sendParts(id, text);
    }
    return nullptr;
}

void Replies::refuse(std::uint64_t id, const std::string& member, const PageError& error) {
    send(refusal(id, member, error));
}

void Replies::send(const json& message) {
    const std::lock_guard lock(m_mutex);
    write(message);
}

void Replies::sendParts(std::uint64_t id, std::string_view reply) {
    try {
        while (!reply.empty()) {
            const std::string_view part = reply.substr(0, kPart);
            reply.remove_prefix(part.size());
            write({{"id", id}, {"part", toBase64Url(part)}, {"last", reply.empty()}});
        }
    } catch (...) {
        // Nothing may follow a part but the next one.
        m_isBroken = true;
        throw;
    }
}

void Replies::write(const json& message) {
    m_isBroken = m_isBroken || !writeFrame(m_output, textOf(message));
}

}  // namespace zr::host
