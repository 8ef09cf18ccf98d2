#pragma once
// What the benchmark programs time with: a steady clock, milliseconds since a point, the median.
#include <algorithm>
#include <chrono>
#include <vector>

namespace oxbench {

using clock_type = std::chrono::steady_clock;

inline double millisecondsSince(clock_type::time_point start) {
    return std::chrono::duration<double, std::milli>(clock_type::now() - start).count();
}

/// The median; the middle pair's mean for an even count.
inline double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    const std::size_t n = values.size();
    return n % 2 == 1 ? values[n / 2] : 0.5 * (values[n / 2 - 1] + values[n / 2]);
}

} // namespace oxbench
