// A library that is no Cryptoki module: it has no C_GetFunctionList.
extern "C" __attribute__((visibility("default"), used)) int noCryptoki() {
    return 0;
}
