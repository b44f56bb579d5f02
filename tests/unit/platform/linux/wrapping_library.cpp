// Depends on wrapped_library and does not export its function.
extern "C" int zrWrapper() {
    return 0;
}
