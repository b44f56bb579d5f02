// The fault of a recording module.
#include "tests/support/recording/fault_injector.h"

#include <cstring>

namespace {

constexpr CK_ULONG kUnterminatedLength = 200;

template <std::size_t Size>
void fillUp(CK_BYTE (&field)[Size]) {
    std::memset(field, 'A', Size);
}

}  // namespace

CK_RV FaultInjector::beginCall(unsigned int nth) {
    m_isNow = m_fault.kind != RecordingFault::kNone && m_fault.nth == nth;
    if (!is(RecordingFault::kFailure)) {
        return CKR_OK;
    }
    m_wasHit = true;
    return m_fault.result;
}

CK_RV FaultInjector::endCall(CK_RV result) {
    if (!is(RecordingFault::kLateFailure)) {
        return result;
    }
    m_wasHit = true;
    return m_fault.result;
}

bool FaultInjector::clearsList() {
    m_wasHit = m_wasHit || is(RecordingFault::kListCleared);
    return is(RecordingFault::kListCleared);
}

void FaultInjector::lieAboutCount(CK_ULONG* count) {
    if (is(RecordingFault::kCountZero)) {
        *count = 0;
    } else if (is(RecordingFault::kCountMore)) {
        ++*count;
    } else if (is(RecordingFault::kCountLargest)) {
        *count = ~CK_ULONG{0};
    } else {
        return;
    }
    m_wasHit = true;
}

void FaultInjector::lieAboutLength(CK_ULONG* length, std::size_t index, CK_ULONG room) {
    if (m_fault.index != index) {
        return;
    }
    if (is(RecordingFault::kLengthLess)) {
        --*length;
    } else if (is(RecordingFault::kLengthMore)) {
        ++*length;
    } else if (is(RecordingFault::kLengthZero)) {
        *length = 0;
    } else if (is(RecordingFault::kLengthUnavailable)) {
        *length = CK_UNAVAILABLE_INFORMATION;
    } else if (is(RecordingFault::kLengthLargest)) {
        *length = CK_UNAVAILABLE_INFORMATION - 1;
    } else if (is(RecordingFault::kLengthPastRoom)) {
        *length = room + 1;
    } else {
        return;
    }
    m_wasHit = true;
}

void FaultInjector::lieAboutToken(CK_TOKEN_INFO* info) {
    CK_ULONG total = info->ulTotalPublicMemory;
    CK_ULONG free = info->ulFreePublicMemory;
    lieAboutLength(&total, 0, 0);
    lieAboutLength(&free, 1, 0);
    info->ulTotalPublicMemory = total;
    info->ulFreePublicMemory = free;
    if (is(RecordingFault::kUnterminated)) {
        fillUp(info->label);
        fillUp(info->manufacturerID);
        fillUp(info->model);
        fillUp(info->serialNumber);
        m_wasHit = true;
    }
}

void FaultInjector::lieAboutValues(CK_ATTRIBUTE* attributes, const CK_ULONG* rooms,
                                   CK_ULONG count) {
    for (CK_ULONG i = 0; i < count; ++i) {
        CK_ULONG length = attributes[i].ulValueLen;
        lieAboutLength(&length, i, rooms[i]);
        attributes[i].ulValueLen = length;
    }
    if (m_fault.index >= count) {
        return;
    }
    CK_ATTRIBUTE& attribute = attributes[m_fault.index];
    if (is(RecordingFault::kUnterminated) && !attribute.pValue) {
        // A longer value is announced; the read that follows fills its buffer.
        attribute.ulValueLen = kUnterminatedLength;
        m_fillsNext = m_wasHit = true;
    } else if (is(RecordingFault::kUnterminated) || m_fillsNext) {
        if (attribute.pValue) {
            std::memset(attribute.pValue, 'A', rooms[m_fault.index]);
            attribute.ulValueLen = rooms[m_fault.index];
        }
        m_fillsNext = false;
        m_wasHit = true;
    }
}
