#include "senders/sender_text.h"

#include <gtest/gtest.h>

namespace velk::senders {
namespace {

TEST(SenderTextUtf8, DecodesEveryEncodedLengthIncludingAstralAsSurrogatePair) {
    EXPECT_EQ(Utf8ToUtf16("a\xC3\xA9\xE5\xB1\xB1\xF0\x9F\x98\x80z"), u"a\u00E9\u5C71\U0001F600z");
    EXPECT_EQ(Utf8ToUtf16("\xF4\x8F\xBF\xBF"), u"\U0010FFFF");
    EXPECT_EQ(Utf8ToUtf16(""), u"");
}

// Invalid input decodes to U+FFFD per maximal ill-formed subpart, and the
// byte that broke a sequence starts the next one: a damaged name must not
// eat the tag that follows it.
TEST(SenderTextUtf8, InvalidBytesBecomeOneReplacementPerMaximalSubpart) {
    const std::u16string r(1, kReplacementChar);
    EXPECT_EQ(Utf8ToUtf16("\x80"), r);                          // stray continuation
    EXPECT_EQ(Utf8ToUtf16("\xC0\xAF"), r + r);                  // overlong lead
    EXPECT_EQ(Utf8ToUtf16("\xE0\x80\xAF"), r + r + r);          // overlong 3-byte
    EXPECT_EQ(Utf8ToUtf16("\xED\xA0\x80"), r + r + r);          // encoded surrogate
    EXPECT_EQ(Utf8ToUtf16("\xF4\x90\x80\x80"), r + r + r + r);  // above U+10FFFF
    EXPECT_EQ(Utf8ToUtf16("\xFF\xFE"), r + r);
    EXPECT_EQ(Utf8ToUtf16("\xE5\xB1<"), r + u"<");  // cut short before a tag
    EXPECT_EQ(Utf8ToUtf16("\xF0\x9F\x98"), r);      // cut short at the end
    EXPECT_EQ(Utf8ToUtf16("\xC3\xC3\xA9"), r + u"\u00E9");
}

TEST(SenderTextUtf8, EncodesAndRoundTripsValidTextAndReplacesLoneSurrogates) {
    const std::u16string text = u"x\u00E9\u5C71\U0001F600\u0000\uFFFF";
    EXPECT_EQ(Utf8ToUtf16(Utf16ToUtf8(text)), text);
    EXPECT_EQ(Utf16ToUtf8(u"\u00E9"), "\xC3\xA9");
    const std::u16string lone{u'a', char16_t(0xD800), u'b', char16_t(0xDC00)};
    EXPECT_EQ(Utf16ToUtf8(lone),
              "a\xEF\xBF\xBD"
              "b\xEF\xBF\xBD");
}

TEST(SenderTextKeys, FoldsOnlyAsciiCapitals) {
    EXPECT_EQ(FoldKey(u"John.DOE@Example.COM"), u"john.doe@example.com");
    // Other scripts keep their case; the scanning process folds the same way.
    EXPECT_EQ(FoldKey(u"\u00C4RGER@\u0130X.de"), u"\u00C4rger@\u0130x.de");
    EXPECT_EQ(FoldKey(u"@[`{"), u"@[`{");
}

TEST(SenderTextFields, CollapsesEveryRunOfAsterisksToOne) {
    std::u16string s = u"***@a**b.*";
    CollapseAsteriskRuns(s);
    EXPECT_EQ(s, u"*@a*b.*");
    s = u"****";
    CollapseAsteriskRuns(s);
    EXPECT_EQ(s, u"*");
}

TEST(SenderTextWide, ConvertsBothWaysWithoutLoss) {
    const std::u16string text = u"J\u00F6rg \U0001F600 x";
    EXPECT_EQ(ToU16(ToWide(text)), text);
    EXPECT_EQ(ToWide(text), std::wstring(L"J\u00F6rg \U0001F600 x"));
    const std::u16string lone{u'a', char16_t(0xDC01)};
    EXPECT_EQ(ToU16(ToWide(lone)), lone);
}

}  // namespace
}  // namespace velk::senders
