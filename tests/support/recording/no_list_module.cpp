// A library without C_GetFunctionList: not a Cryptoki module.
extern "C" __attribute__((visibility("default"), used)) int noCryptoki() {
    return 0;
}
