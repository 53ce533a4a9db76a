#include "senders/sender_text.h"

#include <gtest/gtest.h>

namespace velk::senders {
namespace {

// Invalid input decodes to U+FFFD per maximal ill-formed subpart, and the
// byte that broke a sequence starts the next one: a damaged name must not
// eat the tag that follows it.
TEST(SenderTextUtf8, DecodesValidTextAndOneReplacementPerMaximalIllFormedSubpart) {
    EXPECT_EQ(Utf8ToUtf16("a\xC3\xA9\xE5\xB1\xB1\xF0\x9F\x98\x80\xF4\x8F\xBF\xBF"),
              u"a\u00E9\u5C71\U0001F600\U0010FFFF");
    const std::u16string r(1, kReplacementChar);
    const std::pair<const char*, std::u16string> invalid[] = {
        {"\x80", r},                          // stray continuation
        {"\xC0\xAF", r + r},                  // overlong lead
        {"\xE0\x80\xAF", r + r + r},          // overlong 3-byte
        {"\xED\xA0\x80", r + r + r},          // encoded surrogate
        {"\xF4\x90\x80\x80", r + r + r + r},  // above U+10FFFF
        {"\xE5\xB1<", r + u"<"},              // cut short before a tag
        {"\xF0\x9F\x98", r},                  // cut short at the end
        {"\xC3\xC3\xA9", r + u"\u00E9"},
    };
    for (const auto& [bytes, expected] : invalid)
        EXPECT_EQ(Utf8ToUtf16(bytes), expected) << testing::PrintToString(std::string(bytes));
}

TEST(SenderTextUtf8, LoneSurrogatesAreWrittenAsReplacements) {
    const std::u16string lone{u'a', char16_t(0xD800), u'b', char16_t(0xDC00)};
    EXPECT_EQ(Utf16ToUtf8(lone),
              "a\xEF\xBF\xBD"
              "b\xEF\xBF\xBD");
    // The wide form of the pages keeps them as they are.
    EXPECT_EQ(ToU16(ToWide(lone)), lone);
}

// The scanning process folds keys the same way: ASCII capitals only.
TEST(SenderTextKeys, FoldsOnlyAsciiCapitals) {
    EXPECT_EQ(FoldKey(u"John.DOE@Example.COM"), u"john.doe@example.com");
    EXPECT_EQ(FoldKey(u"\u00C4RGER@\u0130X.de[`{"), u"\u00C4rger@\u0130x.de[`{");
}

}  // namespace
}  // namespace velk::senders
