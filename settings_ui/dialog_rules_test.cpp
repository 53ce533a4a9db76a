#include "settings_ui/dialog_rules.h"

#include <gtest/gtest.h>

namespace velk::settings_ui {
namespace {

TEST(DialogRules, PurgeDaysFallBackToTwentyOutsideOneToThreeSixtyFive) {
    EXPECT_EQ(365u, PurgeDaysOf(L"365"));
    EXPECT_EQ(1u, PurgeDaysOf(L"001"));
    for (const wchar_t* bad : {L"", L"0", L"366", L"30d", L" 30", L"-5", L"99999999999999999999999"})
        EXPECT_EQ(20u, PurgeDaysOf(bad)) << bad;
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
