#include "demo/scenario.h"

#include <gtest/gtest.h>

#include <cstring>

#include "tools/scanner_stub/scanner_command.h"

namespace velk::demo {
namespace {

namespace scanner = velk::tools::scanner;

constexpr char kMailbox[] =
    "folder 1 Inbox\n"
    "folder 7 Junk\n"
    "message Inbox 3 a.eml\n"
    "message Junk 9 b.eml\n";

Scenario Parse(const std::string& text) {
    Scenario s;
    std::string error;
    EXPECT_TRUE(ParseScenario(text, s, error)) << error;
    return s;
}

std::string ParseError(const std::string& text) {
    Scenario s;
    std::string error;
    EXPECT_FALSE(ParseScenario(text, s, error));
    return error;
}

// The session reaches the add-in through the scanning process's own script
// parser, so the generated script is checked with that parser and the bytes
// it would send.
TEST(DemoScenario, SessionScriptCarriesEveryFieldToTheScannersRecords) {
    Scenario s =
        Parse(std::string(kMailbox) +
              "purge Junk\n"
              "clone a.eml option 1 headers \"X-A: 1\\r\\nX-B: two words\"\n"
              "move a.eml to Junk verdict 2 quarantine 0 headers \"X-QZ-AS-Tagged-Subject: "
              "[SPAM] $5 off\"\n"
              "sleep 250\n"
              "delete b.eml\n");
    std::vector<scanner::Command> commands;
    std::string error;
    ASSERT_TRUE(scanner::ParseScript(SessionScript(s), commands, error)) << error;
    ASSERT_EQ(5u, commands.size());

    EXPECT_EQ(scanner::Verb::kPurge, commands[0].verb);
    EXPECT_EQ(7u, commands[0].folder);

    EXPECT_EQ(scanner::Verb::kClone, commands[1].verb);
    EXPECT_EQ(1u, commands[1].folder);
    EXPECT_EQ(3u, commands[1].msg);
    EXPECT_EQ(1u, commands[1].option);
    EXPECT_EQ(u"X-A: 1\r\nX-B: two words", commands[1].headers);

    const scanner::Command& move = commands[2];
    EXPECT_EQ(scanner::Verb::kMove, move.verb);
    EXPECT_EQ(1u, move.src);
    EXPECT_EQ(7u, move.dst);
    EXPECT_EQ(3u, move.msg);
    EXPECT_EQ(2u, move.verdict);
    EXPECT_EQ(0u, move.quarantine);
    scanner::Payload payload = scanner::BuildPayload(move);
    ASSERT_EQ(2072u, payload.bytes.size());
    std::uint32_t quarantine_flag = 1;
    std::memcpy(&quarantine_flag, payload.bytes.data(), 4);
    EXPECT_EQ(0u, quarantine_flag);
    EXPECT_EQ(u"X-QZ-AS-Tagged-Subject: [SPAM] $5 off", move.headers);

    EXPECT_EQ(scanner::Verb::kSleep, commands[3].verb);
    EXPECT_EQ(250u, commands[3].sleep_ms);

    EXPECT_EQ(scanner::Verb::kDelete, commands[4].verb);
    EXPECT_EQ(7u, commands[4].folder);
    EXPECT_EQ(9u, commands[4].msg);
}

TEST(DemoScenario, MoveDefaultsToSpamWithQuarantineTime) {
    Scenario s = Parse(std::string(kMailbox) + "move a.eml to Junk\n");
    ASSERT_EQ(1u, s.session.size());
    EXPECT_EQ(1u, s.session[0].verdict);
    EXPECT_EQ(1u, s.session[0].quarantine);
    EXPECT_EQ(std::string::npos, SessionScript(s).find("--headers"));
}

TEST(DemoScenario, ExpectationsKeepTheirLineAndMeaning) {
    Scenario s = Parse(std::string(kMailbox) +
                       "\n# comment\n"
                       "expect a.eml in Junk\n"
                       "expect a.eml header X-Time time\n"
                       "expect a.eml header X-Score \"97\"\n"
                       "expect a.eml subject \"[SPAM] hi there\"\n"
                       "expect b.eml not-written x-has-been-detected_normal\n");
    ASSERT_EQ(5u, s.expectations.size());
    EXPECT_EQ(ExpectKind::kIn, s.expectations[0].kind);
    EXPECT_EQ(7u, s.expectations[0].folder);
    EXPECT_EQ(7, s.expectations[0].line);
    EXPECT_EQ(ExpectKind::kHeaderTime, s.expectations[1].kind);
    EXPECT_EQ(ExpectKind::kHeader, s.expectations[2].kind);
    EXPECT_EQ("97", s.expectations[2].value);
    EXPECT_EQ("[SPAM] hi there", s.expectations[3].value);
    EXPECT_EQ(ExpectKind::kNotWritten, s.expectations[4].kind);
    EXPECT_EQ(11, s.expectations[4].line);
}

TEST(DemoScenario, MistakesAreReportedWithTheirLine) {
    EXPECT_EQ("line 5: unknown message c.eml", ParseError(std::string(kMailbox) + "clone c.eml\n"));
    EXPECT_EQ("line 5: unknown folder Spam",
              ParseError(std::string(kMailbox) + "move a.eml to Spam\n"));
    EXPECT_EQ("line 2: folder 1 Other is declared twice",
              ParseError("folder 1 Inbox\nfolder 1 Other\n"));
    EXPECT_EQ("line 5: b.eml is declared twice",
              ParseError(std::string(kMailbox) + "message Inbox 4 b.eml\n"));
    EXPECT_EQ("line 5: message 3 of Inbox is declared twice",
              ParseError(std::string(kMailbox) + "message Inbox 3 c.eml\n"));
    EXPECT_NE(std::string::npos,
              ParseError("folder 1 Inbox\nmessage Inbox 1 ../x.eml\n").find("a file name"));
    EXPECT_NE(std::string::npos, ParseError("folder 0 Inbox\n").find("ID from 1"));
    EXPECT_EQ("line 5: headers: unknown escape \\q",
              ParseError(std::string(kMailbox) + "clone a.eml headers \"X: \\q\"\n"));
    EXPECT_EQ("line 5: a quote is not closed",
              ParseError(std::string(kMailbox) + "expect a.eml subject \"open\n"));
    EXPECT_EQ("line 5: verdict is not a number: x",
              ParseError(std::string(kMailbox) + "move a.eml to Junk verdict x\n"));
    EXPECT_EQ("line 5: unknown option verdict of clone",
              ParseError(std::string(kMailbox) + "clone a.eml verdict 1\n"));
    EXPECT_EQ("line 5: wrong number of words for expect ... header",
              ParseError(std::string(kMailbox) + "expect a.eml header X-A\n"));
    EXPECT_EQ("the scenario has no messages", ParseError("folder 1 Inbox\n"));
    EXPECT_EQ("line 5: expected: show FOLDER (a declared folder)",
              ParseError(std::string(kMailbox) + "show Spam\n"));
}

TEST(DemoScenario, TheShippedScenarioParses) {
    // The demo's own file: a typo there would only show at `make demo`.
    FILE* f = std::fopen(VELK_DEMO_SOURCE_DIR "/scenario.txt", "rb");
    ASSERT_NE(nullptr, f);
    std::string text;
    char buffer[4096];
    for (std::size_t n; (n = std::fread(buffer, 1, sizeof buffer, f)) > 0;)
        text.append(buffer, n);
    std::fclose(f);
    Scenario s = Parse(text);
    EXPECT_GE(s.folders.size(), 2u);
    EXPECT_FALSE(s.session.empty());
    EXPECT_FALSE(s.expectations.empty());
    EXPECT_NE(0u, s.show_folder);
    std::vector<scanner::Command> commands;
    std::string error;
    EXPECT_TRUE(scanner::ParseScript(SessionScript(s), commands, error)) << error;
}

}  // namespace
}  // namespace velk::demo
