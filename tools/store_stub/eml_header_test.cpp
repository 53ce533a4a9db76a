#include "tools/store_stub/eml_header.h"

#include <gtest/gtest.h>

namespace velk::tools::eml {
namespace {

const std::string kMessage =
    "Received: from a\r\n"
    "\tby b\r\n"
    "Subject: Hello\r\n"
    "  world\r\n"
    "X-Marker: 0\r\n"
    "\r\n"
    "Subject: not a header, the body\r\n";

TEST(EmlHeaderBlock, EndsBeforeTheFirstBlankLineWhateverTheLineEnding) {
    EXPECT_EQ(kMessage.substr(0, kMessage.find("\r\n\r\n") + 2), HeaderBlock(kMessage));
    EXPECT_EQ("A: 1\nB: 2\n", HeaderBlock("A: 1\nB: 2\n\nbody\n"));
    EXPECT_EQ("A: 1\r\n", HeaderBlock("A: 1\r\n"));  // no body at all
    EXPECT_EQ("A: 1", HeaderBlock("A: 1"));
    EXPECT_EQ("", HeaderBlock("\r\nbody"));
    EXPECT_EQ("", HeaderBlock(""));
    // A line of blanks is a continuation, not the end of the block.
    EXPECT_EQ("A: 1\r\n \r\nB: 2\r\n", HeaderBlock("A: 1\r\n \r\nB: 2\r\n\r\nx"));
}

TEST(EmlHeaderFind, MatchesNamesIgnoringCaseAndUnfoldsTheValue) {
    EXPECT_EQ("Hello  world", FindHeader(kMessage, "subject"));
    EXPECT_EQ("from a\tby b", FindHeader(kMessage, "RECEIVED"));
    EXPECT_EQ("0", FindHeader(kMessage, "X-Marker"));
    EXPECT_EQ("", FindHeader("Empty:\r\n\r\n", "Empty"));
    EXPECT_EQ("v", FindHeader("Name :   v\r\n\r\n", "Name"));
}

TEST(EmlHeaderFind, IgnoresTheBodyPrefixesAndLinesWithoutColon) {
    EXPECT_EQ(std::nullopt, FindHeader(kMessage, "X-Other"));
    EXPECT_EQ(std::nullopt, FindHeader(kMessage, "X-Mark"));
    EXPECT_EQ(std::nullopt, FindHeader("A: 1\r\n\r\nB: 2\r\n", "B"));
    EXPECT_EQ(std::nullopt, FindHeader("Subject\r\n\r\n", "Subject"));
    EXPECT_EQ(std::nullopt, FindHeader("", "Subject"));
}

TEST(EmlHeaderSet, ReplacesAFoldedFieldInPlaceAndKeepsEveryOtherByte) {
    auto out = SetHeader(kMessage, "SUBJECT", "Tagged");
    ASSERT_TRUE(out);
    EXPECT_EQ(
        "Received: from a\r\n"
        "\tby b\r\n"
        "SUBJECT: Tagged\r\n"
        "X-Marker: 0\r\n"
        "\r\n"
        "Subject: not a header, the body\r\n",
        *out);
}

TEST(EmlHeaderSet, AddsAMissingFieldAtTheEndOfTheBlockInTheBlocksLineEnding) {
    EXPECT_EQ("A: 1\r\nB: 2\r\nNew: v\r\n\r\nbody",
              *SetHeader("A: 1\r\nB: 2\r\n\r\nbody", "New", "v"));
    EXPECT_EQ("A: 1\nNew: v\n\nbody\r\n", *SetHeader("A: 1\n\nbody\r\n", "New", "v"));
    EXPECT_EQ("A: 1\r\nNew: v\r\n", *SetHeader("A: 1", "New", "v"));
    EXPECT_EQ("New: v\r\n\r\nbody", *SetHeader("\r\nbody", "New", "v"));
    EXPECT_EQ("New: v\r\n", *SetHeader("", "New", "v"));
    // A stray CR ending a headers-only message stays part of the block.
    auto stray = SetHeader("A: 1\nB: 2\n\r", "New", "v");
    EXPECT_EQ("A: 1\nB: 2\n\r\r\nNew: v\n", *stray);
    EXPECT_EQ("v", FindHeader(*stray, "New"));
}

TEST(EmlHeaderSet, LeavesOneFieldWhenTheNameWasThereSeveralTimes) {
    EXPECT_EQ("X: 3\r\nB: 2\r\n\r\n",
              *SetHeader("X: 1\r\nB: 2\r\nx: 2\r\n  more\r\n\r\n", "X", "3"));
}

TEST(EmlHeaderSet, RefusesFieldsThatWouldBreakTheBlock) {
    const std::string message = "A: 1\r\n\r\n";
    EXPECT_EQ(std::nullopt, SetHeader(message, "", "v"));
    EXPECT_EQ(std::nullopt, SetHeader(message, " A", "v"));  // would fold into the line above
    EXPECT_EQ(std::nullopt, SetHeader(message, "A:B", "v"));
    EXPECT_EQ(std::nullopt, SetHeader(message, "A", "v\r\nInjected: 1"));
    EXPECT_EQ(std::nullopt, SetHeader(message, "A", "v\n"));
    EXPECT_TRUE(SetHeader(message, "A B", "v with blanks  "));
}

TEST(EmlHeaderSet, WhatIsWrittenIsWhatIsFound) {
    std::string message = kMessage;
    message = *SetHeader(message, "x-has-been-checked", "1");
    message = *SetHeader(message, "X-Nuvexa-AntispamAddin-Checked", "1");
    message = *SetHeader(message, "x-has-been-checked", "2");
    EXPECT_EQ("2", FindHeader(message, "X-HAS-BEEN-CHECKED"));
    EXPECT_EQ("1", FindHeader(message, "x-nuvexa-antispamaddin-checked"));
    EXPECT_EQ(kMessage.substr(kMessage.find("\r\n\r\n")), message.substr(message.find("\r\n\r\n")));
}

}  // namespace
}  // namespace velk::tools::eml
