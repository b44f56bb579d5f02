// A full session over a module whose answers come from the input.
#include "tests/fuzz/fuzz_module.h"
#include "tests/fuzz/session.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace zr::fuzz;
    static const bool isPrepared = (writeConfig("<driver><algo>a</algo></driver>"), true);
    expect(isPrepared && !modulePath().empty());
    Input input(data, size);
    answerFrom(&input);
    {
        Session session(input);
        while (!input.isAtEnd()) {
            session.step();
        }
    }
    answerFrom(nullptr);
    return 0;
}
