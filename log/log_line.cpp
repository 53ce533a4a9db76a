#include "log/log_line.h"

#include <cwchar>

namespace velk::log {

std::wstring DatedPath(const std::wstring& base_path, const LocalTime& date) {
    wchar_t stamp[48];
    std::swprintf(stamp, sizeof(stamp) / sizeof(stamp[0]), L".%04d%02d%02d", date.year, date.month,
                  date.day);
    std::size_t at = base_path.rfind(L'.');
    if (at == std::wstring::npos)
        at = base_path.empty() ? 0 : base_path.size() - 1;
    std::wstring dated = base_path;
    dated.insert(at, stamp);
    return dated;
}

std::size_t FormatPrefix(wchar_t* out, std::uint32_t thread_id, const LocalTime& now) {
    int n = std::swprintf(out, kPrefixChars, L"%04x:%04x %04d/%02d/%02d %02d:%02d:%02d ",
                          static_cast<unsigned>(thread_id >> 16),
                          static_cast<unsigned>(thread_id & 0xFFFFu), now.year, now.month, now.day,
                          now.hour, now.minute, now.second);
    if (n < 0) {
        out[0] = L'\0';
        return 0;
    }
    return static_cast<std::size_t>(n);
}

std::size_t BuildLine(wchar_t* out, std::uint32_t thread_id, const LocalTime& now,
                      const wchar_t* message) {
    std::size_t length = FormatPrefix(out, thread_id, now);
    for (const wchar_t* p = message; *p != L'\0' && length < kLineChars - 1; ++p) {
        out[length++] = *p;
    }
    if (length >= kMaxLineChars) {
        length = kCutKeepChars;
        for (const wchar_t* p = kCutMark; *p != L'\0'; ++p)
            out[length++] = *p;
    }
    out[length] = L'\0';
    return length;
}

std::size_t FinishMessage(wchar_t* buffer) noexcept {
    buffer[kFormatChars] = L'\0';
    std::size_t length = std::wcslen(buffer);
    buffer[length++] = L'\n';
    buffer[length] = L'\0';
    return length;
}

bool IsOtherDay(const LocalTime& file_date, const LocalTime& now) noexcept {
    return file_date.year != now.year || file_date.month != now.month || file_date.day != now.day;
}

}  // namespace velk::log
