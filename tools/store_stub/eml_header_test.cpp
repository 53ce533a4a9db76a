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
    EXPECT_EQ("A: 1", HeaderBlock("A: 1"));
    EXPECT_EQ("", HeaderBlock("\r\nbody"));
    // A line of blanks is a continuation, not the end of the block.
    EXPECT_EQ("A: 1\r\n \r\nB: 2\r\n", HeaderBlock("A: 1\r\n \r\nB: 2\r\n\r\nx"));
}

TEST(EmlHeaderFind, MatchesWholeNamesIgnoringCaseInTheBlockOnlyAndUnfolds) {
    EXPECT_EQ("Hello  world", FindHeader(kMessage, "subject"));
    EXPECT_EQ("from a\tby b", FindHeader(kMessage, "RECEIVED"));
    EXPECT_EQ("v", FindHeader("Name :   v\r\n\r\n", "Name"));
    EXPECT_EQ(std::nullopt, FindHeader(kMessage, "X-Mark"));
    EXPECT_EQ(std::nullopt, FindHeader("A: 1\r\n\r\nB: 2\r\n", "B"));
    EXPECT_EQ(std::nullopt, FindHeader("Subject\r\n\r\n", "Subject"));
}

TEST(EmlHeaderSet, ReplacesTheFieldInPlaceOnceAndKeepsEveryOtherByte) {
    EXPECT_EQ(
        "Received: from a\r\n"
        "\tby b\r\n"
        "SUBJECT: Tagged\r\n"
        "X-Marker: 0\r\n"
        "\r\n"
        "Subject: not a header, the body\r\n",
        *SetHeader(kMessage, "SUBJECT", "Tagged"));
    EXPECT_EQ("X: 3\r\nB: 2\r\n\r\n",
              *SetHeader("X: 1\r\nB: 2\r\nx: 2\r\n  more\r\n\r\n", "X", "3"));
}

TEST(EmlHeaderSet, AddsAMissingFieldAtTheEndOfTheBlockInTheBlocksLineEnding) {
    const std::pair<const char*, const char*> cases[] = {
        {"A: 1\r\nB: 2\r\n\r\nbody", "A: 1\r\nB: 2\r\nNew: v\r\n\r\nbody"},
        {"A: 1\n\nbody\r\n", "A: 1\nNew: v\n\nbody\r\n"},
        {"A: 1", "A: 1\r\nNew: v\r\n"},
        {"", "New: v\r\n"},
        // A stray CR ending a headers-only message stays part of the block.
        {"A: 1\nB: 2\n\r", "A: 1\nB: 2\n\r\r\nNew: v\n"},
    };
    for (const auto& [message, expected] : cases) {
        EXPECT_EQ(expected, *SetHeader(message, "New", "v")) << message;
        EXPECT_EQ("v", FindHeader(expected, "New"));
    }
}

TEST(EmlHeaderSet, RefusesFieldsThatWouldBreakTheBlock) {
    const std::string message = "A: 1\r\n\r\n";
    for (const auto& [name, value] : {std::pair<const char*, const char*>{"", "v"},
                                      {" A", "v"},  // would fold into the line above
                                      {"A:B", "v"},
                                      {"A", "v\r\nInjected: 1"},
                                      {"A", "v\n"}})
        EXPECT_EQ(std::nullopt, SetHeader(message, name, value)) << name << "|" << value;
    EXPECT_TRUE(SetHeader(message, "A B", "v with blanks  "));
}

}  // namespace
}  // namespace velk::tools::eml
