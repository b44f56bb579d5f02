// A library that dependent_module needs, to find out where the system looks for it.
int zrDependency() {
    return 1;
}
