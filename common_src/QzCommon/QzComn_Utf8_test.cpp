#include <gtest/gtest.h>

#include "common_src/QzCommon/QzComn_String.h"

namespace QzCommon {
namespace String {
namespace {

TEST(Utf8ToWide, ConvertsMultiByteSequencesAndStopsAtTheFirstZero) {
    std::wstring out = L"old";
    std::uint32_t error = 99;
    EXPECT_TRUE(Utf8ToWide("h\xC3\xA9llo \xE2\x82\xAC \xF0\x9F\x98\x80", out, &error));
    EXPECT_EQ(L"h\u00e9llo \u20ac \xD83D\xDE00", out);  // the emoji as a surrogate pair
    EXPECT_EQ(99u, error);
    EXPECT_TRUE(Utf8ToWide(std::string("ab\0cd", 5), out));
    EXPECT_EQ(L"ab", out);
    EXPECT_TRUE(Utf8ToWide("", out));
    EXPECT_EQ(L"", out);
}

}  // namespace
}  // namespace String
}  // namespace QzCommon
