#include "common_src/win32/placeholders.h"

#include <gtest/gtest.h>

namespace velk::win32 {
namespace {

TEST(Placeholders, EveryTokenReplacedOnceAndValuesNotExpandedAgain) {
    const Placeholders v{L"Junk Filter", L"<$CORP_NAME>", L"Shield"};
    EXPECT_EQ(L"Junk Filter and Junk Filter by <$CORP_NAME>: Shield <$OTHER>",
              ReplacePlaceholders(L"<$SPAM_NAME> and <$SPAM_NAME> by <$CORP_NAME>: "
                                  L"<$PRODUCT NAME> <$OTHER>",
                                  v));
    EXPECT_EQ(L"<$SPAM_NAM", ReplacePlaceholders(L"<$SPAM_NAM", v));
    EXPECT_EQ(L"Installed", Prefer(L"Installed", L"Localised"));
    EXPECT_EQ(L"Localised", Prefer(L"", L"Localised"));
}

}  // namespace
}  // namespace velk::win32
