// A variable of a test module: 0 whenever the module is newly loaded.
extern "C" __attribute__((visibility("default"), used)) int* GetModuleMark() {
    static int s_mark = 0;
    return &s_mark;
}
