#include "senders/sender_list.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <random>
#include <thread>

#include "senders/memory_file_system.h"
#include "senders/sender_list_wide.h"
#include "senders/sender_text.h"

namespace velk::senders {
namespace {

using ::testing::ElementsAre;
using ::testing::Pair;

std::u16string Numbered(const char16_t* prefix, std::size_t i) {
    std::u16string s = prefix;
    for (char c : std::to_string(i))
        s.push_back(static_cast<char16_t>(c));
    return s + u"@example.com";
}

void FillToCapacity(SenderList& list) {
    for (std::size_t i = 0; i < list.Capacity(); ++i) {
        const std::u16string a = Numbered(u"s", i);
        ASSERT_EQ(list.Add(a, {u"", a}), kSenderAdded) << i;
    }
}

class SenderListTest : public ::testing::Test {
protected:
    MemoryFileSystem fs_;
    SenderList list_{SenderListKind::kApproved, fs_};
};

TEST_F(SenderListTest, TheFirstEntryOfAKeyWinsAndQueriesFoldOnlyTheAddress) {
    EXPECT_EQ(list_.Add(u"Ann@Example.COM", {u"Ann", u"Ann@Example.COM"}), kSenderAdded);
    EXPECT_EQ(list_.Add(u"ann@example.com", {u"Other", u"ann@example.com"}), kSenderExists);
    EXPECT_THAT(list_.Entries(),
                ElementsAre(Pair(u"ann@example.com", SenderRecord{u"Ann", u"Ann@Example.COM"})));
    EXPECT_TRUE(list_.Exists(u"ANN@EXAMPLE.com"));
    EXPECT_FALSE(list_.Exists(u"ann@example.com "));
    EXPECT_TRUE(list_.IsSameRecord(u"ann@example.com", u"Ann"));
    EXPECT_FALSE(list_.IsSameRecord(u"ann@example.com", u"ann"));
}

// The scanning process reads at most 8000 lines of either list.
TEST(SenderListCapacity, EachListRefusesThe8001stAddressUntilOneIsRemoved) {
    for (SenderListKind kind : {SenderListKind::kApproved, SenderListKind::kBlocked}) {
        MemoryFileSystem fs;
        SenderList list(kind, fs);
        FillToCapacity(list);
        EXPECT_EQ(list.Count(), 8000u);
        EXPECT_EQ(list.Add(u"one.more@example.com", {u"", u"one.more@example.com"}),
                  kSenderListFull);
        list.Remove(Numbered(u"s", 0));
        EXPECT_EQ(list.Add(u"one.more@example.com", {u"", u"one.more@example.com"}), kSenderAdded);
    }
}

TEST_F(SenderListTest, ModifyOverwritesAnEntryAlreadyHoldingTheNewKeyEvenWhenFull) {
    FillToCapacity(list_);
    EXPECT_TRUE(list_.Modify(Numbered(u"s", 1), u"Winner", Numbered(u"S", 2)));
    EXPECT_EQ(list_.Count(), kMaxApprovedSenders - 1);
    EXPECT_TRUE(list_.IsSameRecord(Numbered(u"s", 2), u"Winner"));
    // Moving to a new key needs no free slot either.
    EXPECT_TRUE(list_.Modify(Numbered(u"s", 3), u"", u"fresh@example.com"));
    EXPECT_TRUE(list_.Exists(u"fresh@example.com"));
}

TEST_F(SenderListTest, EntriesAreOrderedByUtf16CodeUnitsOfTheFoldedKey) {
    // U+FF21 sorts after the surrogate pair of U+1F600 in UTF-16 order, though
    // its code point is lower; "_" (0x5F) sorts before the folded letters.
    for (const char16_t* a : {u"\uFF21@x.com", u"\U0001F600@x.com", u"B@x.com", u"_@x.com"})
        list_.Add(a, {u"", a});
    std::vector<std::u16string> keys;
    for (const auto& e : list_.Entries())
        keys.push_back(e.first);
    EXPECT_THAT(keys, ElementsAre(u"_@x.com", u"b@x.com", u"\U0001F600@x.com", u"\uFF21@x.com"));
}

// The entries and the wildcard index against a plain model, after every
// step of a random walk of adds, modifies, removes and save-and-load. A
// modify that changes only the case keeps the stored address; any other
// moves the entry to the lower-cased new address.
TEST_F(SenderListTest, EntriesAndWildcardIndexFollowAPlainModelThroughEveryChange) {
    std::mt19937 rng(1234);
    const std::vector<std::u16string> pool = {u"*@a.com", u"*@A.COM", u"b@a.com", u"B*@a.com",
                                              u"c@*.org", u"C@X.org", u"d@x.org", u"*"};
    auto pick = [&] { return pool[rng() % pool.size()]; };
    std::map<std::u16string, SenderRecord> model;
    for (int step = 0; step < 3000; ++step) {
        const std::u16string a = pick();
        const std::u16string key = FoldKey(a);
        switch (rng() % 4) {
            case 0:
                list_.Add(a, {u"n", a});
                model.emplace(key, SenderRecord{u"n", a});
                break;
            case 1: {
                const std::u16string b = pick();
                const std::u16string name = u"m" + std::u16string(1, u'0' + rng() % 10);
                const bool known = model.count(key) != 0;
                ASSERT_EQ(list_.Modify(a, name, b), known);
                if (known && FoldKey(b) == key) {
                    model[key].name = name;
                } else if (known) {
                    model.erase(key);
                    model[FoldKey(b)] = {name, FoldKey(b)};
                }
                break;
            }
            case 2:
                list_.Remove(a);
                model.erase(key);
                break;
            default:
                if (rng() % 50 == 0) {
                    ASSERT_TRUE(list_.Save(u"list"));
                    ASSERT_TRUE(list_.Load(u"list"));
                }
        }
        std::vector<std::u16string> wildcards;
        for (const auto& m : model) {
            if (m.first.find(u'*') != std::u16string::npos)
                wildcards.push_back(m.first);
        }
        ASSERT_EQ(list_.WildcardKeys(), wildcards) << "step " << step;
        ASSERT_EQ(list_.Entries(), (std::vector<std::pair<std::u16string, SenderRecord>>(
                                       model.begin(), model.end())))
            << "step " << step;
    }
}

// The pages and the import thread may use a list at the same time.
TEST(SenderListThreads, ConcurrentAddsAndReadsLoseNothing) {
    MemoryFileSystem fs;
    SenderList list(SenderListKind::kBlocked, fs);
    constexpr int kThreads = 4;
    constexpr int kPerThread = 500;
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([&list, t] {
            for (int i = 0; i < kPerThread; ++i) {
                const std::u16string a = Numbered(t % 2 ? u"*odd" : u"even", t * 1000 + i);
                list.Add(a, {u"", a});
                list.Exists(a);
                if (i % 100 == 0)
                    list.Entries();
            }
        });
    }
    threads.emplace_back([&list] {
        for (int i = 0; i < 20; ++i)
            list.Save(u"BlackList.dat");
    });
    for (auto& t : threads)
        t.join();
    EXPECT_EQ(list.Count(), std::size_t{kThreads * kPerThread});
    EXPECT_EQ(list.WildcardKeys().size(), std::size_t{kThreads / 2 * kPerThread});
}

// What the pages call with the texts of their controls.
TEST(SenderListWide, NullTextsAreRefusedWithoutTouchingTheList) {
    MemoryFileSystem fs;
    SenderList list(SenderListKind::kBlocked, fs);
    EXPECT_EQ(AddSender(list, nullptr, L"name"), kSenderListFull);
    EXPECT_EQ(AddSender(list, L"Ann@X.com", nullptr), kSenderAdded);
    EXPECT_FALSE(SenderExists(list, nullptr));
    EXPECT_TRUE(IsSameSender(list, L"ann@x.com", L""));
    EXPECT_FALSE(ModifySender(list, L"ann@x.com", L"n", nullptr));
    RemoveSender(list, nullptr);
    const auto entries = SenderEntries(list);
    ASSERT_EQ(entries.size(), 1u);
    EXPECT_EQ(entries[0].key + L"|" + entries[0].address, L"ann@x.com|Ann@X.com");
    // The scanning process opens the files in the user's folder by these names.
    EXPECT_EQ(SenderListPathW(L"D:\\\u00FC\\", SenderListKind::kBlocked),
              L"D:\\\u00FC\\BlackList.dat");
    EXPECT_EQ(SenderListPath(u"C:\\U\\", SenderListKind::kApproved), u"C:\\U\\WhiteList.dat");
}

}  // namespace
}  // namespace velk::senders
