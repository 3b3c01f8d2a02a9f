#pragma once

#include <algorithm>
#include <cstddef>
#include <ctime>
#include <vector>

/// CPU time of this thread in microseconds.
inline double ThreadMicroseconds() {
    timespec time = {};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) * 1e6 + static_cast<double>(time.tv_nsec) / 1e3;
}

/// The value below which that share of the values lies.
inline double Percentile(std::vector<double> values, double share) {
    const auto index = static_cast<std::size_t>(share * static_cast<double>(values.size() - 1));
    std::nth_element(values.begin(), values.begin() + static_cast<std::ptrdiff_t>(index),
                     values.end());
    return values[index];
}
