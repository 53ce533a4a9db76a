#include "tools/scanner_stub/scanner_command.h"

#include <gtest/gtest.h>

namespace velk::tools::scanner {
namespace {

std::uint32_t Le32(const std::vector<std::uint8_t>& b, std::size_t at) {
    return b[at] | b[at + 1] << 8 | b[at + 2] << 16 | static_cast<std::uint32_t>(b[at + 3]) << 24;
}

// The UTF-16LE units of a record's text field from `at`.
std::u16string Units(const std::vector<std::uint8_t>& b, std::size_t at, std::size_t count) {
    std::u16string units;
    for (std::size_t i = 0; i < count; ++i)
        units.push_back(static_cast<char16_t>(b[at + 2 * i] | b[at + 2 * i + 1] << 8));
    return units;
}

Command Parse(std::vector<std::string> args) {
    Command c;
    std::string error;
    EXPECT_TRUE(ParseCommand(args, c, error)) << error;
    return c;
}

std::string ParseError(std::vector<std::string> args) {
    Command c;
    std::string error;
    EXPECT_FALSE(ParseCommand(args, c, error));
    return error;
}

TEST(ScannerRecords, CloneAndMoveCarryTheirFieldsAtTheWireOffsets) {
    Payload clone = BuildPayload(Parse({"clone", "--folder", "3", "--msg", "0x10", "--option", "1",
                                        "--headers", "X-A: 1\\r\\nX-B: \\u00e9"}));
    EXPECT_EQ(1076u, clone.dwdata);
    ASSERT_EQ(2060u, clone.bytes.size());
    EXPECT_EQ(1u, Le32(clone.bytes, 0));
    EXPECT_EQ(3u, Le32(clone.bytes, 4));
    EXPECT_EQ(16u, Le32(clone.bytes, 8));
    EXPECT_EQ(std::u16string(u"X-A: 1\r\nX-B: \u00e9\0", 16), Units(clone.bytes, 12, 16));
    EXPECT_EQ(std::u16string(1024 - 15, u'\0'), Units(clone.bytes, 12 + 2 * 15, 1024 - 15));

    Payload move =
        BuildPayload(Parse({"move", "--src", "1", "--dst", "2", "--msg", "7", "--verdict", "2",
                            "--quarantine", "0", "--option", "5", "--headers", "S: x"}));
    EXPECT_EQ(1077u, move.dwdata);
    ASSERT_EQ(2072u, move.bytes.size());
    EXPECT_EQ((std::vector<std::uint32_t>{0, 5, 2, 1, 2, 7}),
              (std::vector<std::uint32_t>{Le32(move.bytes, 0), Le32(move.bytes, 4),
                                          Le32(move.bytes, 8), Le32(move.bytes, 12),
                                          Le32(move.bytes, 16), Le32(move.bytes, 20)}));
    EXPECT_EQ(std::u16string(u"S: x\0", 5), Units(move.bytes, 24, 5));
}

TEST(ScannerRecords, DeleteAndPurgeDifferOnlyInTheAllSpamFlag) {
    Payload del = BuildPayload(Parse({"delete", "--folder", "4", "--msg", "9"}));
    Payload purge = BuildPayload(Parse({"purge", "--folder", "4"}));
    EXPECT_EQ(1078u, del.dwdata);
    EXPECT_EQ(1078u, purge.dwdata);
    EXPECT_EQ((std::vector<std::uint8_t>{4, 0, 0, 0, 9, 0, 0, 0, 0, 0, 0, 0}), del.bytes);
    EXPECT_EQ((std::vector<std::uint8_t>{4, 0, 0, 0, 0, 0, 0, 0, 1, 0, 0, 0}), purge.bytes);
}

TEST(ScannerRecords, HeaderTextIsCutToKeepItsNulUnlessAskedNotTo) {
    std::string long_text(1100, 'a');
    Payload cut =
        BuildPayload(Parse({"clone", "--folder", "1", "--msg", "1", "--headers", long_text}));
    EXPECT_EQ(std::u16string(1023, u'a') + u'\0', Units(cut.bytes, 12, 1024));

    Payload full = BuildPayload(
        Parse({"clone", "--folder", "1", "--msg", "1", "--headers", "ab\\0", "--no-nul"}));
    std::u16string expected;
    for (int i = 0; i < 1024; ++i)
        expected += std::u16string(u"ab\0", 3)[i % 3];
    EXPECT_EQ(expected, Units(full.bytes, 12, 1024));
    EXPECT_EQ(u'a', Units(full.bytes, 12, 1024).back()) << "ends mid-text: no terminator";

    EXPECT_EQ("--no-nul needs --headers",
              ParseError({"clone", "--folder", "1", "--msg", "1", "--no-nul"}));
}

TEST(ScannerCommandLine, GlobalOptionsComeBeforeTheCommand) {
    Invocation inv;
    std::string error;
    ASSERT_TRUE(ParseInvocation({"--hwnd", "0x2A", "--wait", "100", "--timeout", "50", "--report",
                                 "r.txt", "delete", "--folder", "1", "--msg", "2", "--repeat", "3"},
                                inv, error))
        << error;
    EXPECT_EQ(42u, *inv.globals.hwnd);
    EXPECT_EQ(100u, inv.globals.wait_ms);
    EXPECT_EQ(50u, *inv.globals.timeout_ms);
    EXPECT_EQ("r.txt", inv.globals.report);
    EXPECT_EQ(kAddinWindowClass, inv.globals.window_class);
    EXPECT_EQ(3u, inv.command.repeat);

    ASSERT_TRUE(ParseInvocation({"listen", "--log", "l.txt", "--ready-event", "ev"}, inv, error));
    EXPECT_EQ(Verb::kListen, inv.command.verb);
    EXPECT_EQ(kScannerWindowTitle, inv.command.title);
    EXPECT_EQ("ev", inv.command.ready_event);

    EXPECT_FALSE(ParseInvocation({"--hwnd", "0", "purge", "--folder", "1"}, inv, error));
    EXPECT_FALSE(ParseInvocation({"--bogus", "1", "purge", "--folder", "1"}, inv, error));
    EXPECT_FALSE(ParseInvocation({"purge", "--folder", "1", "--hwnd", "5"}, inv, error));
    EXPECT_FALSE(ParseInvocation({}, inv, error));
}

TEST(ScannerCommandLine, RefusesMissingFieldsForeignOptionsAndBadNumbers) {
    EXPECT_EQ("move needs --src, --dst and --msg",
              ParseError({"move", "--src", "1", "--msg", "2"}));
    EXPECT_EQ("delete needs --folder and --msg", ParseError({"delete", "--folder", "1"}));
    EXPECT_EQ("raw needs --dwdata", ParseError({"raw", "--hex", "00"}));
    EXPECT_EQ("delete does not take --headers",
              ParseError({"delete", "--folder", "1", "--msg", "1", "--headers", "x"}));
    EXPECT_EQ("bad number for --msg",
              ParseError({"delete", "--folder", "1", "--msg", "4294967296"}));
    EXPECT_EQ("bad number for --msg", ParseError({"delete", "--folder", "1", "--msg", "-1"}));
    EXPECT_EQ("--msg needs a value", ParseError({"delete", "--folder", "1", "--msg"}));
    EXPECT_EQ("--repeat must be at least 1",
              ParseError({"purge", "--folder", "1", "--repeat", "0"}));
    EXPECT_EQ("unknown command: copy", ParseError({"copy"}));
    EXPECT_EQ("sleep takes one argument", ParseError({"sleep"}));
}

TEST(ScannerText, EscapesAndUtf8BecomeUtf16) {
    std::u16string out;
    std::string error;
    ASSERT_TRUE(DecodeText("a\\tb\\\\c\\u0022 \xC3\xA9 \xF0\x9F\x98\x80", out, error)) << error;
    EXPECT_EQ(u"a\tb\\c\" \u00e9 \U0001F600", out);
    EXPECT_FALSE(DecodeText("\\q", out, error));
    EXPECT_FALSE(DecodeText("\\u12", out, error));
    EXPECT_FALSE(DecodeText("trailing \\", out, error));
    EXPECT_FALSE(DecodeText("\xC3", out, error));          // cut sequence
    EXPECT_FALSE(DecodeText("\xC0\xAF", out, error));      // overlong
    EXPECT_FALSE(DecodeText("\xED\xA0\x80", out, error));  // encoded surrogate
}

TEST(ScannerScript, SkipsCommentsAndBlankLinesAndNamesTheBadLine) {
    std::vector<Command> commands;
    std::string error;
    ASSERT_TRUE(
        ParseScript("\xEF\xBB\xBF# a script\r\n"
                    "clone --folder 1 --msg 2 --headers \"Subject: a b\"\r\n"
                    "\r\n"
                    "   sleep 10\n"
                    "purge --folder 3",
                    commands, error))
        << error;
    ASSERT_EQ(3u, commands.size());
    EXPECT_EQ(u"Subject: a b", commands[0].headers);
    EXPECT_EQ(10u, commands[1].sleep_ms);
    EXPECT_EQ(Verb::kPurge, commands[2].verb);

    EXPECT_FALSE(ParseScript("purge --folder 1\nmove --src 1\n", commands, error));
    EXPECT_EQ("line 2: move needs --src, --dst and --msg", error);
    EXPECT_FALSE(ParseScript("script other.txt\n", commands, error));
    EXPECT_EQ("line 1: script cannot be used in a script", error);
    EXPECT_FALSE(ParseScript("clone --headers \"open\n", commands, error));
    EXPECT_EQ("line 1: a quote is not closed", error);
}

}  // namespace
}  // namespace velk::tools::scanner
