#include "demo/encoded_words.h"

#include <gtest/gtest.h>

namespace velk::demo {
namespace {

TEST(DemoEncodedWords, QAndBWordsOfTheSampleCharsetsAreDecoded) {
    EXPECT_EQ("Abendessen am Freitag \xE2\x80\x93 wer kommt?",
              DecodeEncodedWords("=?UTF-8?Q?Abendessen_am_Freitag_=E2=80=93_wer_kommt=3F?="));
    EXPECT_EQ(
        "Gr\xC3\xBC\xC3\x9F"
        "e",
        DecodeEncodedWords("=?utf-8?b?R3LDvMOfZQ==?="));
    EXPECT_EQ("caf\xC3\xA9", DecodeEncodedWords("=?ISO-8859-1?Q?caf=E9?="));
    // Blanks between two encoded words go; those next to plain text stay.
    EXPECT_EQ("Re: ab c", DecodeEncodedWords("Re: =?UTF-8?Q?a?= =?UTF-8?Q?b?= c"));
    EXPECT_EQ("plain  text ", DecodeEncodedWords("plain  text "));
}

TEST(DemoEncodedWords, WhatCannotBeDecodedStaysAsWritten) {
    for (const char* kept :
         {"=?KOI8-R?Q?abc?=", "=?UTF-8?X?abc?=", "=?UTF-8?Q?bad=Z1?=", "=?UTF-8?Q?cut=4?=",
          "=?UTF-8?B?a!b?=", "=?UTF-8?Q?unterminated", "=?", "100% =?="}) {
        EXPECT_EQ(kept, DecodeEncodedWords(kept));
    }
}

}  // namespace
}  // namespace velk::demo
