// One connection of a page: the handshake, then one request after another.
#include "host/browser/connection.h"

#include <string_view>
#include <utility>

#include "host/browser/page_login.h"
#include "host/browser/page_members.h"
#include "host/browser/page_module.h"
#include "host/browser/page_signing.h"
#include "host/browser/page_values.h"
#include "host/objects/arguments.h"

namespace zr::host {
namespace {

using nlohmann::json;

constexpr const char* kOk = "ok";

/// The site of a handshake. Throws a PageError.
Origin readSite(const std::string& text) {
    std::string problem;
    const std::optional<Origin> origin = Origin::read(text, problem);
    if (!origin) {
        throw PageError(page_code::kNotAllowed, std::string("the origin ").append(problem));
    }
    if (origin->text() != text) {
        throw PageError(page_code::kNotAllowed, "the origin is not written as browsers write it");
    }
    return *origin;
}

/// The log has no text that a page made up.
std::string nameInLog(const std::string& text) {
    std::string problem;
    const std::optional<Origin> origin = Origin::read(text, problem);
    return origin ? origin->text() : "(invalid)";
}

}  // namespace

void Connection::run() {
    const std::optional<HelloMessage> hello = m_inbox.takeHello();
    if (hello && greet(*hello)) {
        std::vector<UploadChange> changes;
        while (!m_replies.isBroken() && !m_isDenied) {
            const std::optional<RequestMessage> request = m_inbox.take(changes);
            changeUploads(std::exchange(changes, {}));
            if (!request) {
                break;
            }
            serve(*request);
        }
    }
    close();
}

void Connection::noteLate(const std::string& member) {
    if (m_audit) {
        m_audit->note(member, page_code::kDeadline);
    }
}

bool Connection::greet(const HelloMessage& hello) {
    try {
        open(hello);
    } catch (...) {
        const PageError error = currentPageError();
        if (m_audit) {
            m_audit->note("connect", error.code());
        }
        m_replies.refuseGreeting(error);
        return false;
    }
    if (!m_audit) {
        m_replies.greet(0);
        return false;
    }
    m_audit->note("connect", kOk);
    m_replies.greet(m_provider);
    return true;
}

void Connection::open(const HelloMessage& hello) {
    std::filesystem::path folder;
    if (!hello.isCheck) {
        folder = m_surroundings.enterFolder();
        m_audit.emplace(folder, nameInLog(hello.origin));
    }
    if (hello.protocol != kProtocolVersion) {
        throw PageError(page_code::kUnsupported, "the host knows version 1 of the protocol");
    }
    const Origin origin = readSite(hello.origin);
    const SitePolicy policy = requireAllowed(origin);
    if (hello.isCheck) {
        return;
    }
    m_policyRead = std::chrono::steady_clock::now();
    m_session.emplace(origin, folder, policy, m_inbox, m_surroundings);
    if (!m_session->limits.takeConnection()) {
        throw PageError(page_code::kTooMany, "there are too many connections");
    }
    m_provider = m_session->timed([&] { return m_objects.add(loadPageModule(policy), nullptr); });
}

SitePolicy Connection::requireAllowed(const Origin& origin) const {
    SitePolicy policy = readPolicy(m_surroundings.readPolicy);
    if (!policy.allows(origin)) {
        throw PageError(page_code::kNotAllowed, "the site is not in the host's list, or is denied");
    }
    return policy;
}

/// The lists may have changed since the handshake.
void Connection::checkPolicy() {
    const auto now = std::chrono::steady_clock::now();
    if (now - m_policyRead < m_surroundings.policyAge) {
        return;
    }
    try {
        requireAllowed(m_session->prompts.origin());
    } catch (const PageError& error) {
        m_isDenied = error.isOneOf({page_code::kNotAllowed});
        throw;
    }
    m_policyRead = now;
}

void Connection::serve(const RequestMessage& request) {
    std::optional<PageObject> object;
    const std::uint64_t promptsBefore = m_session->prompts.count();
    m_isLoggedOut = false;
    const auto isOfUser = [&] {
        return m_isLoggedOut || m_session->prompts.count() != promptsBefore;
    };
    try {
        checkPolicy();
        json value = call(request, object);
        // Before the page has the result.
        note(request, kOk, isOfUser());
        if (const char* code = m_replies.answer(request.id, request.member, std::move(value))) {
            note(request, code, isOfUser());
        }
    } catch (...) {
        const PageError error = errorNow(object);
        note(request, error.code(), isOfUser());
        if (const std::uint64_t upload = request.appendedUpload()) {
            // What comes after the hole is not used.
            m_uploads.spoil(upload);
        }
        m_replies.refuse(request.id, request.member, error);
    }
    for (const std::uint64_t upload : request.uploads()) {
        m_uploads.take(upload);
    }
}

void Connection::changeUploads(const std::vector<UploadChange>& changes) {
    for (const UploadChange& change : changes) {
        if (change.isSpoiled) {
            m_uploads.spoil(change.number);
        } else {
            m_uploads.take(change.number);
        }
    }
}

json Connection::call(const RequestMessage& request, std::optional<PageObject>& object) {
    if (request.object == 0) {
        return callConnection(request);
    }
    const std::vector<Value> values = readArguments(request.arguments, m_objects, m_uploads);
    const bool isClose = request.member == kCloseMember;
    if (isClose && m_objects.wasClosed(request.object)) {
        return true;
    }
    object = m_objects.find(request.object);
    const Member* const member = findPageMember(object->object->objectClass(), request.member);
    if (!member) {
        throw PageError(page_code::kUnknownMember,
                        "the object has no such member, or a page may not call it");
    }
    const Value value = callObject(request, *object, *member, values);
    if (isClose) {
        m_objects.remove(request.object);
    }
    return m_session->timed([&] { return writeResult(value, m_objects, *object); });
}

json Connection::callConnection(const RequestMessage& request) {
    const ConnectionArguments arguments(request.arguments);
    if (request.member == "upload") {
        arguments.require(2);
        m_uploads.append(arguments.upload(0), arguments.bytes(1));
        return true;
    }
    if (request.member == "discard") {
        arguments.require(1);
        m_uploads.take(arguments.upload(0));
        return true;
    }
    throw PageError(page_code::kUnknownMember, "the connection has no such member");
}

Value Connection::callObject(const RequestMessage& request, const PageObject& object,
                             const Member& member, const std::vector<Value>& values) {
    PageToken* const token = object.token.get();
    Session& session = *m_session;
    const Activation activation = {request.isActive, request.arrival};
    if (&member == &loginMember()) {
        const Arguments arguments(member, values);
        logInByPrompt(*token, arguments, session.prompts, session.timed, activation);
        return true;
    }
    if (&member == &logoutMember()) {
        const Arguments arguments(member, values);
        m_isLoggedOut = token->isLoggedIn;
        session.timed([&] { logOut(*token, arguments); });
        return true;
    }
    if (object.object->objectClass() == ObjectClass::kToken && isSigning(member.name)) {
        return signByPrompt(*token, member, values, m_objects, session.prompts, session.timed,
                            activation, [&] { m_audit->note(member.name, "confirmed"); });
    }
    return session.timed([&] { return callMember(*object.object, member, values); });
}

PageError Connection::errorNow(const std::optional<PageObject>& object) const {
    PageError error = currentPageError();
    const bool mayBeRemoved = error.isOneOf({page_code::kRefused, page_code::kNotLoggedIn});
    if (mayBeRemoved && object && object->token &&
        m_session->timed([&] { return object->token->isRemoved(); })) {
        return {page_code::kTokenRemoved, "the token was removed"};
    }
    return error;
}

void Connection::note(const RequestMessage& request, const char* outcome, bool isOfUser) {
    const std::string member = isPageName(request.member) ? request.member : "(unknown)";
    if (isOfUser || m_noted.emplace(member, outcome).second) {
        m_audit->note(member, outcome);
    }
}

void Connection::close() {
    const bool wasOpen = m_provider != 0;
    m_inbox.beginClose();
    if (m_session) {
        m_session->timed([&] { m_objects.clear(); });
    }
    if (wasOpen) {
        m_audit->note("disconnect", kOk);
    }
    m_session.reset();
    m_inbox.finish();
}

}  // namespace zr::host
