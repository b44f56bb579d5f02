// What the thread sanitizer must not report: the dynamic loader's memory is guarded by a lock of its
// own, which the sanitizer does not see.
extern "C" __attribute__((visibility("default"), used)) const char* __tsan_default_suppressions() {
    return "race:ld-linux\n";
}
