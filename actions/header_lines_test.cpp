#include "actions/header_lines.h"

#include <gtest/gtest.h>

namespace velk::actions {
namespace {

using Lines = std::vector<HeaderLine>;

// A line end takes at most one more CR or LF, so empty lines are lost; the
// name is kept as is, the value loses only its leading spaces; lines
// without a colon are skipped; ANSI bytes above 127 pass untouched.
TEST(HeaderLineCutter, CutsAtEveryLineEndKindAndKeepsNamesAndValuesAsSent) {
    const Lines ab{{"A", "1"}, {"B", "2"}};
    for (const char* text : {"A: 1\r\nB: 2", "A: 1\n\rB: 2", "A: 1\r\rB: 2", "A: 1\n\nB: 2\n",
                             "A: 1\rB: 2\r\n", "\r\n\nA: 1\n\n\nB: 2", "no colon\r\nA:1\nB:  2"})
        EXPECT_EQ(ab, CutHeaderLines(text)) << text;
    EXPECT_EQ((Lines{{" X-Pad ", "\tV  "}, {"", "v"}, {"N", ""}, {"X-N", "\xC4rger \x80"}}),
              CutHeaderLines(" X-Pad : \tV  \r\n: v\nN:   \nX-N: \xC4rger \x80"));
}

}  // namespace
}  // namespace velk::actions
