// The files of the library as data objects of the token.
#include "host/token/token_files.h"

#include <algorithm>
#include <iterator>
#include <optional>

#include "host/system/interruption.h"
#include "host/token/cryptoki_names.h"
#include "host/token/pkcs11_header.h"

namespace zr::host {
namespace {

constexpr unsigned long kLastLabel = 65535;

/// The number by which the library finds an object with this label; nullopt: it does not.
std::optional<unsigned> numberOf(const std::string& label) {
    // The library compares up to the first zero.
    const std::string text = label.substr(0, label.find('\0'));
    constexpr std::size_t kMostDigits = 5;
    const bool isNumber = !text.empty() && text.size() <= kMostDigits &&
                          (text == "0" || text.front() != '0') &&
                          text.find_first_not_of("0123456789") == std::string::npos;
    const unsigned long number = isNumber ? std::stoul(text) : 0;
    return isNumber && number <= kLastLabel ? std::optional<unsigned>(number + 1) : std::nullopt;
}

/// What another program may have set, and a new object keeps.
constexpr CK_ATTRIBUTE_TYPE kKept[] = {CKA_PRIVATE, CKA_MODIFIABLE, CKA_LABEL, CKA_APPLICATION,
                                       CKA_OBJECT_ID};

Attributes fileAttributes() {
    return {numberAttribute(CKA_CLASS, CKO_DATA), truthAttribute(CKA_TOKEN, true)};
}

/// The attributes of a new object in the place of another one.
Attributes attributesLike(DirectSession& direct, CK_OBJECT_HANDLE old, const std::string& content) {
    AttributeValues values;
    direct.require(direct->read(old, {std::begin(kKept), std::end(kKept)}, values));
    Attributes attributes = fileAttributes();
    for (std::size_t i = 0; i < std::size(kKept); ++i) {
        if (values[i] && !values[i]->empty()) {
            attributes.push_back({kKept[i], *values[i]});
        }
    }
    attributes.push_back({CKA_VALUE, content});
    return attributes;
}

/// The failure of the last call, and what it left behind.
Failure failureLeaving(DirectSession& direct, CK_RV result, const std::string& left) {
    Failure failure = direct.failure(result);
    failure.cause.append("; ").append(left);
    return failure;
}

/// Makes an object with content and reads it again: a module may cut a value without saying so.
CK_OBJECT_HANDLE makeObject(DirectSession& direct, const Attributes& attributes,
                            const std::string& content) {
    CK_OBJECT_HANDLE made = 0;
    direct.require(direct->create(attributes, made));
    AttributeValues values;
    const CK_RV result = direct->read(made, {CKA_VALUE}, values);
    if (result == CKR_OK && values[0] == content) {
        return made;
    }
    const Failure failure = result != CKR_OK
                                ? direct.failure(result)
                                : commandFailure(kExitFailure, direct.asked(),
                                                 "the module stored other bytes than it was given",
                                                 "the token may not keep files of this size");
    direct->destroy(made);
    throw failure;
}

void replace(DirectSession& direct, CK_OBJECT_HANDLE old, const std::string& content) {
    const CK_OBJECT_HANDLE made = makeObject(direct, attributesLike(direct, old, content), content);
    const CK_RV result = direct->destroy(old);
    if (result == CKR_OK) {
        return;
    }
    const Failure kept = failureLeaving(direct, result, "the file is as it was");
    if (direct->destroy(made) != CKR_OK) {
        throw failureLeaving(direct, result,
                             "the old content stays beside the new one, under the same number");
    }
    throw kept;
}

/// Whether a refusal may mean that the module changes no values, and not that something went wrong
/// which a new object would meet too.
bool mayBeUnchangeable(CK_RV result) {
    constexpr CK_RV kOthers[] = {CKR_HOST_MEMORY,           CKR_DEVICE_ERROR,
                                 CKR_DEVICE_MEMORY,         CKR_OBJECT_HANDLE_INVALID,
                                 CKR_USER_NOT_LOGGED_IN,    CKR_SESSION_READ_ONLY,
                                 CKR_TOKEN_WRITE_PROTECTED, CKR_CRYPTOKI_NOT_INITIALIZED};
    return !isTokenGone(result) && std::ranges::find(kOthers, result) == std::end(kOthers);
}

void requireStored(DirectSession& direct, CK_OBJECT_HANDLE object, const std::string& content) {
    AttributeValues values;
    direct.require(direct->read(object, {CKA_VALUE}, values));
    if (values[0] != content) {
        throw commandFailure(kExitFailure, direct.asked(),
                             "the module stored other bytes than it was given; the old content is "
                             "lost",
                             "the token may not keep files of this size");
    }
}

}  // namespace

std::vector<TokenFile> listFiles(DirectSession& direct) {
    std::vector<CK_OBJECT_HANDLE> objects;
    direct.require(direct->find(fileAttributes(), objects));
    std::vector<TokenFile> files;
    for (const CK_OBJECT_HANDLE object : objects) {
        stopIfInterrupted();
        AttributeValues values;
        direct.require(direct->read(object, {CKA_LABEL, CKA_PRIVATE, CKA_VALUE}, values));
        const std::optional<unsigned> number = numberOf(values[0].value_or(""));
        if (number) {
            files.push_back({object, *number, values[2].value_or("").size(), isTrue(values[1])});
        }
    }
    return files;
}

WrittenFile writeTokenFile(DirectSession& direct, unsigned number, const std::string& content) {
    std::vector<TokenFile> files = listFiles(direct);
    std::erase_if(files, [&](const TokenFile& file) { return file.number != number; });
    if (files.size() > 1) {
        throw commandFailure(kExitNotFound, direct.asked(),
                             std::to_string(files.size()) + " files have this number",
                             "delete all but one with zrkey file delete");
    }
    if (files.empty()) {
        Attributes attributes = fileAttributes();
        attributes.push_back({CKA_LABEL, std::to_string(number - 1)});
        attributes.push_back({CKA_VALUE, content});
        makeObject(direct, attributes, content);
        return WrittenFile::kCreated;
    }
    const CK_OBJECT_HANDLE object = files.front().object;
    const CK_RV result = direct->set(object, {{CKA_VALUE, content}});
    if (result == CKR_OK) {
        requireStored(direct, object, content);
        return WrittenFile::kChanged;
    }
    if (!mayBeUnchangeable(result)) {
        throw direct.failure(result);
    }
    replace(direct, object, content);
    return WrittenFile::kReplaced;
}

}  // namespace zr::host
