// Measures the rows and writes them to a file, a line for each.
// usage: zrkey_bench RESULTS [--once] [ID...]     an ID may be the beginning of several
//
// Works in the current folder. ZRKEY_MODULE names a real token's module, for the rows "token/...". The
// library writes diagnostics to standard output, which goes to a file, as it does in many hosts.
#include <cstdio>
#include <exception>
#include <fstream>
#include <string>
#include <vector>

#include "bench/comparison.h"

int main(int argc, char** argv) {
    if (argc < 2) {
        std::fputs("usage: zrkey_bench RESULTS [--once] [ID...]\n", stderr);
        return 2;
    }
    std::vector<std::string> wanted(argv + 2, argv + argc);
    const bool isOnce = !wanted.empty() && wanted.front() == "--once";
    if (isOnce) {
        wanted.erase(wanted.begin());
    }
    std::FILE* results = std::fopen(argv[1], "w");
    if (!results || !std::freopen("console.txt", "w", stdout)) {
        std::fputs("cannot write here\n", stderr);
        return 1;
    }
    std::ofstream("config.xml") << "<driver><algo>SHA1WithRSA</algo><digest>MD5</digest></driver>";
    zr::bench::Bench bench(results, wanted, isOnce);
    zr::bench::allRows(bench);
    std::fclose(results);
    return bench.isComplete() ? 0 : 1;
}
