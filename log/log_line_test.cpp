// The edges of the line and file-name rules that the log's state machine
// tests do not reach.
#include "log/log_line.h"

#include <gtest/gtest.h>

#include <string>

namespace velk::log {
namespace {

const LocalTime k3May2009{2009, 5, 3, 4, 5, 6};

// Support tools find the log by this name pattern.
TEST(LogDatedPath, InsertsTheDateBeforeTheLastDot) {
    EXPECT_EQ(DatedPath(L"C:\\v1.2\\agent.b.log", k3May2009), L"C:\\v1.2\\agent.b.20090503.log");
    EXPECT_EQ(DatedPath(L"C:\\v1.2\\agentlog", k3May2009), L"C:\\v1.20090503.2\\agentlog");
}

// 30 prefix characters + 468 + "\n" = 499 stays whole; one more is cut to
// 495 characters and a literal "...n", without a line break.
TEST(LogLineCut, LinesFrom500CharactersOnAreCutTo495AndDotsN) {
    wchar_t out[kLineChars];
    const std::wstring whole = std::wstring(468, L'b') + L"\n";
    EXPECT_EQ(BuildLine(out, 0x12345678, k3May2009, whole.c_str()), 499u);
    EXPECT_EQ(std::wstring(out), L"1234:5678 2009/05/03 04:05:06 " + whole);
    const std::wstring longer = std::wstring(469, L'b') + L"\n";
    EXPECT_EQ(BuildLine(out, 0x12345678, k3May2009, longer.c_str()), 499u);
    EXPECT_EQ(std::wstring(out),
              L"1234:5678 2009/05/03 04:05:06 " + std::wstring(465, L'b') + L"...n");
}

}  // namespace
}  // namespace velk::log
