// A variable of a test module: 0 after each new load of the module.
extern "C" __attribute__((visibility("default"), used)) int* GetModuleMark() {
    static int s_mark = 0;
    return &s_mark;
}
