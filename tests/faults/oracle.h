// The expected calls and results of each operation for given answers of the module. Derived from
// the documented behaviour, not from the implementation.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "tests/faults/step.h"

namespace zr::test {

/// The values of attributes as they were read; nullopt when the read failed.
using Values = std::optional<std::vector<std::string>>;

/// The text of bytes: up to the first zero.
std::string textOf(const std::string& bytes);

/// The beginning of a call's line, up to the object: "C_SignInit(1, 6/0, 3)".
std::string callOn(const char* function, CK_SESSION_HANDLE session, CK_OBJECT_HANDLE object);
std::string callOf(const char* function, CK_SESSION_HANDLE session);

/// Lengths are read first, then values. A value that is shorter than its announced length stays
/// shorter; an unavailable length, or one over 256 MiB, fails the read.
/// @param first  the attributes before it are not read.
Values readValues(Step& step, CK_SESSION_HANDLE session, CK_OBJECT_HANDLE object, std::size_t count,
                  std::size_t first = 0);
Values readAnnounced(Step& step, CK_SESSION_HANDLE session, CK_OBJECT_HANDLE object,
                     const RecordingAnswer& lengths, std::size_t first = 0);

/// Objects one at a time, each with its values, until visit returns false, a call fails, or the
/// count is not 1.
void walkObjects(
    Step& step, CK_SESSION_HANDLE session, std::size_t attributeCount,
    const std::function<bool(CK_OBJECT_HANDLE, const std::vector<std::string>&)>& visit,
    std::size_t first = 0);

/// All certificates: the result of C_FindObjectsInit does not matter, and the search is closed.
void walkCertificates(
    Step& step, CK_SESSION_HANDLE session, std::size_t attributeCount,
    const std::function<bool(CK_OBJECT_HANDLE, const std::vector<std::string>&)>& visit);

/// The look-up of a file, without its end: the object with a label.
CK_OBJECT_HANDLE findLabel(Step& step, CK_SESSION_HANDLE session, const std::string& label,
                           std::size_t attributeCount);

/// The key of a container; the search is closed, also one that could not be begun.
/// @param keyClass  2 public, 3 private.
std::optional<CK_OBJECT_HANDLE> findKey(Step& step, CK_SESSION_HANDLE session, int keyClass,
                                        const std::string& id);

}  // namespace zr::test
