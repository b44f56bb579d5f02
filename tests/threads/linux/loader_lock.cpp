// Makes the order of loading and unloading visible to the thread sanitizer. The dynamic loader's own lock
// orders a module's constructors before its calls in other threads, and those before its destructors,
// but the sanitizer does not see that lock. Every dlopen and dlclose of the process takes this one too.
#include <dlfcn.h>

#include <mutex>

namespace {

std::recursive_mutex& loaderLock() {
    static std::recursive_mutex lock;
    return lock;
}

}  // namespace

extern "C" __attribute__((visibility("default"))) void* dlopen(const char* file,
                                                               int mode) noexcept {
    static const auto next = reinterpret_cast<decltype(&dlopen)>(dlsym(RTLD_NEXT, "dlopen"));
    const std::lock_guard<std::recursive_mutex> lock(loaderLock());
    return next(file, mode);
}

extern "C" __attribute__((visibility("default"))) int dlclose(void* library) noexcept {
    static const auto next = reinterpret_cast<decltype(&dlclose)>(dlsym(RTLD_NEXT, "dlclose"));
    const std::lock_guard<std::recursive_mutex> lock(loaderLock());
    return next(library);
}
