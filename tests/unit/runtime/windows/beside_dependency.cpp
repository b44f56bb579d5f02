// beside_dependency.dll: beside_library.dll depends on it.
extern "C" __declspec(dllexport) int numberBeside() {
    return 42;
}
