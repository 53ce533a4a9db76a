// The edges of the line and file-name rules that the log's state machine
// tests do not reach.
#include "log/log_line.h"

#include <gtest/gtest.h>

#include <string>

namespace velk::log {
namespace {

const LocalTime k3May2009{2009, 5, 3, 4, 5, 6};

// Support tools find the log by this name pattern.
TEST(LogDatedPath, InsertsTheDateBeforeTheLastDotOrTheLastCharacter) {
    const std::pair<const wchar_t*, const wchar_t*> cases[] = {
        {L"a.b.c", L"a.b.20090503.c"},
        {L"C:\\v1.2\\agentlog", L"C:\\v1.20090503.2\\agentlog"},  // a dot in a folder counts
        {L"VELKAgent", L"VELKAgen.20090503t"},
        {L"", L".20090503"},
    };
    for (const auto& [base, dated] : cases)
        EXPECT_EQ(DatedPath(base, k3May2009), dated) << base;
}

// 30 prefix characters + 468 + "\n" = 499 stays whole; one more is cut to
// 495 characters and a literal "...n", without a line break.
TEST(LogLineCut, LinesFrom500CharactersOnAreCutTo495AndDotsN) {
    for (std::size_t body : {468u, 469u, 1021u}) {
        const std::wstring message = std::wstring(body, L'b') + L"\n";
        wchar_t out[kLineChars];
        const std::size_t length = BuildLine(out, 0x12345678, k3May2009, message.c_str());
        const std::wstring line(out);
        ASSERT_EQ(length, line.size());
        if (body == 468u) {
            EXPECT_EQ(line, L"1234:5678 2009/05/03 04:05:06 " + message);
        } else {
            EXPECT_EQ(line, L"1234:5678 2009/05/03 04:05:06 " + std::wstring(465, L'b') + L"...n");
        }
    }
}

TEST(LogMessage, AFormatThatFilledItsAllowanceIsTerminatedAndGetsItsLineBreak) {
    wchar_t buffer[kMessageChars];
    for (wchar_t& c : buffer)
        c = L'x';
    EXPECT_EQ(FinishMessage(buffer), kFormatChars + 1);
    EXPECT_EQ(buffer[kFormatChars], L'\n');
    EXPECT_EQ(buffer[kFormatChars + 1], L'\0');
}

TEST(LogRollover, AnyChangeOfYearMonthOrDayIsAnotherDay) {
    const LocalTime file{2009, 12, 31, 23, 59, 59};
    EXPECT_FALSE(IsOtherDay(file, LocalTime{2009, 12, 31, 0, 0, 0}));
    for (const LocalTime& now :
         {LocalTime{2010, 12, 31}, LocalTime{2009, 11, 31}, LocalTime{2009, 12, 30}, LocalTime{}})
        EXPECT_TRUE(IsOtherDay(file, now)) << now.year << "/" << now.month << "/" << now.day;
}

}  // namespace
}  // namespace velk::log
