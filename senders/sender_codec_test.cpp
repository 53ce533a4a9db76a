#include "senders/sender_codec.h"

#include <gtest/gtest.h>

#include "senders/senders_test_util.h"

namespace velk::senders {
namespace {

TEST(SenderExtraction, TakesTheTrimmedTextBetweenTheFirstOpenTagAndTheNextCloseTag) {
    EXPECT_EQ(ExtractTagged("x<A>one<\\A>y<A>two<\\A>", "<A>", "<\\A>"), "one");
    // The close tag is searched after the open tag, not from the start.
    EXPECT_EQ(ExtractTagged("<\\A>junk<A>v<\\A>", "<A>", "<\\A>"), "v");
    // Exactly blanks and tabs are trimmed, not CR, LF or other spaces.
    EXPECT_EQ(ExtractTagged("<A> \t v w\t <\\A>", "<A>", "<\\A>"), "v w");
    EXPECT_EQ(ExtractTagged("<A>\r v\n<\\A>", "<A>", "<\\A>"), "\r v\n");
    EXPECT_EQ(ExtractTagged("<A>\xC2\xA0v\xC2\xA0<\\A>", "<A>", "<\\A>"), "\xC2\xA0v\xC2\xA0");
    EXPECT_EQ(ExtractTagged("<A> \t <\\A>", "<A>", "<\\A>"), "");
}

TEST(SenderExtraction, MissingOrOverlappingTagsGiveEmptyText) {
    EXPECT_EQ(ExtractTagged("<A>value", "<A>", "<\\A>"), "");
    EXPECT_EQ(ExtractTagged("value<\\A>", "<A>", "<\\A>"), "");
    EXPECT_EQ(ExtractTagged("", "<A>", "<\\A>"), "");
    // "ab" is found again one character into the open tag "aab".
    EXPECT_EQ(ExtractTagged("aab", "aab", "ab"), "");
    // A slash is not the closing tag of this format.
    EXPECT_EQ(ExtractTagged("<SN_ATTR>n</SN_ATTR>", kNameOpenTag, kNameCloseTag), "");
}

// The loader takes a short cut for lines of exactly the written shape; every
// other arrangement of the same tags must give what the extraction rule gives.
TEST(SenderRecordLines, LinesOffTheWrittenShapeParseByTheSameRule) {
    const SenderRecord expected{u"N \u00E9", u"*a@x.com"};
    for (const char* line : {
             "<WL_REC><SN_ATTR>N \xC3\xA9<\\SN_ATTR><SA_ATTR>**a@x.com<\\SA_ATTR><\\WL_REC>",
             " <WL_REC><SN_ATTR>N \xC3\xA9<\\SN_ATTR><SA_ATTR>*a@x.com<\\SA_ATTR><\\WL_REC> ",
             "<WL_REC><SN_ATTR>\tN \xC3\xA9 <\\SN_ATTR> <SA_ATTR> *a@x.com\t<\\SA_ATTR><\\WL_REC>",
             "<WL_REC><SN_ATTR>N \xC3\xA9<\\SN_ATTR><SA_ATTR>*a@x.com<\\SA_ATTR><\\WL_REC>junk",
             "<WL_REC><SA_ATTR>*a@x.com<\\SA_ATTR><SN_ATTR>N \xC3\xA9<\\SN_ATTR><\\WL_REC>",
             "<WL_REC><SN_ATTR>N "
             "\xC3\xA9<\\SN_ATTR><SA_ATTR>*a@x.com<\\SA_ATTR><\\WL_REC><\\WL_REC>",
             "x<WL_REC><SN_ATTR>N \xC3\xA9<\\SN_ATTR><SA_ATTR>*a@x.com<\\SA_ATTR><\\WL_REC>",
         }) {
        SenderRecord r{u"stale", u"stale"};
        ParseRecordLine(FormatOf(SenderListKind::kApproved), line, r);
        EXPECT_EQ(r, expected) << line;
    }
    SenderRecord r{u"stale", u"stale"};
    ParseRecordLine(FormatOf(SenderListKind::kApproved),
                    "<WL_REC><SN_ATTR>N<\\SN_ATTR><SA_ATTR>a@x.com<\\SA_ATTR>", r);
    EXPECT_EQ(r, (SenderRecord{u"", u""}));
}

}  // namespace
}  // namespace velk::senders
