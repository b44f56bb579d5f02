// The examples at the end of each help page.
#include "host/commands/examples.h"

#include <array>

namespace zr::host {
namespace {

struct CommandExamples {
    const char* command;
    std::array<const char*, 2> lines;
};

constexpr CommandExamples kExamples[] = {
    {"", {"list --module /usr/lib/softhsm/libsofthsm2.so", "help file read"}},
    {"run", {"run --pin env:PIN first.js", "run -e 'print(arguments)' one two"}},
    {"shell", {"shell", "shell --module /usr/lib/softhsm/libsofthsm2.so --pin env:PIN"}},
    {"list", {"list", "list --module /usr/lib/softhsm/libsofthsm2.so --json"}},
    {"info", {"info", "info --label 'ZRKey Test' --json"}},
    {"login", {"login", "login --so --pin file:so-pin.txt"}},
    {"pin", {"pin change", "help pin change"}},
    {"pin change", {"pin change", "pin change --pin env:PIN --new-pin env:NEW_PIN"}},
    {"pin unblock", {"pin unblock", "pin unblock --pin file:so-pin.txt --new-pin env:NEW_PIN"}},
    {"file", {"file create 7 --pin env:PIN", "file read 8 --pin env:PIN -o content.bin"}},
    {"file list", {"file list", "file list --pin env:PIN --json"}},
    {"file exists", {"file exists 8", "file exists 8 --pin env:PIN --json"}},
    {"file read", {"file read 8 --format hex", "file read 8 --pin env:PIN -o content.bin"}},
    {"file create", {"file create 7", "file create 7 --pin env:PIN"}},
    {"file write",
     {"file write 8 -i content.bin --pin env:PIN", "file write 8 --pin env:PIN < content.bin"}},
    {"file delete", {"file delete 8", "file delete 8 --pin env:PIN"}},
    {"cert", {"cert list", "cert read --format pem"}},
    {"cert list", {"cert list", "cert list --pin env:PIN --json"}},
    {"cert read",
     {"cert read --format pem -o certificate.pem", "cert read --cert container1 --format text"}},
    {"sign",
     {"sign -i letter.txt -o letter.sig --pin env:PIN",
      "sign --algorithm rsa-sha256 -i letter.txt -o letter.sig --pin env:PIN"}},
    {"verify",
     {"verify -i letter.txt --signature letter.sig",
      "verify --algorithm rsa-sha256 -i letter.txt --signature letter.sig"}},
    {"digest", {"digest -i letter.txt", "digest --method SHA256 -i letter.txt"}},
    {"doctor", {"doctor", "doctor --module /usr/lib/softhsm/libsofthsm2.so --json"}},
    {"watch", {"watch", "watch --json --exec /usr/local/bin/token-changed"}},
    {"trace", {"trace -- login", "trace -- cert list"}},
    {"config", {"config path", "config init"}},
    {"config show", {"config show", "config show --workdir /srv/tokens --json"}},
    {"config init", {"config init", "config init --json"}},
    {"config path", {"config path", "config path --config other.xml"}},
    {"browser", {"browser install", "browser allow https://example.com"}},
    {"browser install", {"browser install", "browser install --system --browser chromium,firefox"}},
    {"browser uninstall", {"browser uninstall", "browser uninstall --browser firefox"}},
    {"browser status", {"browser status", "browser status --user --json"}},
    {"browser allow",
     {"browser allow https://example.com", "browser allow --system https://example.com:8443"}},
    {"browser deny",
     {"browser deny https://example.com", "browser deny --system https://example.com"}},
    {"browser forget",
     {"browser forget https://example.com", "browser forget --system https://example.com"}},
    {"browser list", {"browser list", "browser list https://example.com"}},
    {"browser module",
     {"browser module /usr/lib/softhsm/libsofthsm2.so", "browser module --remove"}},
    {"help", {"help list", "help pin change"}},
};

}  // namespace

std::vector<std::string> examplesOf(const std::string& command) {
    for (const CommandExamples& examples : kExamples) {
        if (examples.command == command) {
            return {examples.lines.begin(), examples.lines.end()};
        }
    }
    return {};
}

}  // namespace zr::host
