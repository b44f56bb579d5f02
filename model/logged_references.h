// Reference counting that is written to the log, for the classes that trace it.
#pragma once

#include "model/zr_log.h"
#include "runtime/component_impl.h"

namespace zr {

/// Adds a reference and logs the new count.
/// @param log    may be null: nothing is written then.
/// @param label  what stands before the count; the classes differ in it.
/// @return the new count.
inline ULONG addRefLogged(ZComponentImpl& object, const ZRLog* log, const char* className,
                          const char* label) {
    const ULONG count = object.ZComponentImpl::AddRef();
    if (log) {
        log->Log(0, "[%s:%u] [%s::AddRef] %s%lu\n", "AddRef", unsigned{__LINE__}, className, label,
                 static_cast<unsigned long>(count));
    }
    return count;
}

/// Gives a reference back; logs the call and the new count.
/// @param log  may be null: nothing is written then.
/// @return the new count; 0 when the object was destroyed.
inline ULONG releaseLogged(ZComponentImpl& object, const ZRLog* log, const char* className) {
    // The last release can destroy the object and, up the chain of owners, the logger with it; a
    // logger is no more than its path, so a copy writes the last line.
    const ZRLog kept = log ? *log : ZRLog();
    kept.Log(0, "[%s:%u] [%s::Release] call...\n", "Release", unsigned{__LINE__}, className);
    const ULONG count = object.ZComponentImpl::Release();
    kept.Log(0, "[%s:%u] [%s::Release] count=%lu\n", "Release", unsigned{__LINE__}, className,
             static_cast<unsigned long>(count));
    return count;
}

}  // namespace zr
