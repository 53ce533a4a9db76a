#include "actions/header_lines.h"

#include <gtest/gtest.h>

namespace velk::actions {
namespace {

using Lines = std::vector<HeaderLine>;

TEST(HeaderLineCutter, EachLineEndTakesAtMostOneMoreCrOrLfAndEmptyLinesAreLost) {
    const Lines ab{{"A", "1"}, {"B", "2"}};
    for (const char* text : {"A: 1\r\nB: 2", "A: 1\n\rB: 2", "A: 1\r\rB: 2", "A: 1\n\nB: 2\n",
                             "A: 1\rB: 2\r\n", "A: 1\r\n\r\nB: 2", "\r\n\nA: 1\n\n\nB: 2"})
        EXPECT_EQ(ab, CutHeaderLines(text)) << text;
}

TEST(HeaderLineCutter, NameIsKeptAsIsAndValueLosesOnlyLeadingBlanks) {
    EXPECT_EQ((Lines{{"X-Name", "V  "}, {" X-Pad ", "\tV"}, {"X-Url", "http://h:80/"}}),
              CutHeaderLines("X-Name:    V  \r\n X-Pad : \tV\r\nX-Url: http://h:80/"));
    // No colon: skipped. An empty name or value is passed on as it is.
    EXPECT_EQ((Lines{{"", "v"}, {"N", ""}}), CutHeaderLines("no colon\r\n: v\nN:   \nnone"));
    // Bytes of the ANSI code page above 127 pass through untouched.
    EXPECT_EQ((Lines{{"X-N", "\xC4rger \x80"}}), CutHeaderLines("X-N: \xC4rger \x80"));
}

TEST(QuarantinedHeaderBlock, NeedsOurPrefixAndTheQuarantineStamp) {
    EXPECT_TRUE(IsQuarantinedHeaderBlock("SUBJECT: X\r\nX-NUVEXA-ANTISPAMADDIN-QUARANTINETIME: 1"));
    EXPECT_FALSE(IsQuarantinedHeaderBlock("X-NUVEXA-ANTISPAMADDIN-CHECKED: 1\r\n"));
    EXPECT_FALSE(IsQuarantinedHeaderBlock("X-QZ-AS-SCORE: 1\r\nSUBJECT: HI\r\n"));
    // Matching is on the upper-cased block; the caller upper-cases.
    EXPECT_FALSE(IsQuarantinedHeaderBlock("X-Nuvexa-AntispamAddin-QuarantineTime: 1"));
}

}  // namespace
}  // namespace velk::actions
