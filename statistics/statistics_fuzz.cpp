// Any four counters (and any earlier validity): the rates stay inside 0..100
// once clamped, the three shares always wrap to 100, and the chart geometry
// over them neither overflows nor draws a wedge strict mode refused.
#include "controls/pie_chart_geometry.h"
#include "statistics/statistics_core.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace velk::statistics;
    if (size < 16)
        return 0;
    std::int32_t v[4];
    std::memcpy(v, data, sizeof v);
    const Counters c{v[0], v[1], v[2], v[3]};
    const bool valid_before = size > 16 && (data[16] & 1) != 0;

    const Derived d = Derive(c);
    for (double rate : {d.detect_rate, d.fp_rate}) {
        const double shown = ClampPercent(rate);
        if (!(shown >= 0 && shown <= 100) || FormatRate(shown).size() > 8)
            std::abort();
    }
    const bool valid = ChartValidAfter(valid_before, c);
    if (valid && AnyNegative(c))
        std::abort();

    const Shares s = ChartShares(c, d);
    const std::uint32_t sum = static_cast<std::uint32_t>(s.normal) +
                              static_cast<std::uint32_t>(s.detected) +
                              static_cast<std::uint32_t>(s.reported);
    if (sum != 100)
        std::abort();

    const std::vector<std::int32_t> percents{s.normal, s.detected, s.reported};
    const auto wedges = velk::controls::SliceWedges(percents, true);
    std::size_t non_zero = 0;
    for (std::int32_t p : percents)
        non_zero += p != 0;
    if (wedges.size() != (velk::controls::AddsUpToHundred(percents) ? non_zero : 0))
        std::abort();
    if (velk::controls::LegendRows({300, 200}, 50, percents, true).size() != 3)
        std::abort();
    return 0;
}
