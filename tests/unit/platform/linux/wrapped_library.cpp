// Exports a function that callers look up in the library that depends on this one.
extern "C" int zrWrappedFunction() {
    return 7;
}
