// The fault of a recording module: it waits for its call, then falsifies the answer.
#pragma once

#include "tests/support/recording/recording_fault.h"

class FaultInjector {
public:
    void set(const RecordingFault& fault) { *this = FaultInjector(fault); }
    bool wasHit() const { return m_wasHit; }

    FaultInjector() = default;

    /// @param nth  of all calls, from 1.
    /// @return the failure to return, or CKR_OK.
    CK_RV beginCall(unsigned int nth);

    /// @param result  of the completed call.
    /// @return the result to return.
    CK_RV endCall(CK_RV result);

    /// Whether this call zeroes the function list.
    bool clearsList();

    /// Falsifies the answer of this call.
    void lieAboutCount(CK_ULONG* count);
    /// @param room  bytes of the caller's buffer.
    void lieAboutLength(CK_ULONG* length, std::size_t index, CK_ULONG room);
    void lieAboutToken(CK_TOKEN_INFO* info);
    /// @param rooms  the lengths that the caller passed in.
    void lieAboutValues(CK_ATTRIBUTE* attributes, const CK_ULONG* rooms, CK_ULONG count);

private:
    explicit FaultInjector(const RecordingFault& fault) : m_fault(fault) {}

    bool is(RecordingFault::Kind kind) const { return m_isNow && m_fault.kind == kind; }

    RecordingFault m_fault = {};
    bool m_isNow = false;
    bool m_wasHit = false;
    bool m_fillsNext = false;
};
