// The lists in memory: keys, the changed mark and the wildcard index.
#include "senders/sender_list.h"

#include <gtest/gtest.h>

#include "senders/memory_file_system.h"

namespace velk::senders {
namespace {

using Entries = std::vector<std::pair<std::u16string, SenderRecord>>;

// The first entry of a key stays as given; the order is by UTF-16 code units
// of the key (U+FF21 after the surrogates of U+1F600); an address changed to
// a new key is stored lower-cased and takes the place of an entry there, one
// changed in case only keeps its stored case. The wildcard index follows.
TEST(SenderList, ChangesKeepTheKeysInOrderAndTheWildcardIndexInStep) {
    MemoryFileSystem fs;
    SenderList list(SenderListKind::kApproved, fs);
    for (const char16_t* a :
         {u"\uFF21@x.com", u"\U0001F600@x.com", u"Old@X.com", u"*@A.com", u"b@x.com"})
        ASSERT_EQ(list.Add(a, {u"n", a}), kSenderAdded);
    EXPECT_EQ(list.Add(u"old@x.COM", {u"Other", u"old@x.COM"}), kSenderExists);
    EXPECT_TRUE(list.Modify(u"OLD@x.com", u"Case", u"OLD@X.COM"));
    EXPECT_TRUE(list.Modify(u"b@x.com", u"Moved", u"New*@Y.com"));
    EXPECT_TRUE(list.Modify(u"*@a.com", u"Taken", u"Old@x.com"));
    EXPECT_TRUE(list.IsSameRecord(u"NEW*@y.com", u"Moved"));
    EXPECT_FALSE(list.IsSameRecord(u"new*@y.com", u"moved"));
    EXPECT_EQ(list.Entries(), (Entries{{u"new*@y.com", {u"Moved", u"new*@y.com"}},
                                       {u"old@x.com", {u"Taken", u"old@x.com"}},
                                       {u"\U0001F600@x.com", {u"n", u"\U0001F600@x.com"}},
                                       {u"\uFF21@x.com", {u"n", u"\uFF21@x.com"}}}));
    EXPECT_EQ(list.WildcardKeys(), std::vector<std::u16string>{u"new*@y.com"});
    list.Remove(u"NEW*@Y.COM");
    EXPECT_TRUE(list.WildcardKeys().empty());

    // The pages save both files when either list is marked changed; a change
    // that does not happen must not mark it, and loading or saving clears it.
    ASSERT_TRUE(list.Save(u"list"));
    EXPECT_FALSE(list.Modified());
    list.Add(u"a@x.com", {u"", u"a@x.com"});
    EXPECT_TRUE(list.Modified());
    ASSERT_TRUE(list.Save(u"list"));
    list.Add(u"A@X.com", {u"", u"A@X.com"});  // exists already
    list.Remove(u"absent@x.com");
    EXPECT_FALSE(list.Modify(u"absent@x.com", u"n", u"b@x.com"));
    EXPECT_FALSE(list.Modified());
    list.Modify(u"a@x.com", u"Ann", u"a@x.com");
    EXPECT_TRUE(list.Modified());
    ASSERT_TRUE(list.Load(u"list"));
    EXPECT_FALSE(list.Modified());
    list.Remove(u"A@x.com");
    EXPECT_TRUE(list.Modified());
}

}  // namespace
}  // namespace velk::senders
