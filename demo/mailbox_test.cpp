#include "demo/mailbox.h"

#include <gtest/gtest.h>

#include "common_src/QzCommon/QzComn_test_util.h"
#include "demo/store_journal.h"

namespace velk::demo {
namespace {

namespace fs = std::filesystem;

TEST(DemoHeaderFields, FoldedAndOddFieldsAreReadAsTheStoreReadsThem) {
    const std::string message =
        "Received: from a\r\n"
        "\tby b; Tue, 11 Jun 2024\r\n"
        "Subject :   spaced\r\n"
        "not a field\r\n"
        "X-Empty:\r\n"
        "subject: second\r\n"
        "\r\n"
        "Body: not a header\r\n";
    const std::vector<HeaderField> fields = HeaderFields(message);
    ASSERT_EQ(4u, fields.size());
    EXPECT_EQ("from a\tby b; Tue, 11 Jun 2024", fields[0].value);
    EXPECT_EQ("Subject", fields[1].name);
    EXPECT_EQ("spaced", fields[1].value);
    EXPECT_EQ("", fields[2].value);
    EXPECT_EQ("spaced", FindField(fields, "SUBJECT"));
    EXPECT_EQ(std::nullopt, FindField(fields, "Body"));
    // LF-only files and a message without a body read the same way.
    EXPECT_EQ("x", FindField(HeaderFields("A: x\nB: y\n"), "a"));
    EXPECT_EQ("y", FindField(HeaderFields("A: x\nB: y"), "b"));
}

class DemoMailboxFiles : public ::testing::Test {
protected:
    void SetUp() override {
        std::string error;
        ASSERT_TRUE(
            ParseScenario("folder 1 Inbox\nfolder 12 Junk\nfolder 3 Empty\n"
                          "message Inbox 2 a.eml\nmessage Inbox 10 b.eml\n"
                          "message Junk 1 c.eml\n",
                          scenario_, error))
            << error;
        dir_.WriteFile(L"src/Inbox/a.eml", "Message-ID: <a@x>\r\n\r\nA\r\n");
        dir_.WriteFile(L"src/Inbox/b.eml", "Message-ID: <b@x>\nSubject: LF only\n\nB\n");
        dir_.WriteFile(L"src/Junk/c.eml", "Message-ID: <c@x>\r\n\r\n\xC3\xA4\r\n");
    }
    std::string StageError() {
        Mailbox staged;
        std::string error;
        EXPECT_FALSE(
            StageMailbox(scenario_, dir_.File(L"src"), dir_.File(L"store"), staged, error));
        return error;
    }

    QzCommon::testing_util::TempFolder dir_;
    Scenario scenario_;
};

TEST_F(DemoMailboxFiles, StagedFilesAreTheStoresLayoutByteForByte) {
    Mailbox staged;
    std::string error;
    ASSERT_TRUE(StageMailbox(scenario_, dir_.File(L"src"), dir_.File(L"store"), staged, error))
        << error;
    EXPECT_EQ(dir_.ReadFile(L"src/Inbox/b.eml"), dir_.ReadFile(L"store/1/10.eml"));
    EXPECT_EQ(dir_.ReadFile(L"src/Junk/c.eml"), dir_.ReadFile(L"store/12/1.eml"));
    EXPECT_TRUE(dir_.Exists(L"store/3"));  // declared, empty

    // What the store would show, read back: ordered by folder, then id
    // (numerically: 10 after 2), skipping what is not the store's.
    dir_.WriteFile(L"store/1/readme.txt", "x");
    dir_.WriteFile(L"store/1/07.eml", "leading zero: not a store id");
    dir_.MakeFolder(L"store/notes");
    Mailbox loaded;
    ASSERT_TRUE(LoadMailbox(dir_.File(L"store"), loaded, error)) << error;
    ASSERT_EQ(3u, loaded.size());
    EXPECT_EQ(2u, loaded[0].id);
    EXPECT_EQ(10u, loaded[1].id);
    EXPECT_EQ(12u, loaded[2].folder);
    for (std::size_t i = 0; i < loaded.size(); ++i)
        EXPECT_EQ(staged[i].bytes, loaded[i].bytes);
}

TEST_F(DemoMailboxFiles, StagingRefusesWhatWouldMakeTheReportWrong) {
    dir_.WriteFile(L"src/Inbox/stray.eml", "Message-ID: <s@x>\r\n\r\n");
    EXPECT_EQ("Inbox/stray.eml is not listed in the scenario", StageError());
    fs::remove(dir_.File(L"src/Inbox/stray.eml"));

    dir_.WriteFile(L"src/Junk/c.eml", "Message-ID: <a@x>\r\n\r\n");
    EXPECT_EQ("c.eml shares its Message-ID <a@x>", StageError());
    dir_.WriteFile(L"src/Junk/c.eml", "Subject: no id\r\n\r\n");
    EXPECT_EQ("c.eml has no Message-ID", StageError());
    fs::remove(dir_.File(L"src/Junk/c.eml"));
    EXPECT_NE(std::string::npos, StageError().find("cannot read"));

    // An earlier run's mailbox is never overwritten.
    dir_.WriteFile(L"src/Junk/c.eml", "Message-ID: <c@x>\r\n\r\n");
    dir_.MakeFolder(L"store/1");
    EXPECT_NE(std::string::npos, StageError().find("is not empty"));
}

TEST(DemoStoreJournal, TargetsAndResultsAreTakenFromTheRight) {
    const std::vector<JournalEntry> entries = ParseJournal(
        "SetPropById(5, a @1/2 -> 0x00000000 trick) @1/2 -> 0x00000000\r\n"
        "MoveMessage(1, 2, 7) @- -> 0x80004005\n"
        "\n"
        "Commit() @3/4 -> pending\n"
        "GetFolder(2)\n");
    ASSERT_EQ(4u, entries.size());
    EXPECT_EQ("5, a @1/2 -> 0x00000000 trick", entries[0].args);
    EXPECT_EQ(1u, entries[0].folder);
    EXPECT_EQ(2u, entries[0].msg);
    EXPECT_TRUE(entries[0].Succeeded());

    EXPECT_EQ(std::nullopt, entries[1].folder);
    EXPECT_FALSE(entries[1].Succeeded());
    EXPECT_EQ(7u, entries[1].NumberArg(2));

    EXPECT_EQ(std::nullopt, entries[2].hr);  // pending: not a success
    EXPECT_FALSE(entries[2].Succeeded());
    EXPECT_EQ("GetFolder(2)", entries[3].call);
    EXPECT_EQ("2", entries[3].FirstArg());
}

}  // namespace
}  // namespace velk::demo
