// The expected calls and results of each operation.
#include "tests/faults/oracle.h"

#include <algorithm>

namespace zr::test {
namespace {

constexpr CK_ULONG kLongestValue = 256UL << 20;

}  // namespace

std::string textOf(const std::string& bytes) {
    return bytes.substr(0, bytes.find('\0'));
}

std::string callOf(const char* function, CK_SESSION_HANDLE session) {
    return std::string(function) + "(" + std::to_string(session);
}

std::string callOn(const char* function, CK_SESSION_HANDLE session, CK_OBJECT_HANDLE object) {
    return callOf(function, session) + ", " + std::to_string(object);
}

Values readAnnounced(Step& step, CK_SESSION_HANDLE session, CK_OBJECT_HANDLE object,
                     const RecordingAnswer& lengths, std::size_t first) {
    for (std::size_t i = first; i < lengths.valueCount; ++i) {
        if (lengths.values[i].length > kLongestValue) {
            return {};
        }
    }
    const RecordingAnswer read = step.call(callOn("C_GetAttributeValue", session, object) + ", ");
    if (read.result != CKR_OK) {
        return {};
    }
    std::vector<std::string> values(read.valueCount);
    for (std::size_t i = first; i < read.valueCount; ++i) {
        const RecordingAnswer::Value& value = read.values[i];
        const CK_ULONG announced = lengths.values[i].length;
        if (value.length == CK_UNAVAILABLE_INFORMATION) {
            return {};
        }
        step.equal("the buffer's size", static_cast<std::size_t>(announced), value.room);
        const std::size_t length = std::min<std::size_t>({value.length, announced, value.room});
        values[i].assign(reinterpret_cast<const char*>(value.bytes), length);
    }
    return values;
}

Values readValues(Step& step, CK_SESSION_HANDLE session, CK_OBJECT_HANDLE object, std::size_t count,
                  std::size_t first) {
    const RecordingAnswer lengths =
        step.call(callOn("C_GetAttributeValue", session, object) + ", ");
    if (lengths.result != CKR_OK) {
        return {};
    }
    step.equal("the number of attributes", count, lengths.valueCount);
    return readAnnounced(step, session, object, lengths, first);
}

void walkObjects(
    Step& step, CK_SESSION_HANDLE session, std::size_t attributeCount,
    const std::function<bool(CK_OBJECT_HANDLE, const std::vector<std::string>&)>& visit,
    std::size_t first) {
    for (;;) {
        const RecordingAnswer found = step.call(callOn("C_FindObjects", session, 1) + ")");
        if (found.result != CKR_OK || found.count != 1) {
            return;
        }
        const Values values = readValues(step, session, found.handle, attributeCount, first);
        if (!values || !visit(found.handle, *values)) {
            return;
        }
    }
}

void walkCertificates(
    Step& step, CK_SESSION_HANDLE session, std::size_t attributeCount,
    const std::function<bool(CK_OBJECT_HANDLE, const std::vector<std::string>&)>& visit) {
    step.call(callOf("C_FindObjectsInit", session) + ", {0x0=1 0x1=1})");
    walkObjects(step, session, attributeCount, visit);
    step.call(callOf("C_FindObjectsFinal", session) + ")");
}

CK_OBJECT_HANDLE findLabel(Step& step, CK_SESSION_HANDLE session, const std::string& label,
                           std::size_t attributeCount) {
    CK_OBJECT_HANDLE object = 0;
    const std::size_t last = attributeCount - 1;
    walkObjects(
        step, session, attributeCount,
        [&](CK_OBJECT_HANDLE handle, const std::vector<std::string>& values) {
            object = textOf(values[last]) == label ? handle : 0;
            return object == 0;
        },
        last);
    return object;
}

std::optional<CK_OBJECT_HANDLE> findKey(Step& step, CK_SESSION_HANDLE session, int keyClass,
                                        const std::string& id) {
    std::optional<CK_OBJECT_HANDLE> key;
    if (step.isOk(callOf("C_FindObjectsInit", session) + ", {0x0=" + std::to_string(keyClass) +
                  " 0x1=1 0x100=0})")) {
        walkObjects(step, session, 2,
                    [&](CK_OBJECT_HANDLE handle, const std::vector<std::string>& values) {
                        if (textOf(values[1]) == id) {
                            key = handle;
                        }
                        return !key;
                    });
    }
    step.call(callOf("C_FindObjectsFinal", session) + ")");
    return key;
}

}  // namespace zr::test
