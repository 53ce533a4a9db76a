#include "demo/scenario.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

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

std::vector<scanner::Command> Commands(const Scenario& s) {
    std::vector<scanner::Command> commands;
    std::string error;
    EXPECT_TRUE(scanner::ParseScript(SessionScript(s), commands, error)) << error;
    return commands;
}

// The session reaches the add-in through the scanning process's own script
// parser, so the generated script is checked with that parser and the bytes
// it would send.
TEST(DemoScenario, SessionScriptCarriesEveryFieldToTheScannersRecords) {
    const std::vector<scanner::Command> commands = Commands(
        Parse(std::string(kMailbox) +
              "purge Junk\n"
              "clone a.eml option 1 headers \"X-A: 1\\r\\nX-B: two words\"\n"
              "move a.eml to Junk verdict 2 quarantine 0 headers \"X-QZ-AS-Tagged-Subject: "
              "[SPAM] $5 off\"\n"
              "sleep 250\n"
              "delete b.eml\n"
              "move a.eml to Junk\n"));
    ASSERT_EQ(6u, commands.size());
    EXPECT_EQ(scanner::Verb::kPurge, commands[0].verb);
    EXPECT_EQ(7u, commands[0].folder);
    EXPECT_EQ(scanner::Verb::kClone, commands[1].verb);
    EXPECT_EQ(std::make_pair(1u, 3u), std::make_pair(commands[1].folder, commands[1].msg));
    EXPECT_EQ(1u, commands[1].option);
    EXPECT_EQ(u"X-A: 1\r\nX-B: two words", commands[1].headers);

    const scanner::Command& move = commands[2];
    EXPECT_EQ(scanner::Verb::kMove, move.verb);
    EXPECT_EQ(
        (std::vector<std::uint32_t>{1, 7, 3, 2, 0}),
        (std::vector<std::uint32_t>{move.src, move.dst, move.msg, move.verdict, move.quarantine}));
    EXPECT_EQ(u"X-QZ-AS-Tagged-Subject: [SPAM] $5 off", move.headers);

    EXPECT_EQ(250u, commands[3].sleep_ms);
    EXPECT_EQ(std::make_pair(7u, 9u), std::make_pair(commands[4].folder, commands[4].msg));
    // A move without options is a spam verdict with quarantine time.
    EXPECT_EQ(1u, commands[5].verdict);
    EXPECT_EQ(1u, commands[5].quarantine);
}

TEST(DemoScenario, MistakesAreReportedWithTheirLine) {
    const std::pair<std::string, std::string> cases[] = {
        {std::string(kMailbox) + "clone c.eml\n", "line 5: unknown message c.eml"},
        {std::string(kMailbox) + "move a.eml to Spam\n", "line 5: unknown folder Spam"},
        {"folder 1 Inbox\nfolder 1 Other\n", "line 2: folder 1 Other is declared twice"},
        {std::string(kMailbox) + "message Inbox 4 b.eml\n", "line 5: b.eml is declared twice"},
        {std::string(kMailbox) + "expect a.eml subject \"open\n", "line 5: a quote is not closed"},
        {std::string(kMailbox) + "clone a.eml verdict 1\n",
         "line 5: unknown option verdict of clone"},
        {"folder 1 Inbox\n", "the scenario has no messages"},
    };
    for (const auto& [text, message] : cases) {
        Scenario s;
        std::string error;
        EXPECT_FALSE(ParseScenario(text, s, error)) << text;
        EXPECT_EQ(message, error);
    }
}

TEST(DemoScenario, TheShippedScenarioParses) {
    // The demo's own file: a typo there would only show at `make demo`.
    std::ifstream in(VELK_DEMO_SOURCE_DIR "/scenario.txt", std::ios::binary);
    ASSERT_TRUE(in);
    const Scenario s = Parse(std::string(std::istreambuf_iterator<char>(in), {}));
    EXPECT_FALSE(s.session.empty());
    EXPECT_FALSE(s.expectations.empty());
    EXPECT_NE(0u, s.show_folder);
    Commands(s);
}

}  // namespace
}  // namespace velk::demo
