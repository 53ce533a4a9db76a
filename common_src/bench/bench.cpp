#include "common_src/bench/bench.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace velk::bench {

Stats Summarise(std::vector<double>& us) {
    Stats s;
    s.samples = us.size();
    if (us.empty()) return s;
    std::sort(us.begin(), us.end());
    auto at = [&](double q) {
        std::size_t i = static_cast<std::size_t>(std::ceil(q * us.size())) - 1;
        return us[std::min(i, us.size() - 1)];
    };
    s.min_us = us.front();
    s.max_us = us.back();
    s.median_us = us.size() % 2 ? us[us.size() / 2]
                                : (us[us.size() / 2 - 1] + us[us.size() / 2]) / 2;
    s.p99_us = at(0.99);
    return s;
}

void Report(const std::string& name, const Stats& s, const std::string& target) {
    std::printf("bench %s: median %.2f us, p99 %.2f us, min %.2f us, max %.2f us (n=%zu)%s%s\n",
                name.c_str(), s.median_us, s.p99_us, s.min_us, s.max_us, s.samples,
                target.empty() ? "" : "; target: ", target.c_str());
    std::fflush(stdout);
}

void ReportValue(const std::string& name, double value, const std::string& unit,
                 const std::string& target) {
    std::printf("bench %s: %.2f %s%s%s\n", name.c_str(), value, unit.c_str(),
                target.empty() ? "" : "; target: ", target.c_str());
    std::fflush(stdout);
}

}  // namespace velk::bench
