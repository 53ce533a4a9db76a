#include "settings_ui/password_text.h"

#include <gtest/gtest.h>

namespace velk::settings_ui {
namespace {

std::vector<unsigned char> Bytes(const char* s) {
    return std::vector<unsigned char>(s, s + std::char_traits<char>::length(s));
}

TEST(PasswordText, Base64MatchesTheStandardVectorsBothWays) {
    const struct {
        const char* bytes;
        const wchar_t* text;
    } vectors[] = {{"", L""},         {"f", L"Zg=="},         {"fo", L"Zm8="},
                   {"foo", L"Zm9v"},  {"foob", L"Zm9vYg=="},  {"fooba", L"Zm9vYmE="},
                   {"foobar", L"Zm9vYmFy"}, {"\xfb\xff", L"+/8="}};
    for (const auto& v : vectors) {
        EXPECT_EQ(v.text, Base64Encode(Bytes(v.bytes)));
        std::vector<unsigned char> back;
        ASSERT_TRUE(Base64Decode(v.text, back)) << v.bytes;
        EXPECT_EQ(Bytes(v.bytes), back);
    }
}

TEST(PasswordText, RefusesAnythingButTheCanonicalFramedForm) {
    std::vector<unsigned char> bytes{9};
    for (const wchar_t* bad : {L"Zm9vYmFy", L"dp1:Zm9v", L"DP1:Zm9", L"DP1:Zm 9v", L"DP1:Zg=a",
                               L"DP1:Z===", L"DP1:Zh==", L"DP1:Zm9=Zm9v", L"DP1:Zm-v", L"DP1:Zm8\u00e9"}) {
        EXPECT_FALSE(UnframePasswordBytes(bad, bytes)) << bad;
    }
    EXPECT_EQ(std::vector<unsigned char>{9}, bytes);  // untouched on failure

    const std::vector<unsigned char> blob(765, 0xA5);  // frames to exactly 1024 characters
    const std::wstring framed = FramePasswordBytes(blob);
    ASSERT_EQ(1024u, framed.size());
    EXPECT_FALSE(UnframePasswordBytes(framed, bytes));
    const std::wstring fits = FramePasswordBytes(std::vector<unsigned char>(762, 0x5A));
    ASSERT_TRUE(UnframePasswordBytes(fits, bytes));
    EXPECT_EQ(std::vector<unsigned char>(762, 0x5A), bytes);
}

}  // namespace
}  // namespace velk::settings_ui
