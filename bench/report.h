// The rows of the table of benchmarks. Each program prints its own, cut into fields by tabs; scripts/bench gathers
// them.
#pragma once

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <vector>

namespace bench {

// Prints "row", the work, what it is held against, both figures, their unit and the goal for the first divided by the
// second (0 for none). Returns whether the goal is met.
inline bool row(const char* work, const char* against, double figure, double base, const char* unit, double goal) {
    std::printf("row\t%s\t%s\t%.5g\t%.5g\t%s\t%.2f\n", work, against, figure, base, unit, goal);
    std::fflush(stdout);
    return goal <= 0.0 || figure <= goal * base;
}

// Seconds of the processor that this program had: a busy machine does not count in them. What waits for others, as
// drawing on a real OpenGL does, is measured by the clock on the wall instead.
inline double processor_seconds() {
    timespec now{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

inline double milliseconds_since(std::chrono::steady_clock::time_point start) {
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
}

inline double median(std::vector<double> values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

}  // namespace bench
