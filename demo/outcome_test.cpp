#include "demo/outcome.h"

#include <gtest/gtest.h>

namespace velk::demo {
namespace {

std::string Eml(const std::string& id, const std::string& subject, const std::string& extra = "") {
    return "Message-ID: <" + id + "@example.org>\r\nSubject: " + subject + "\r\n" + extra +
           "\r\nbody\r\n";
}

class DemoOutcome : public ::testing::Test {
protected:
    void SetUp() override {
        std::string error;
        ASSERT_TRUE(
            ParseScenario("folder 1 Inbox\n"
                          "folder 2 Quarantine\n"
                          "message Inbox 1 ham.eml\n"
                          "message Inbox 2 spam.eml\n"
                          "message Inbox 3 phish.eml\n"
                          "message Quarantine 1 old.eml\n"
                          "message Quarantine 3 kept.eml\n",
                          scenario_, error))
            << error;
        before_ = {
            {1, 1, Eml("ham", "Lunch")},
            {1, 2, Eml("spam", "Gift card")},
            {1, 3, Eml("phish", "Bank")},
            {2, 1, Eml("old", "[SPAM] pills", "X-Nuvexa-AntispamAddin-QuarantineTime: 5\r\n")},
            {2, 3, Eml("kept", "Sale", "X-Nuvexa-AntispamAddin-Checked: 1\r\n")}};
        // What a good run leaves.
        after_ = {{1, 1,
                   Eml("ham", "Lunch",
                       "x-has-been-detected_normal: 1\r\nX-Nuvexa-AntispamAddin-Checked: 1\r\n")},
                  {2, 3, before_[4].bytes},
                  {2, 4,
                   Eml("spam", "[SPAM] Gift card",
                       "x-has-been-detected_spam: 1\r\n"
                       "X-Nuvexa-AntispamAddin-QuarantineTime: 1718092970\r\n")}};
        journal_text_ =
            "CreateInstance(IQzFolderMgr) @- -> 0x00000000\n"
            "GetFolder(2) @- -> 0x00000000\n"
            "GetFirstMessage() @2 -> 0x00000000\n"
            "GetHeaderText() @2/1 -> 0x00000000\n"
            "Delete(1) @2/1 -> 0x00000000\n"
            "GetNextMessage() @2 -> 0x00000000\n"
            "GetHeaderText() @2/3 -> 0x00000000\n"
            "GetMessage(1) @1 -> 0x00000000\n"
            "GetBodyHandle(0, 0) @1/1 -> 0x00000000\n"
            "QueryHeader(x-has-been-detected_normal) @1/1 -> 0x00000000\n"
            "SetHeader(x-has-been-detected_normal, 1) @1/1 -> 0x00000000\n"
            "SetHeader(X-Nuvexa-AntispamAddin-Checked, 1) @1/1 -> 0x00000000\n"
            "Commit() @1/1 -> 0x00000000\n"
            "GetMessage(2) @1 -> 0x00000000\n"
            "SetPropById(5, [SPAM] Gift card) @1/2 -> 0x00000000\n"
            "SetHeader(x-has-been-detected_spam, 1) @1/2 -> 0x00000000\n"
            "SetHeader(X-Nuvexa-AntispamAddin-QuarantineTime, 1718092970) @1/2 -> 0x00000000\n"
            "Commit() @1/2 -> 0x00000000\n"
            "MoveMessage(1, 2, 2) @- -> 0x00000000\n"
            "DeleteMessage(3, 1) @1 -> 0x00000000\n";
    }

    std::vector<Outcome> Outcomes() {
        journal_ = ParseJournal(journal_text_);
        return FindOutcomes(scenario_, before_, after_, journal_, strangers_);
    }

    const Outcome& Of(const std::vector<Outcome>& outcomes, const std::string& file) {
        for (const Outcome& o : outcomes) {
            if (o.message->file == file)
                return o;
        }
        ADD_FAILURE() << file;
        return outcomes.front();
    }

    std::vector<std::string> Check(const std::string& expectations,
                                   std::uint64_t start = 1718092900,
                                   std::uint64_t end = 1718093000) {
        std::string error;
        Scenario s;
        EXPECT_TRUE(ParseScenario(kMailboxText + expectations, s, error)) << error;
        scenario_ = s;
        std::vector<Outcome> outcomes = Outcomes();
        return CheckOutcomes(scenario_, outcomes, strangers_, start, end);
    }

    static inline const std::string kMailboxText =
        "folder 1 Inbox\nfolder 2 Quarantine\n"
        "message Inbox 1 ham.eml\nmessage Inbox 2 spam.eml\nmessage Inbox 3 phish.eml\n"
        "message Quarantine 1 old.eml\nmessage Quarantine 3 kept.eml\n";
    static inline const std::string kGoodRun =
        "expect old.eml gone\nexpect phish.eml gone\nexpect kept.eml unchanged\n"
        "expect ham.eml header x-has-been-detected_normal \"1\"\n"
        "expect ham.eml not-written X-QZ-AS-Score\n"
        "expect spam.eml in Quarantine\n"
        "expect spam.eml subject \"[SPAM] Gift card\"\n"
        "expect spam.eml header X-Nuvexa-AntispamAddin-QuarantineTime time\n";

