// Redirects a standard stream for a while.
#pragma once

#include "host/system/system.h"

namespace zr::test {

/// Redirects a standard stream until destruction.
class Redirection {
public:
    /// @param descriptor  closed.
    Redirection(int stream, int descriptor)
        : m_stream(stream), m_before(host::duplicateDescriptor(stream)) {
        host::redirectDescriptor(stream, descriptor);
        host::closeDescriptor(descriptor);
    }
    ~Redirection() {
        host::redirectDescriptor(m_stream, m_before);
        host::closeDescriptor(m_before);
    }
    Redirection(const Redirection&) = delete;
    Redirection& operator=(const Redirection&) = delete;

private:
    int m_stream;
    int m_before;
};

}  // namespace zr::test
