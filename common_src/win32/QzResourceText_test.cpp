#include "common_src/win32/QzResourceText.h"

#include <gtest/gtest.h>

namespace velk {
namespace {

// The help address is checked with the loader that builds it.
TEST(ExpandLineEscapes, TurnsBackslashNAndRIntoLineBreaksOnly) {
    const std::pair<const wchar_t*, const wchar_t*> cases[] = {
        {L"a\\r\\nb", L"a\r\nb"},
        {L"trailing\\", L"trailing\\"},
        {L"C:\\temp\\x", L"C:\\temp\\x"},       // other escapes stay as written
        {L"\\\\n", L"\\\n"},                    // the second backslash starts the escape
        {L"\\N and \\R", L"\\N and \\R"},       // case matters
        {L"100%\\nsure %d", L"100%\nsure %d"},  // printf markers untouched
    };
    for (const auto& [in, out] : cases)
        EXPECT_EQ(out, ExpandLineEscapes(in)) << testing::PrintToString(std::wstring(in));
}

}  // namespace
}  // namespace velk
