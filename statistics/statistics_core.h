// The arithmetic behind the statistics dialog: the values derived from the
// scanning process's four counters, the two rates and the chart's shares.
//
// The counters are 32-bit signed integers and every sum, difference and
// product of them wraps as such (the scanning process writes them so, and
// users compare the dialog with its figures). The wrapping is done on
// unsigned integers here, so it is defined behaviour.
//
// Platform-free.
#pragma once

#include <cstdint>
#include <string>

namespace velk::statistics {

// As read from [Statistics] of the user's settings file.
struct Counters {
    std::int32_t processed = 0;      // A, "ProcessedMsg"
    std::int32_t detected = 0;       // B, "DetectedSpam"
    std::int32_t reported_spam = 0;  // C, "ReportedSpam"
    std::int32_t reported_fp = 0;    // D, "ReportedFP"
};

struct Derived {
    std::int32_t real_spam = 0;  // E = B + C - D: spam received in fact
    std::int32_t normal = 0;     // F = A - E: normal mail
    // In percent, as computed: may be negative, above 100 or infinite
    // until clamped for display.
    double detect_rate = 0;  // G = (B - D) / (B + C) x 100, 0 when B - D < 1
    double fp_rate = 0;      // H = D / B x 100, 0 when D < 1
};

Derived Derive(const Counters& c);

bool AnyNegative(const Counters& c);
bool AllZero(const Counters& c);

// Whether the chart can be drawn after reading `c`: a negative counter
// makes the data invalid, all zero (a fresh start or a reset) makes it valid
// again, anything else keeps what it was.
bool ChartValidAfter(bool valid_before, const Counters& c);

// Into 0..100 (an infinite rate becomes 100).
double ClampPercent(double percent);

// A rate as the labels show it: "66.667%".
std::wstring FormatRate(double percent);

// Rounds half up the way the chart always has: truncate, then add one when
// the dropped fraction is at least one half. Values outside int are held at
// its limits.
std::int32_t RoundHalfUp(double value);

// The chart's three slices in drawing order. T = F + C + B; the report share
// R = C x 100 / T and the detection share P = B x 100 / T, each rounded half
// up, both 0 when T is 0; normal mail takes 100 - P - R. The products C x 100
// and B x 100 are 32-bit and wrap.
struct Shares {
    std::int32_t normal = 0;    // 100 - P - R
    std::int32_t detected = 0;  // P
    std::int32_t reported = 0;  // R
};

Shares ChartShares(const Counters& c, const Derived& d);

// The first occurrence of `token` in `text` replaced by `value` (the
// heading's product word); `text` unchanged when absent or `value` empty.
std::wstring ReplaceFirst(const std::wstring& text, const std::wstring& token,
                          const std::wstring& value);

}  // namespace velk::statistics
