#include "senders/approve_mail_list.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "senders/senders_test_util.h"

namespace velk::senders {
namespace {

TEST(ApproveMailList, NamedAndBareEntriesArriveInOrderWithEveryDebugLine) {
    testing::TempFolder dir;
    HandedOverSenders parsed;
    std::string logged = testing::CaptureLog(dir, [&] {
        parsed = ParseApproveMailList(u"ApproveMailList", u"Ann Lee, ann@x.com ;bob@y.org;");
    });
    logged.erase(std::remove(logged.begin(), logged.end(), '\r'), logged.end());  // Windows text mode
    EXPECT_FALSE(parsed.malformed);
    ASSERT_EQ(parsed.senders.size(), 2u);
    EXPECT_EQ(parsed.senders[0], (SenderRecord{u"Ann Lee", u"ann@x.com"}));
    EXPECT_EQ(parsed.senders[1], (SenderRecord{u"", u"bob@y.org"}));

    const char* const expected[] = {
        "[KMB] ApproveMailList = Ann Lee, ann@x.com ;bob@y.org;\n",
        "[KMB] ';' found, extract approved mail...\n",
        "[KMB] ',' found, extract mail address...\n",
        "[KMB] So, addr=(ann@x.com) \t sender=(Ann Lee)\n",
        "[KMB] (1)Insert addr (ann@x.com) to list\n",
        "[KMB] ';' found, extract approved mail...\n",
        "[KMB] no ',' found, assign whole string to be the mail address\n",
        "[KMB] no sender found\n",
        "[KMB] So, addr=(bob@y.org) \t sender=()\n",
        "[KMB] (2)Insert addr (bob@y.org) to list\n",
    };
    std::size_t at = 0;
    for (const char* line : expected) {
        const std::size_t found = logged.find(line, at);
        ASSERT_NE(found, std::string::npos) << "missing or out of order: " << line << logged;
        at = found + 1;
    }
}

TEST(ApproveMailList, AnEntryWithoutAddressStopsTheParseAndKeepsWhatCameBefore) {
    for (const char16_t* value : {u"a@x.com;Name,;c@x.com", u"a@x.com;;c@x.com", u"a@x.com; \t;c"}) {
        const HandedOverSenders parsed = ParseApproveMailList(u"ApproveMailList", value);
        EXPECT_TRUE(parsed.malformed);
        ASSERT_EQ(parsed.senders.size(), 1u);
        EXPECT_EQ(parsed.senders[0].address, u"a@x.com");
    }
    EXPECT_FALSE(ParseApproveMailList(u"ApproveMailList", u"").malformed);
    EXPECT_TRUE(ParseApproveMailList(u"ApproveMailList", u"").senders.empty());
    // The text after the first comma is the address, commas and all.
    EXPECT_EQ(ParseApproveMailList(u"k", u"a,b,c@x.com").senders[0].address, u"b,c@x.com");
}

}  // namespace
}  // namespace velk::senders
