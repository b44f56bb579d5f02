// Reference counting that is written to the log, for the classes that trace it.
#pragma once

#include "model/zr_log.h"
#include "runtime/component_impl.h"

namespace zr {

/// @param label  what stands before the count: "TokenProvider::AddRef] count=".
inline ULONG addRefLogged(ZComponentImpl& object, const ZRLog* log, const char* label,
                          unsigned int line = __builtin_LINE()) {
    const ULONG count = object.ZComponentImpl::AddRef();
    if (log) {
        log->Log(0, "[%s:%u] [%s%lu\n", "AddRef", line, label,
                 static_cast<unsigned long>(count));
    }
    return count;
}

/// @param label  the class's name.
inline ULONG releaseLogged(ZComponentImpl& object, const ZRLog* log, const char* label,
                           unsigned int line = __builtin_LINE()) {
    // The last release can destroy the object and, up the chain of owners, the logger with it; a
    // logger is no more than its path, so a copy writes the last line.
    const ZRLog kept = log ? *log : ZRLog();
    kept.Log(0, "[%s:%u] [%s::Release] call...\n", "Release", line, label);
    const ULONG count = object.ZComponentImpl::Release();
    kept.Log(0, "[%s:%u] [%s::Release] count=%lu\n", "Release", line, label,
             static_cast<unsigned long>(count));
    return count;
}

}  // namespace zr
