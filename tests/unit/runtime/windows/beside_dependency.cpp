// beside_dependency.dll: what beside_library.dll needs, in the same folder.
extern "C" __declspec(dllexport) int numberBeside() {
    return 42;
}
