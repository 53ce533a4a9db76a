#include "host/version_text.h"

#include <climits>
#include <cwchar>

namespace velk::host {
namespace {

// What atoi/_wtoi read at the start of a field: blanks, a sign, then digits;
// clamped rather than left to overflow, the field comes from a file we do not
// control.
int LeadingInt(const std::wstring& text, std::size_t begin) {
    std::size_t i = begin;
    while (i < text.size() && (text[i] == L' ' || text[i] == L'\t'))
        ++i;
    bool negative = false;
    if (i < text.size() && (text[i] == L'-' || text[i] == L'+')) {
        negative = text[i] == L'-';
        ++i;
    }
    long long value = 0;
    for (; i < text.size() && text[i] >= L'0' && text[i] <= L'9'; ++i) {
        value = value * 10 + (text[i] - L'0');
        if (value > static_cast<long long>(INT_MAX) + 1)
            break;
    }
    if (negative)
        value = -value;
    if (value > INT_MAX)
        return INT_MAX;
    if (value < INT_MIN)
        return INT_MIN;
    return static_cast<int>(value);
}

std::wstring Decimal(int value) {
    wchar_t buffer[16];
    std::swprintf(buffer, sizeof(buffer) / sizeof(buffer[0]), L"%d", value);
    return buffer;
}

}  // namespace

std::wstring ReduceFileVersion(const std::wstring& file_version) {
    const std::size_t first = file_version.find(L'.');
    if (first == std::wstring::npos)
        return std::wstring();
    std::wstring reduced = Decimal(LeadingInt(file_version, 0)) + L".";

    const std::size_t second = file_version.find(L'.', first + 1);
    if (second == std::wstring::npos)
        return reduced;
    reduced += Decimal(LeadingInt(file_version, first + 1)) + L".";

    const std::size_t third = file_version.find(L'.', second + 1);
    if (third == std::wstring::npos)
        return reduced;
    return reduced + Decimal(LeadingInt(file_version, third + 1));
}

}  // namespace velk::host
