// What the start of the command is compared with: a program that writes one line.
#include <iostream>

int main() {
    std::cout << "usage\n";
}
