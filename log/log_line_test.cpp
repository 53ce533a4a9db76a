#include "log/log_line.h"

#include <gtest/gtest.h>

#include <string>

namespace velk::log {
namespace {

const LocalTime k3May2009{2009, 5, 3, 4, 5, 6};

std::wstring Line(const std::wstring& message, std::uint32_t tid = 0x12345678) {
    wchar_t out[kLineChars];
    std::size_t length = BuildLine(out, tid, k3May2009, message.c_str());
    EXPECT_EQ(length, std::wstring(out).size());
    return out;
}

// Support tools find the log by this name pattern.
TEST(LogDatedPath, InsertsTheDateBeforeTheLastDotOrTheLastCharacter) {
    EXPECT_EQ(DatedPath(L"VELKAgent.log", k3May2009), L"VELKAgent.20090503.log");
    EXPECT_EQ(DatedPath(L"C:\\Users\\{A}\\log\\VELKAgent.log", LocalTime{2010, 12, 31}),
              L"C:\\Users\\{A}\\log\\VELKAgent.20101231.log");
    EXPECT_EQ(DatedPath(L"a.b.c", k3May2009), L"a.b.20090503.c");
    // The last dot anywhere in the path counts, even in a folder name.
    EXPECT_EQ(DatedPath(L"C:\\v1.2\\agentlog", k3May2009), L"C:\\v1.20090503.2\\agentlog");
    EXPECT_EQ(DatedPath(L"VELKAgent", k3May2009), L"VELKAgen.20090503t");
    EXPECT_EQ(DatedPath(L"", k3May2009), L".20090503");
    EXPECT_EQ(DatedPath(L"VELKAgent.log", LocalTime{}), L"VELKAgent.-001-1-1.log");
}

TEST(LogLinePrefix, HasThreadHalvesInHexThenLocalTime) {
    wchar_t out[kPrefixChars];
    EXPECT_EQ(FormatPrefix(out, 0x12345678, k3May2009), 30u);
    EXPECT_STREQ(out, L"1234:5678 2009/05/03 04:05:06 ");
    FormatPrefix(out, 0x00ABCDEF, LocalTime{1999, 12, 31, 23, 59, 58});
    EXPECT_STREQ(out, L"00ab:cdef 1999/12/31 23:59:58 ");
    // An unknown time still fits the buffer.
    EXPECT_EQ(FormatPrefix(out, 1, LocalTime{}), 30u);
    EXPECT_STREQ(out, L"0000:0001 -001/-1/-1 -1:-1:-1 ");
}

TEST(LogLineCut, LinesUnder500CharactersAreKeptWhole) {
    // 30 prefix characters + 469 + "\n" = 500 would be cut; 468 + "\n" = 499 is not.
    std::wstring message(468, L'a');
    message += L'\n';
    std::wstring line = Line(message);
    EXPECT_EQ(line.size(), 499u);
    EXPECT_EQ(line.back(), L'\n');
    EXPECT_EQ(line.substr(30), message);
}

TEST(LogLineCut, LinesOf500OrMoreKeep495AndEndInDotsN) {
    for (std::size_t body : {469u, 470u, 600u, 1021u}) {
        std::wstring message(body, L'b');
        message += L'\n';
        std::wstring line = Line(message);
        ASSERT_EQ(line.size(), 499u) << body;
        EXPECT_EQ(line.substr(0, 30), L"1234:5678 2009/05/03 04:05:06 ");
        EXPECT_EQ(line.substr(30, 465), std::wstring(465, L'b'));
        // A literal 'n' and no line break: the next entry continues this text line.
        EXPECT_EQ(line.substr(495), L"...n");
    }
}

TEST(LogMessage, FinishingAppendsOneLineBreakAndTerminatesATruncatedFormat) {
    wchar_t buffer[kMessageChars];
    std::wcscpy(buffer, L"hello");
    EXPECT_EQ(FinishMessage(buffer), 6u);
    EXPECT_STREQ(buffer, L"hello\n");

    // A formatter that filled its whole allowance without a terminator.
    for (std::size_t i = 0; i < kMessageChars; ++i)
        buffer[i] = L'x';
    EXPECT_EQ(FinishMessage(buffer), kFormatChars + 1);
    EXPECT_EQ(buffer[kFormatChars], L'\n');
    EXPECT_EQ(buffer[kFormatChars + 1], L'\0');

    // A formatter that failed before writing anything.
    buffer[0] = L'\0';
    EXPECT_EQ(FinishMessage(buffer), 1u);
    EXPECT_STREQ(buffer, L"\n");
}

TEST(LogRollover, AnyChangeOfYearMonthOrDayIsAnotherDay) {
    const LocalTime file{2009, 12, 31, 23, 59, 59};
    EXPECT_FALSE(IsOtherDay(file, LocalTime{2009, 12, 31, 0, 0, 0}));
    EXPECT_TRUE(IsOtherDay(file, LocalTime{2010, 1, 1, 0, 0, 0}));
    EXPECT_TRUE(IsOtherDay(file, LocalTime{2009, 11, 31, 23, 59, 59}));
    EXPECT_TRUE(IsOtherDay(file, LocalTime{2009, 12, 30, 23, 59, 59}));
    EXPECT_TRUE(IsOtherDay(file, LocalTime{2010, 12, 31, 23, 59, 59}));
    // A clock that failed at open and works now starts a dated file.
    EXPECT_TRUE(IsOtherDay(LocalTime{}, file));
}

}  // namespace
}  // namespace velk::log