    Scenario scenario_;
    Mailbox before_, after_;
    std::string journal_text_;
    std::vector<JournalEntry> journal_;
    std::vector<const StoredMessage*> strangers_;
};

// From the files: where each message went, what changed; from the journal:
// the calls at it, failed ones marked, and markers only queried.
TEST_F(DemoOutcome, EachMessageIsDescribedFromTheFilesAndTheJournal) {
    journal_text_ +=
        "QueryHeader(X-Nuvexa-AntispamAddin-Checked) @2/3 -> 0x00000000\n"
        "Commit() @2/3 -> 0x80004005\n";
    std::vector<Outcome> outcomes = Outcomes();
    EXPECT_EQ(
        "spam.eml: moved Inbox -> Quarantine (message 4), subject now '[SPAM] Gift card', added "
        "x-has-been-detected_spam=1, X-Nuvexa-AntispamAddin-QuarantineTime=1718092970 "
        "(2024-06-11 08:02:50 UTC) [store: GetMessage, SetPropById, SetHeader x2, Commit, "
        "MoveMessage]",
        DescribeOutcome(scenario_, Of(outcomes, "spam.eml")));
    EXPECT_EQ(
        "kept.eml: unchanged in Quarantine, kept X-Nuvexa-AntispamAddin-Checked (queried, not "
        "written) [store: GetHeaderText, QueryHeader, Commit (failed)]",
        DescribeOutcome(scenario_, Of(outcomes, "kept.eml")));
    EXPECT_EQ("phish.eml: deleted from Inbox [store: DeleteMessage]",
              DescribeOutcome(scenario_, Of(outcomes, "phish.eml")));
}

TEST_F(DemoOutcome, CallsAtAMovedMessagesNewPlaceFollowIt) {
    // After the move the spam is message 4 of Quarantine; later calls there
    // are its own, and calls at an old place of another message stay with that one.
    journal_text_ +=
        "GetMessage(4) @2 -> 0x00000000\n"
        "Commit() @2/4 -> 0x00000000\n"
        "GetHeaderText() @2/3 -> 0x00000000\n";
    std::vector<Outcome> outcomes = Outcomes();
    const Outcome& spam = Of(outcomes, "spam.eml");
    ASSERT_GE(spam.calls.size(), 2u);
    EXPECT_EQ("Commit", spam.calls.back()->method);
    EXPECT_EQ("GetMessage(4)", spam.calls[spam.calls.size() - 2]->call);
    EXPECT_EQ(2u, Of(outcomes, "kept.eml").calls.size());
}

// Against a good run: what the expectations ask for, and for messages no
// expectation names, that they stayed as they were.
TEST_F(DemoOutcome, AGoodRunMeetsItsExpectationsAndUnnamedChangesFail) {
    const std::pair<std::string, std::vector<std::string>> cases[] = {
        {kGoodRun, {}},
        {"expect spam.eml header x-has-been-detected_spam \"1\"\nexpect ham.eml subject "
         "\"Lunch\"\n",
         {"spam.eml: expected to stay in Inbox, found in Quarantine",
          "phish.eml: changed (gone) though no expectation names it",
          "old.eml: changed (gone) though no expectation names it"}},
        {"expect old.eml gone\nexpect kept.eml unchanged\nexpect phish.eml no-header X-A\n"
         "expect ham.eml header X-Nuvexa-AntispamAddin-Checked \"1\"\nexpect spam.eml in "
         "Quarantine\n",
         {"line 10: phish.eml: expected to read its headers, but it is gone",
          "phish.eml: expected to stay in Inbox, found gone"}},
    };
    for (const auto& [expectations, failures] : cases)
        EXPECT_EQ(failures, Check(expectations)) << expectations;
}

TEST_F(DemoOutcome, EveryKindOfDeviationIsReported) {
    // The run moved nothing, deleted nothing, wrote the time too late, and
    // left a message nobody asked for.
    after_ = {
        {1, 1, Eml("ham", "Lunch", "X-QZ-AS-Score: 1\r\n")},
        {1, 2, Eml("spam", "Gift card", "X-Nuvexa-AntispamAddin-QuarantineTime: 1718099999\r\n")},
        {1, 3, before_[2].bytes},
        {2, 1, before_[3].bytes},
        {2, 3, Eml("kept", "Sale!", "X-Nuvexa-AntispamAddin-Checked: 1\r\n")},
        {2, 9, Eml("stranger", "Who?")}};
    journal_text_ = "SetHeader(X-QZ-AS-Score, 1) @1/1 -> 0x00000000\n";
    const std::vector<std::string> expected = {
        "line 11: ham.eml: expected x-has-been-detected_normal '1', found absent",
        "line 12: ham.eml: expected X-QZ-AS-Score not written, the store got SetHeader",
        "line 13: spam.eml: expected in Quarantine, found in Inbox",
        "line 14: spam.eml: expected subject '[SPAM] Gift card', found 'Gift card'",
        "line 15: spam.eml: expected X-Nuvexa-AntispamAddin-QuarantineTime a time of this run "
        "(1718092900 to 1718093000), found '1718099999'",
        "line 9: phish.eml: expected gone, found in Inbox",
        "line 8: old.eml: expected gone, found in Quarantine",
        "line 10: kept.eml: expected unchanged, found in Quarantine, changed",
        "message 9 of Quarantine is not one of the scenario's messages"};
    EXPECT_EQ(expected, Check(kGoodRun));
}

TEST(DemoUtcText, CivilDatesWithoutTheCLibrary) {
    EXPECT_EQ("1970-01-01 00:00:00 UTC", UtcText(0));
    EXPECT_EQ("2024-06-11 08:02:50 UTC", UtcText(1718092970));
    EXPECT_EQ("2000-02-29 00:00:00 UTC", UtcText(951782400));
    EXPECT_EQ("2099-12-31 23:59:59 UTC", UtcText(4102444799));
}

}  // namespace
}  // namespace velk::demo
