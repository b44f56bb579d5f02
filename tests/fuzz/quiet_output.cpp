// Runs before the fuzzer: discards the library's lines on standard output and suppresses the
// intended leak.
#include <cstdio>
#include <cstdlib>

extern "C" const char* __lsan_default_suppressions() {
    return "leak:KeyObject_pkcs11::DeleteFile\n";
}

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    if (!std::freopen("/dev/null", "w", stdout)) {
        std::abort();
    }
    return 0;
}
