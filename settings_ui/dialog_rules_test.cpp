#include "settings_ui/dialog_rules.h"

#include <gtest/gtest.h>

namespace velk::settings_ui {
namespace {

TEST(DialogRules, PurgeDaysFallBackToTwentyOutsideOneToThreeSixtyFive) {
    EXPECT_EQ(365u, PurgeDaysOf(L"365"));
    EXPECT_EQ(1u, PurgeDaysOf(L"001"));
    for (const wchar_t* bad :
         {L"", L"0", L"366", L"30d", L" 30", L"-5", L"99999999999999999999999"})
        EXPECT_EQ(20u, PurgeDaysOf(bad)) << bad;
}

TEST(DialogRules, UpdateStatusPatternVersionAndTheRefusedEngine) {
    constexpr long long kNow = 1700000000;
    const struct {
        long long last;
        int up_to_date;
        UpdateStatus status;
    } cases[] = {{0, 1, UpdateStatus::NeverUpdated},
                 {kNow - 604799, 1, UpdateStatus::UpToDate},
                 {kNow - 604800, 1, UpdateStatus::OutOfDate},  // seven days old is too old
                 {kNow - 10, 0, UpdateStatus::OutOfDate},
                 {kNow - 10, 2, UpdateStatus::OutOfDate}};
    for (const auto& c : cases)
        EXPECT_EQ(c.status, StatusOf(c.last, kNow, c.up_to_date)) << c.last << " " << c.up_to_date;

    EXPECT_EQ(L"123", PatternVersionText(L"123"));
    EXPECT_EQ(L"1.234", PatternVersionText(L"1234"));
    EXPECT_EQ(L"2024.117", PatternVersionText(L"2024117"));
    EXPECT_TRUE(IsRefusedEngineVersion(L"17.0.1022"));
    for (const wchar_t* version : {L"", L"16.7", L"17", L"170.1", L"1.17."})
        EXPECT_FALSE(IsRefusedEngineVersion(version)) << version;
}

TEST(DialogRules, PortCheckLooksAtTheTextsBytesUpToTheFirstZero) {
    // U+3000 starts with a zero byte, so nothing after it is looked at;
    // U+0131 has a digit low byte but a non-digit high byte.
    EXPECT_TRUE(PassesPortCheck(L"\u3000x"));
    EXPECT_FALSE(PassesPortCheck(L"\u0131"));
    EXPECT_TRUE(PassesPortCheck(std::wstring(255, L'9')));
    EXPECT_FALSE(PassesPortCheck(std::wstring(256, L'9')));
    EXPECT_TRUE(IsAcceptedProxyHost(std::wstring(256, L'h')));
    EXPECT_FALSE(IsAcceptedProxyHost(L""));
}

TEST(DialogRules, HelpFileSitsInTheHelpFolderWhateverItsLastCharacter) {
    EXPECT_EQ(L" -mapid 206 \"C:\\App\\qzhelp.chm\"", HelpArguments(L"C:\\App\\"));
    EXPECT_EQ(L" -mapid 206 \"C:\\App\\qzhelp.chm\"", HelpArguments(L"C:\\App"));
}

}  // namespace
}  // namespace velk::settings_ui
