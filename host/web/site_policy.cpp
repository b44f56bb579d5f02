// What the settings of the user and of the system say together.
#include <algorithm>
#include <utility>

#include "host/web/browser_settings.h"
#include "host/web/extension_ids.h"

namespace zr::host {
namespace {

constexpr unsigned kDefaultCallSeconds = 60;

template <class Entry>
bool contains(const std::vector<Entry>& list, const Entry& entry) {
    return std::find(list.begin(), list.end(), entry) != list.end();
}

std::string firstOf(const std::optional<std::string>& user,
                    const std::optional<std::string>& system) {
    return user ? *user : system.value_or("");
}

}  // namespace

SitePolicy SitePolicy::read() {
    BrowserSettings system = readSettings(SettingsScope::kSystem);
    return {std::move(system), readSettings(SettingsScope::kUser)};
}

SitePolicy::SitePolicy(BrowserSettings system, BrowserSettings user)
    : m_system(std::move(system)), m_user(std::move(user)) {}

SiteVerdict SitePolicy::verdict(const Origin& origin) const {
    if (contains(m_system.deny, origin)) {
        return SiteVerdict::kDeniedBySystem;
    }
    if (contains(m_user.deny, origin)) {
        return SiteVerdict::kDeniedByUser;
    }
    if (contains(m_system.allow, origin)) {
        return SiteVerdict::kAllowedBySystem;
    }
    if (!contains(m_user.allow, origin)) {
        return SiteVerdict::kNotListed;
    }
    return m_system.usersMayAllow ? SiteVerdict::kAllowedByUser : SiteVerdict::kUsersMayNotAllow;
}

bool SitePolicy::allows(const Origin& origin) const {
    const SiteVerdict found = verdict(origin);
    return found == SiteVerdict::kAllowedBySystem || found == SiteVerdict::kAllowedByUser;
}

bool SitePolicy::knowsExtension(const std::string& id) const {
    return contains(ownExtensions(), id) || contains(m_system.extensions, id) ||
           (m_system.usersMayAllow && contains(m_user.extensions, id));
}

std::string SitePolicy::module() const {
    return firstOf(m_user.module, m_system.module);
}

std::string SitePolicy::configuration() const {
    return firstOf(m_user.configuration, m_system.configuration);
}

std::string SitePolicy::pinentry() const {
    return firstOf(m_user.pinentry, m_system.pinentry);
}

unsigned SitePolicy::callSeconds() const {
    return m_user.callSeconds ? *m_user.callSeconds
                              : m_system.callSeconds.value_or(kDefaultCallSeconds);
}

}  // namespace zr::host
