// Before a fuzzer begins: the library's lines on standard output go nowhere, and the one leak that is
// intended is not reported.
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
