#include "common_src/win32/QzResourceText.h"

#include <gtest/gtest.h>

namespace velk {
namespace {

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

TEST(JoinHelpAddress, JoinsPartsWithSingleSlashesAndEndsWithOne) {
    EXPECT_EQ(L"http://help.example/oe/P100/en-US/F7/",
              JoinHelpAddress(L"http://help.example/oe/", {L"P100", L"en-US", L"F7"}));
    // A part that could not be read leaves no empty segment behind.
    EXPECT_EQ(L"http://h/P/F/", JoinHelpAddress(L"http://h", {L"P", L"", L"F"}));
    EXPECT_EQ(L"/x/", JoinHelpAddress(L"", {L"x"}));
}

}  // namespace
}  // namespace velk
