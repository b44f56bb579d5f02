// beside_library.dll: depends on beside_dependency.dll in the same folder.
extern "C" __declspec(dllimport) int numberBeside();

extern "C" __declspec(dllexport) int numberOfTheOther() {
    return numberBeside();
}
