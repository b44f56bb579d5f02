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

/// A failure, and what it left behind.
Failure leaving(Failure failure, const std::string& left) {
    failure.cause.append("; ").append(left);
    return failure;
}

Failure otherBytes(DirectSession& direct) {
    return commandFailure(kExitFailure, direct.asked(),
                          "the module stored other bytes than it was given",
                          "the token may not keep files of this size");
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
    const Failure failure = result != CKR_OK ? direct.failure(result) : otherBytes(direct);
    throw direct->destroy(made) == CKR_OK
        ? failure
        : leaving(failure, "what it stored stays under the same number");
}

/// Whether an object is still there: a module may report a failure after it has deleted it.
bool isThere(DirectSession& direct, CK_OBJECT_HANDLE object) {
    AttributeValues values;
    return direct->read(object, {CKA_LABEL}, values) == CKR_OK && values[0].has_value();
}

void replace(DirectSession& direct, CK_OBJECT_HANDLE old, const std::string& content) {
    const CK_OBJECT_HANDLE made = makeObject(direct, attributesLike(direct, old, content), content);
    const CK_RV result = direct->destroy(old);
    if (result == CKR_OK) {
        return;
    }
    // Names the call that failed, before there are others.
    const Failure failure = direct.failure(result);
    if (!isThere(direct, old)) {
        throw leaving(failure, "the file has the new content");
    }
    if (direct->destroy(made) != CKR_OK) {
        throw leaving(failure, "the old content stays beside the new one, under the same number");
    }
    throw leaving(failure, "the file is as it was");
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

bool isStored(DirectSession& direct, CK_OBJECT_HANDLE object, const std::string& content) {
    AttributeValues values;
    direct.require(direct->read(object, {CKA_VALUE}, values));
    return values[0] == content;
}

/// Changes the value of an object.
/// @return the module's result when it refuses; the value is the old one then.
CK_RV changeValue(DirectSession& direct, CK_OBJECT_HANDLE object, const std::string& content) {
    AttributeValues before;
    direct.require(direct->read(object, {CKA_VALUE}, before));
    const std::string old = before[0].value_or("");
    const CK_RV result = direct->set(object, {{CKA_VALUE, content}});
    if (result != CKR_OK || isStored(direct, object, content)) {
        return result;
    }
    const bool isRestored =
        direct->set(object, {{CKA_VALUE, old}}) == CKR_OK && isStored(direct, object, old);
    throw leaving(otherBytes(direct),
                  isRestored ? "the file is as it was" : "the old content is lost");
}

}  // namespace

std::vector<TokenFile> listFiles(DirectSession& direct) {
    std::vector<CK_OBJECT_HANDLE> objects;
    direct.require(direct->find(fileAttributes(), objects));
    std::vector<TokenFile> files;
    for (const CK_OBJECT_HANDLE object : objects) {
        stopIfInterrupted();
        AttributeValues values;
        direct.require(direct->read(object, {CKA_LABEL, CKA_PRIVATE}, values));
        const std::optional<unsigned> number = numberOf(values[0].value_or(""));
        if (!number) {
            continue;
        }
        // Not of the others, which may be of any size.
        AttributeValues content;
        direct.require(direct->read(object, {CKA_VALUE}, content));
        files.push_back({object, *number, content[0].value_or("").size(), isTrue(values[1])});
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
    const CK_RV result = changeValue(direct, object, content);
    if (result == CKR_OK) {
        return WrittenFile::kChanged;
    }
    if (!mayBeUnchangeable(result)) {
        throw direct.failure(result);
    }
    replace(direct, object, content);
    return WrittenFile::kReplaced;
}

void deleteTokenFile(DirectSession& direct, unsigned number) {
    std::vector<CK_OBJECT_HANDLE> objects;
    direct.require(direct->find(fileAttributes(), objects));
    for (const CK_OBJECT_HANDLE object : objects) {
        stopIfInterrupted();
        AttributeValues values;
        direct.require(direct->read(object, {CKA_LABEL}, values));
        // No object has the handle 0: do not let the module guess what to destroy.
        if (object != 0 && numberOf(values[0].value_or("")) == number) {
            direct.require(direct->destroy(object));
            return;
        }
    }
    throw commandFailure(kExitNotFound, direct.asked(), "no file has this number",
                         "another program may have deleted it");
}

}  // namespace zr::host
