// scale PART AMOUNT: the library with the instant module, many times or with many objects. A part is
//   objects SAMPLES     as many certificates and files as ZRKEY_INSTANT_CERTIFICATES and
//                       ZRKEY_INSTANT_FILES say: all are listed, SAMPLES of each are opened
//   operations COUNT    each operation of every object COUNT times, with flat memory
//   threads ROUNDS      64 threads, each with a provider, a module, a token and a session of its own,
//                       which do the whole job
//   mixed SECONDS       operations in a random order, on objects that come and go, with flat memory.
//                       ZRKEY_SOAK_SEED repeats an order
// Fails when a result is wrong or memory or descriptors grow.
#include "tests/soak/scale.h"

#include <cstdlib>
#include <exception>
#include <map>
#include <string>

#include "tests/support/environment.h"
#include "tests/support/temp_dir.h"

namespace zr::test {

void forgetConsoleLines() {
    std::fflush(stdout);
    std::rewind(stdout);
}

namespace {

constexpr int kStandardOutput = 1;

using Part = bool (*)(std::FILE* report, long amount);

const std::map<std::string, Part> kParts = {{"objects", checkObjects},
                                            {"operations", checkOperations},
                                            {"threads", checkThreads},
                                            {"mixed", checkMixedWork}};

/// The library writes its diagnostics to standard output: a file that is removed at the end.
class QuietOutput {
public:
    QuietOutput() : m_saved(duplicate(kStandardOutput)), m_sink(temporaryFile()) {
        std::fflush(stdout);
        if (m_sink) {
            duplicateOnto(descriptorOf(m_sink), kStandardOutput);
        }
    }
    QuietOutput(const QuietOutput&) = delete;
    QuietOutput& operator=(const QuietOutput&) = delete;
    ~QuietOutput() {
        std::fflush(stdout);
        duplicateOnto(m_saved, kStandardOutput);
        closeDescriptor(m_saved);
        if (m_sink) {
            std::fclose(m_sink);
        }
    }

private:
    int m_saved;
    std::FILE* m_sink;
};

bool run(Part part, long amount) {
    const TempDir folder;
    folder.writeConfig();
    // Standard error is not buffered, and the library writes nothing there in these parts.
    const QuietOutput quiet;
    return part(stderr, amount);
}

}  // namespace
}  // namespace zr::test

int main(int argumentCount, char** arguments) {
    const auto part = zr::test::kParts.find(argumentCount == 3 ? arguments[1] : "");
    const long amount = argumentCount == 3 ? std::atol(arguments[2]) : 0;
    if (part == zr::test::kParts.end() || amount <= 0) {
        std::fprintf(stderr, "usage: scale objects|operations|threads|mixed AMOUNT\n");
        return 2;
    }
    try {
        return zr::test::run(part->second, amount) ? 0 : 1;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "scale: %s\n", error.what());
        return 1;
    }
}
