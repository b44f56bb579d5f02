// The objects of a connection, by their numbers.
#include "host/browser/page_objects.h"

#include <algorithm>
#include <string>
#include <utility>

#include "host/browser/page_error.h"

namespace zr::host {
namespace {

/// A text of a token; empty when it cannot be read.
std::string readText(Object& token, const char* member) {
    try {
        const Value value = callMember(token, *findMember(ObjectClass::kToken, member), {});
        return toUtf8(std::get<WideText>(value));
    } catch (const CallError&) {
        return {};
    }
}

std::shared_ptr<PageToken> makeToken(const ObjectRef& object) {
    auto token = std::make_shared<PageToken>();
    token->object = std::static_pointer_cast<TokenObject>(object);
    token->row.index = token->object->index();
    token->row.label = readText(*object, "GetLabel");
    token->row.serial = readText(*object, "GetSerialNumber");
    return token;
}

}  // namespace

std::uint64_t PageObjects::add(const ObjectRef& object, const PageObject* origin) {
    if (m_objects.size() == kMost) {
        throw PageError(page_code::kTooMany, "the connection has too many objects; close some");
    }
    PageObject added = {object, origin ? origin->token : nullptr};
    if (object->objectClass() == ObjectClass::kToken) {
        added.token = makeToken(object);
    }
    m_objects.emplace(++m_last, std::move(added));
    return m_last;
}

const PageObject& PageObjects::find(std::uint64_t number) const {
    const auto found = m_objects.find(number);
    if (found == m_objects.end()) {
        throw PageError(page_code::kClosed, wasClosed(number)
                                                ? "the object was closed"
                                                : "there is no object with this number");
    }
    return found->second;
}

std::shared_ptr<PageToken> PageObjects::tokenOf(const Object& object) const {
    const auto found = std::ranges::find_if(
        m_objects, [&](const auto& entry) { return entry.second.object.get() == &object; });
    return found == m_objects.end() ? nullptr : found->second.token;
}

bool PageObjects::wasClosed(std::uint64_t number) const {
    return number > 0 && number <= m_last && !m_objects.contains(number);
}

void PageObjects::remove(std::uint64_t number) {
    m_objects.erase(number);
}

void PageObjects::clear() {
    m_objects.clear();
}

}  // namespace zr::host
