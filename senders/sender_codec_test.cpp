#include "senders/sender_codec.h"

#include <gtest/gtest.h>

#include "senders/senders_test_util.h"

namespace velk::senders {
namespace {

// The text between the first open tag and the next close tag after it,
// without surrounding blanks and tabs (not CR, LF or other spaces).
TEST(SenderExtraction, TakesTheTrimmedTextBetweenTheFirstOpenTagAndTheNextCloseTag) {
    const std::pair<const char*, const char*> cases[] = {
        {"x<A>one<\\A>y<A>two<\\A>", "one"},
        {"<\\A>junk<A>v<\\A>", "v"},
        {"<A> \t v w\t <\\A>", "v w"},
        {"<A>\r v\n<\\A>", "\r v\n"},
        {"<A>\xC2\xA0v\xC2\xA0<\\A>", "\xC2\xA0v\xC2\xA0"},
        {"<A> \t <\\A>", ""},
        {"<A>value", ""},
        {"value<\\A>", ""},
    };
    for (const auto& [text, expected] : cases)
        EXPECT_EQ(ExtractTagged(text, "<A>", "<\\A>"), expected) << text;
    // "ab" is found again one character into the open tag "aab".
    EXPECT_EQ(ExtractTagged("aab", "aab", "ab"), "");
}

// The loader takes a short cut for lines of exactly the written shape; every
// other arrangement of the same tags must give what the extraction rule gives.
TEST(SenderRecordLines, LinesOffTheWrittenShapeParseByTheSameRule) {
    const SenderRecord expected{u"N \u00E9", u"*a@x.com"};
    for (const char* line : {
             "<WL_REC><SN_ATTR>N \xC3\xA9<\\SN_ATTR><SA_ATTR>**a@x.com<\\SA_ATTR><\\WL_REC>",
             " <WL_REC><SN_ATTR>N \xC3\xA9<\\SN_ATTR><SA_ATTR>*a@x.com<\\SA_ATTR><\\WL_REC> ",
             "<WL_REC><SN_ATTR>\tN \xC3\xA9 <\\SN_ATTR> <SA_ATTR> *a@x.com\t<\\SA_ATTR><\\WL_REC>",
             "<WL_REC><SA_ATTR>*a@x.com<\\SA_ATTR><SN_ATTR>N \xC3\xA9<\\SN_ATTR><\\WL_REC>",
             "x<WL_REC><SN_ATTR>N \xC3\xA9<\\SN_ATTR><SA_ATTR>*a@x.com<\\SA_ATTR><\\WL_REC>junk",
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
