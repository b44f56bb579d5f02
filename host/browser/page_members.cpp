// What a page may call.
#include "host/browser/page_members.h"

#include <algorithm>
#include <optional>

#include "host/browser/base64url.h"
#include "host/browser/page_error.h"
#include "host/browser/page_login.h"
#include "host/browser/uploads.h"

namespace zr::host {

const Member* findPageMember(ObjectClass objectClass, std::string_view name) {
    if (objectClass == ObjectClass::kToken) {
        for (const Member* own : {&loginMember(), &logoutMember()}) {
            if (name == own->name) {
                return own;
            }
        }
    }
    const Member* const member = findMember(objectClass, name);
    return member && member->isForPages ? member : nullptr;
}

bool isPageName(std::string_view name) {
    constexpr ObjectClass kClasses[] = {ObjectClass::kProvider, ObjectClass::kToken,
                                        ObjectClass::kContainer, ObjectClass::kCertificate};
    return name == "upload" || name == "discard" ||
           std::ranges::any_of(kClasses, [name](ObjectClass objectClass) {
               return findPageMember(objectClass, name) != nullptr;
           });
}

void ConnectionArguments::require(std::size_t count) const {
    if (m_list.size() != count) {
        std::string message = "takes ";
        message.append(std::to_string(count)).append(count == 1 ? " argument" : " arguments");
        throw PageError(page_code::kArguments, message);
    }
}

std::uint64_t ConnectionArguments::upload(std::size_t index) const {
    const nlohmann::json& number = m_list.at(index);
    const bool isOne = number.is_number_unsigned() && number.get<std::uint64_t>() >= 1 &&
                       number.get<std::uint64_t>() <= Uploads::kMostUploads;
    if (!isOne) {
        throw PageError::wrongArgument(index, "is not a whole number from 1 to 16");
    }
    return number.get<std::uint64_t>();
}

std::string ConnectionArguments::bytes(std::size_t index) const {
    const nlohmann::json& argument = m_list.at(index);
    if (!argument.is_object() || !argument.contains("bytes")) {
        throw PageError::wrongArgument(index, "is not bytes");
    }
    std::optional<std::string> bytes =
        fromBase64Url(argument.at("bytes").get_ref<const std::string&>());
    if (!bytes) {
        throw PageError::wrongArgument(index, "is not base64url without padding");
    }
    return std::move(*bytes);
}

}  // namespace zr::host
