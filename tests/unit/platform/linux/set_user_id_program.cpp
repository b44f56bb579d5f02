// Exits with the length of the variable ZRKEY_HOME_X64 as the library reads it.
#include "platform/kernel.h"

int main() {
    char value[MAX_PATH];
    return static_cast<int>(GetEnvironmentVariableA("ZRKEY_HOME_X64", value, sizeof value));
}
