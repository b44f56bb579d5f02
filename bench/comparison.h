// One row of the table: the library and a floor do the same work, in turns, in one process.
//
//     bench.row({"digest/md5", "EVP of libcrypto"}, [](Comparison& comparison) {
//         comparison.measure([&] { MD5Data(...); }, [&] { evpDigest(...); });
//     });
#pragma once

#include <cstdio>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

#include "bench/bench_system.h"

namespace zr::bench {

/// Keeps the compiler from leaving out the work that made a result.
inline void keep(const void* result) {
    asm volatile("" : : "r"(result) : "memory");
}

/// Ends the row when a call did not do its work: its time would mean nothing.
inline void require(bool isDone, const char* what) {
    if (!isDone) {
        throw std::runtime_error(what);
    }
}

/// What is said of the two times.
enum class Measure {
    kRatio,        ///< the library's time as a ratio to the floor's
    kAddedTime,    ///< how much longer the library takes, in ns
    kTime,         ///< the library's time, in ns
    kMemoryRatio,  ///< a ratio of sizes
    kMemory        ///< a size in MiB
};

struct Row {
    const char* id;     ///< what scripts/bench is given: "instant/sign"
    const char* floor;  ///< what the floor does; empty without a floor
    Measure measure = Measure::kRatio;
};

/// A median and the quartiles around it.
struct Spread {
    double median;
    double low;
    double high;
};

Spread spreadOf(std::vector<double> values);

/// Returns seconds.
using Clock = double (*)();

class Comparison {
public:
    /// @param isOnce  do everything one time only, as a test that it runs.
    Comparison(Measure measure, Clock clock, bool isOnce)
        : m_measure(measure), m_clock(clock), m_isOnce(isOnce) {}

    /// Measures two functions that do the work one time each.
    template <class Subject, class Floor>
    void measure(Subject subject, Floor floor) {
        run(repeating(subject), repeating(floor), nullptr);
    }
    /// As above, without a part of the first work: its time is measured too, and taken off.
    template <class Subject, class Floor, class Part>
    void measureWithout(Part part, Subject subject, Floor floor) {
        run(repeating(subject), repeating(floor), repeating(part));
    }
    /// Measures a function that no floor stands beside.
    template <class Subject>
    void measure(Subject subject) {
        run(repeating(subject), nullptr, nullptr);
    }
    /// Stores a result that was not found by a clock.
    void store(double result) { m_result = {result, result, result}; }

    /// Appends a line to a file: the fields of the row, divided by tabs.
    void write(const Row& row, std::FILE* file) const;

private:
    /// Does a work so many times.
    using Work = std::function<void(long times)>;

    template <class Function>
    static Work repeating(Function function) {
        return [function](long times) {
            for (; times > 0; --times) {
                function();
            }
        };
    }
    double secondsOf(const Work& work, long times) const;
    void run(const Work& subject, const Work& floor, const Work& part);
    long timesFor(const Work& work) const;
    double resultOf(double subject, double floor) const;

    Measure m_measure;
    Clock m_clock;
    bool m_isOnce;
    Spread m_result = {};
    double m_subject = 0;
    double m_floor = 0;
    std::size_t m_rounds = 0;
};

class Bench {
public:
    /// @param file    receives the results.
    /// @param wanted  beginnings of the IDs of the rows to measure; empty for all.
    Bench(std::FILE* file, std::vector<std::string> wanted, bool isOnce)
        : m_file(file), m_wanted(std::move(wanted)), m_isOnce(isOnce) {}

    /// Takes the times from another clock than currentSeconds.
    void useClock(Clock clock) { m_clock = clock; }
    /// Measures a row, when it is wanted. A row that fails is reported, and the others go on.
    void row(const Row& row, const std::function<void(Comparison&)>& fill);
    /// Whether every row could be measured, and there was one.
    bool isComplete() const { return !m_hasFailed && m_hasRun; }

private:
    bool wants(const std::string& id) const;

    std::FILE* m_file;
    std::vector<std::string> m_wanted;
    Clock m_clock = currentSeconds;
    bool m_isOnce;
    bool m_hasRun = false;
    bool m_hasFailed = false;
};

/// All rows of a program, which defines it.
void allRows(Bench& bench);

// The rows of one area each.
void signingRows(Bench& bench);
void containerRows(Bench& bench);
void moduleRows(Bench& bench);
void digestRows(Bench& bench);
void textRows(Bench& bench);
void logRows(Bench& bench);
void dispatchRows(Bench& bench);
void typeInformationRows(Bench& bench);

}  // namespace zr::bench
