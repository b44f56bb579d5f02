// Makes a module that cannot be loaded without the library of dependency.cpp.
int zrDependency();

int zrNeedsDependency() {
    return zrDependency();
}
