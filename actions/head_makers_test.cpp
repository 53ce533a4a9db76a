#include "actions/head_makers.h"

#include <gtest/gtest.h>

#include <set>

namespace velk::actions {
namespace {

TEST(HeadMakerRegistry, ElevenLowerCaseKeysWithTheirTwoHistoricalQuirks) {
    BuildHeadMakerMap();
    BuildHeadMakerMap();  // starts from empty each time
    const std::pair<const char*, std::int32_t> expected[] = {
        {"received", 1},     {"from", 2},         {"to", 3},         {"subject", 4},
        {"cc", 5},           {"bcc", 6},          {"date", 7},       {"mime-version", 8},
        {"content-type", 9}, {"return-path", 10}, {"message-id", 11}};
    EXPECT_EQ(11u, g_HeadMakerMap.size());
    std::set<IHeadMaker*> distinct;
    for (const auto& [key, type] : expected) {
        HeadRecord record;
        g_HeadMakerMap.at(key)->MakeHead(record, "a", "b");
        EXPECT_EQ(type, record.nType) << key;
        distinct.insert(g_HeadMakerMap.at(key));
    }
    EXPECT_EQ(11u, distinct.size());
    // Reply-To lives under "return-path"; X-Type-To has no key at all.
    EXPECT_EQ(&g_ReplyToHeadMaker, g_HeadMakerMap.at("return-path"));
    EXPECT_EQ(0u, g_HeadMakerMap.count("reply-to"));
    EXPECT_EQ(0u, distinct.count(&g_XTypeToHeadMaker));
    EXPECT_EQ(0u, g_HeadMakerMap.count("Subject"));  // callers lower-case
    FreeHeadMakerMap();
    EXPECT_TRUE(g_HeadMakerMap.empty());
}

TEST(HeadMaker, RecordOwnsPrivateCopiesAndARemakeFreesTheOldOnes) {
    char first[] = "Subject", second[] = "hello";
    HeadRecord record;
    g_SubjectHeadMaker.MakeHead(record, first, second);
    first[0] = second[0] = '?';
    EXPECT_STREQ("Subject", record.pszFirst);
    EXPECT_STREQ("hello", record.pszSecond);
    // The sanitizers see a leak or a double free here if the old copies are
    // not freed exactly once.
    g_XTypeToHeadMaker.MakeHead(record, "", "b");
    EXPECT_EQ(12, record.nType);
    EXPECT_STREQ("", record.pszFirst);
    EXPECT_STREQ("b", record.pszSecond);
}

int g_allocations_left = 0;
char* FailAfter(std::size_t size) {
    return g_allocations_left-- > 0 ? new char[size] : nullptr;
}

TEST(HeadMaker, FailedAllocationLeavesNullStringsAndStillSetsTheType) {
    for (int succeed : {0, 1}) {
        g_allocations_left = succeed;
        SetHeadTextAllocatorForTesting(&FailAfter);
        HeadRecord record;
        g_DateHeadMaker.MakeHead(record, "Date", "today");
        SetHeadTextAllocatorForTesting(nullptr);
        EXPECT_EQ(nullptr, record.pszFirst);
        EXPECT_EQ(nullptr, record.pszSecond);
        EXPECT_EQ(7, record.nType);
    }
}

}  // namespace
}  // namespace velk::actions
