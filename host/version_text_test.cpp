#include "host/version_text.h"

#include <gtest/gtest.h>

namespace velk::host {
namespace {

TEST(ReduceFileVersion, KeepsMajorMinorAndTheFourthField) {
    EXPECT_EQ(L"6.0.5", ReduceFileVersion(L"6.0.1234.5"));
    EXPECT_EQ(L"3.5.1021", ReduceFileVersion(L"3.5.0.1021"));
    // Leading zeros and blanks vanish in the integer conversion.
    EXPECT_EQ(L"3.5.7", ReduceFileVersion(L"03. 05.0.0007"));
    // A fifth field stops the fourth's number at its dot.
    EXPECT_EQ(L"1.2.4", ReduceFileVersion(L"1.2.3.4.5"));
}

TEST(ReduceFileVersion, ShortVersionsKeepOnlyTheFieldsBeforeADot) {
    EXPECT_EQ(L"1.", ReduceFileVersion(L"1.2"));
    EXPECT_EQ(L"1.2.", ReduceFileVersion(L"1.2.3"));
    EXPECT_EQ(L"", ReduceFileVersion(L"7"));
    EXPECT_EQ(L"", ReduceFileVersion(L""));
    // A trailing dot still counts as a dot.
    EXPECT_EQ(L"6.0.0", ReduceFileVersion(L"6.0.1234."));
}

TEST(ReduceFileVersion, OddFieldsBecomeNumbersWithoutOverflow) {
    EXPECT_EQ(L"0.0.0", ReduceFileVersion(L"a.b.c.d"));
    EXPECT_EQ(L"-1.2.3", ReduceFileVersion(L"-1.2.x.3rc"));
    EXPECT_EQ(L"2147483647.0.-2147483648",
              ReduceFileVersion(L"99999999999999999999.0.0.-99999999999999999999"));
    // The comma form some resource scripts use has no dot at all.
    EXPECT_EQ(L"", ReduceFileVersion(L"6, 0, 1234, 5"));
}

}  // namespace
}  // namespace velk::host
