// beside_library.dll: a library that loads only when the one beside it is found.
extern "C" __declspec(dllimport) int numberBeside();

extern "C" __declspec(dllexport) int numberOfTheOther() {
    return numberBeside();
}
