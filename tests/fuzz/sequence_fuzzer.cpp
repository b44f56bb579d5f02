// Several providers over two modules that are really loaded and unloaded, in any order of steps.
#include "tests/fuzz/sequence.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace zr::fuzz;
    static const bool isPrepared = (writeConfig("<driver><algo>a</algo></driver>"), true);
    expect(isPrepared);
    static Stateful first('a');
    static Stateful second('b');
    Modules modules;
    modules.all = {&first, &second};
    Input input(data, size);
    Sequence sequence(input, modules);
    while (!input.isAtEnd()) {
        sequence.step();
    }
    sequence.finish();
    return 0;
}
