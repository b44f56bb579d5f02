// Measuring a row: rounds in which library and floor take turns.
#include "bench/comparison.h"

#include <algorithm>

namespace zr::bench {
namespace {

constexpr double kSecondsOfRow = 1.2;
constexpr std::size_t kFewestRounds = 15;
constexpr std::size_t kMostRounds = 400;

const char* nameOf(Measure measure) {
    switch (measure) {
        case Measure::kAddedTime:
            return "added ns";
        case Measure::kTime:
            return "ns";
        case Measure::kMemory:
            return "MiB";
        default:
            return "ratio";
    }
}

}  // namespace

Spread spreadOf(std::vector<double> values) {
    if (values.empty()) {
        return {};
    }
    std::sort(values.begin(), values.end());
    const auto at = [&values](double part) {
        return values[static_cast<std::size_t>(part * static_cast<double>(values.size() - 1))];
    };
    return {at(0.5), at(0.25), at(0.75)};
}

/// The seconds that a work takes.
double Comparison::secondsOf(const Work& work, long times) const {
    const double begin = m_clock();
    work(times);
    return m_clock() - begin;
}

/// How many times a work fits into one turn.
long Comparison::timesFor(const Work& work) const {
    if (m_isOnce || !work) {
        return 1;
    }
    long times = 1;
    double seconds = secondsOf(work, times);
    while (seconds < kSecondsOfTurn / 4) {
        times *= 2;
        seconds = secondsOf(work, times);
    }
    const double fitting = static_cast<double>(times) * kSecondsOfTurn / seconds;
    return std::max(1L, static_cast<long>(fitting));
}

double Comparison::resultOf(double subject, double floor) const {
    switch (m_measure) {
        case Measure::kAddedTime:
            return subject - floor;
        case Measure::kTime:
            return subject;
        default:
            return subject / floor;
    }
}

void Comparison::run(const Work& subject, const Work& floor, const Work& part) {
    const long subjectTimes = timesFor(subject);
    const long floorTimes = timesFor(floor);
    const long partTimes = timesFor(part);
    std::vector<double> subjects;
    std::vector<double> floors;
    std::vector<double> results;
    const auto nanoseconds = [this](const Work& work, long times) {
        rewindConsole();
        return work ? secondsOf(work, times) * 1e9 / static_cast<double>(times) : 0;
    };
    const double begin = m_clock();
    do {
        // Each goes first every second time.
        const bool isFloorFirst = results.size() % 2 == 1;
        double floorTime = isFloorFirst ? nanoseconds(floor, floorTimes) : 0;
        const double subjectTime =
            nanoseconds(subject, subjectTimes) - nanoseconds(part, partTimes);
        floorTime = isFloorFirst ? floorTime : nanoseconds(floor, floorTimes);
        subjects.push_back(subjectTime);
        floors.push_back(floorTime);
        results.push_back(resultOf(subjectTime, floorTime));
    } while (!m_isOnce && results.size() < kMostRounds &&
             (results.size() < kFewestRounds || m_clock() - begin < kSecondsOfRow));
    m_result = spreadOf(results);
    m_subject = spreadOf(subjects).median;
    m_floor = spreadOf(floors).median;
    m_rounds = results.size();
}

void Comparison::write(const Row& row, std::FILE* file) const {
    std::fprintf(file, "%s\t%s\t%.6g\t%.6g\t%.6g\t%.6g\t%.6g\t%lu\t%s\n", row.id, nameOf(m_measure),
                 m_result.median, m_result.low, m_result.high, m_subject, m_floor,
                 static_cast<unsigned long>(m_rounds), row.floor);
    std::fflush(file);
}

bool Bench::wants(const std::string& id) const {
    return m_wanted.empty() ||
           std::any_of(m_wanted.begin(), m_wanted.end(),
                       [&id](const std::string& begin) { return id.rfind(begin, 0) == 0; });
}

void Bench::row(const Row& row, const std::function<void(Comparison&)>& fill) {
    if (!wants(row.id)) {
        return;
    }
    m_hasRun = true;
    Comparison comparison(row.measure, m_clock, m_isOnce);
    try {
        fill(comparison);
        comparison.write(row, m_file);
    } catch (const std::exception& error) {
        m_hasFailed = true;
        std::fprintf(stderr, "%s: %s\n", row.id, error.what());
    }
}

}  // namespace zr::bench
