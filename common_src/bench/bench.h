// A small timing harness shared by every benchmark, native and under Wine.
// Each sample times one call; the report gives the median and the 99th
// percentile, which is what the targets of the project are stated in.
#pragma once

#include <chrono>
#include <cstddef>
#include <string>
#include <vector>

namespace velk::bench {

struct Stats {
    std::size_t samples = 0;
    double min_us = 0;
    double median_us = 0;
    double p99_us = 0;
    double max_us = 0;
};

// Summarises raw per-sample durations in microseconds (the vector is sorted).
Stats Summarise(std::vector<double>& samples_us);

// Times `fn` `samples` times, one call per sample, after `warmup` untimed calls.
template <class F>
Stats Measure(std::size_t samples, F&& fn, std::size_t warmup = 3) {
    for (std::size_t i = 0; i < warmup; ++i) fn();
    std::vector<double> us;
    us.reserve(samples);
    for (std::size_t i = 0; i < samples; ++i) {
        auto t0 = std::chrono::steady_clock::now();
        fn();
        auto t1 = std::chrono::steady_clock::now();
        us.push_back(std::chrono::duration<double, std::micro>(t1 - t0).count());
    }
    return Summarise(us);
}

// Prints one line: "bench <name>: median X us, p99 Y us, min, max (n=N)",
// followed by the target when one is given ("target: ...").
void Report(const std::string& name, const Stats& stats, const std::string& target = "");

// Prints a free-form figure: "bench <name>: <value> <unit>".
void ReportValue(const std::string& name, double value, const std::string& unit,
                 const std::string& target = "");

}  // namespace velk::bench
