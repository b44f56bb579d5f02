// What the start of the command is compared with: a program that writes one line. It is also linked with
// the command's libraries, which it does not use.
#include <iostream>

int main() {
    std::cout << "usage\n";
}
