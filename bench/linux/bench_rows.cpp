// The rows that are measured on Linux.
#include "bench/comparison.h"

namespace zr::bench {

void allRows(Bench& bench) {
    signingRows(bench);
    containerRows(bench);
    moduleRows(bench);
    digestRows(bench);
    textRows(bench);
    logRows(bench);
    dispatchRows(bench);
}

}  // namespace zr::bench
