// The rows that are measured on Windows: where the system's own functions do the work.
#include "bench/comparison.h"

namespace zr::bench {

void allRows(Bench& bench) {
    signingRows(bench);
    containerRows(bench);
    typeInformationRows(bench);
}

}  // namespace zr::bench
