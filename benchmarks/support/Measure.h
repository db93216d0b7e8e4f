#pragma once

#include <algorithm>
#include <chrono>
#include <functional>
#include <vector>

namespace corvane {

[[nodiscard]] inline double milliseconds(const std::function<void()>& work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start)
        .count();
}

[[nodiscard]] inline double medianOf(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

/// The median of the ratios of two works that are done in turn.
[[nodiscard]] inline double ratio(const std::function<void()>& a, const std::function<void()>& b,
                                  int repeats = 7) {
    std::vector<double> ratios;
    for (int i = 0; i < repeats; ++i) {
        const double first = milliseconds(a);
        ratios.push_back(first / milliseconds(b));
    }
    return medianOf(std::move(ratios));
}

} // namespace corvane
