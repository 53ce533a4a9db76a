#include "statistics/statistics_core.h"

#include <cstdio>
#include <limits>

namespace velk::statistics {

namespace {

std::int32_t Wrap(std::uint32_t v) {
    return static_cast<std::int32_t>(v);
}
std::int32_t Add(std::int32_t a, std::int32_t b) {
    return Wrap(static_cast<std::uint32_t>(a) + static_cast<std::uint32_t>(b));
}
std::int32_t Sub(std::int32_t a, std::int32_t b) {
    return Wrap(static_cast<std::uint32_t>(a) - static_cast<std::uint32_t>(b));
}
std::int32_t Times100(std::int32_t a) {
    return Wrap(static_cast<std::uint32_t>(a) * 100u);
}

// numerator / denominator x 100 for a numerator of at least 1: a zero
// denominator gives an infinite rate, which the display clamps to 100.
double Rate(std::int32_t numerator, std::int32_t denominator) {
    if (denominator == 0)
        return std::numeric_limits<double>::infinity();
    return static_cast<double>(numerator) / static_cast<double>(denominator) * 100;
}

}  // namespace

Derived Derive(const Counters& c) {
    Derived d;
    d.real_spam = Sub(Add(c.detected, c.reported_spam), c.reported_fp);
    d.normal = Sub(c.processed, d.real_spam);
    // The denominators are B + C and B, not E and F as the log lines name
    // them: the rates have always been computed so.
    const std::int32_t confirmed = Sub(c.detected, c.reported_fp);
    d.detect_rate = confirmed < 1 ? 0 : Rate(confirmed, Add(c.detected, c.reported_spam));
    d.fp_rate = c.reported_fp < 1 ? 0 : Rate(c.reported_fp, c.detected);
    return d;
}

bool AnyNegative(const Counters& c) {
    return c.processed < 0 || c.detected < 0 || c.reported_spam < 0 || c.reported_fp < 0;
}

bool AllZero(const Counters& c) {
    return c.processed == 0 && c.detected == 0 && c.reported_spam == 0 && c.reported_fp == 0;
}

bool ChartValidAfter(bool valid_before, const Counters& c) {
    if (AllZero(c))
        return true;
    return AnyNegative(c) ? false : valid_before;
}

double ClampPercent(double percent) {
    if (!(percent >= 0))  // negative, or not a number
        return 0;
    return percent > 100 ? 100 : percent;
}

std::wstring FormatRate(double percent) {
    wchar_t text[64];
    std::swprintf(text, sizeof text / sizeof text[0], L"%.3f%%", percent);
    return text;
}

std::int32_t RoundHalfUp(double value) {
    if (!(value == value))
        return 0;
    if (value >= 2147483647.0)
        return std::numeric_limits<std::int32_t>::max();
    if (value <= -2147483648.0)
        return std::numeric_limits<std::int32_t>::min();
    std::int32_t whole = static_cast<std::int32_t>(value);
    if (value - whole >= 0.5)
        ++whole;
    return whole;
}

Shares ChartShares(const Counters& c, const Derived& d) {
    Shares s;
    const std::int32_t total = Add(Add(d.normal, c.reported_spam), c.detected);
    if (total != 0) {
        s.reported = RoundHalfUp(static_cast<double>(Times100(c.reported_spam)) / total);
        s.detected = RoundHalfUp(static_cast<double>(Times100(c.detected)) / total);
    }
    s.normal = Sub(Sub(100, s.detected), s.reported);
    return s;
}

std::wstring ReplaceFirst(const std::wstring& text, const std::wstring& token,
                          const std::wstring& value) {
    const std::size_t at = token.empty() ? std::wstring::npos : text.find(token);
    if (at == std::wstring::npos || value.empty())
        return text;
    std::wstring out = text;
    out.replace(at, token.size(), value);
    return out;
}

}  // namespace velk::statistics
