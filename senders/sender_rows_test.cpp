#include "senders/sender_rows.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "senders/memory_file_system.h"

namespace velk::senders {
namespace {

class SenderRowsTest : public ::testing::Test {
protected:
    void SetUp() override {
        for (const auto& [name, address] : std::vector<std::pair<std::u16string, std::u16string>>{
                 {u"bob", u"c@x.com"}, {u"", u"a@x.com"}, {u"Al", u"B@x.com"}, {u"al", u"d@x.com"}})
            list_.Add(address, {name, address});
        rows_.Refresh();
    }

    std::vector<std::u16string> Addresses() const {
        std::vector<std::u16string> out;
        SenderRecord record;
        for (std::size_t row = 0; rows_.At(row, record); ++row)
            out.push_back(record.address);
        return out;
    }

    MemoryFileSystem fs_;
    SenderList list_{SenderListKind::kApproved, fs_};
    SenderRows rows_{list_};
};

TEST_F(SenderRowsTest, SortsByEitherColumnEitherWayAndFindsEachSendersRow) {
    using V = std::vector<std::u16string>;
    EXPECT_EQ(Addresses(), (V{u"a@x.com", u"B@x.com", u"c@x.com", u"d@x.com"}));
    rows_.SortBy(SenderColumn::kAddress, false);
    EXPECT_EQ(Addresses(), (V{u"d@x.com", u"c@x.com", u"B@x.com", u"a@x.com"}));
    // Names ignore the case of A-Z, ties go by address, no name goes last.
    rows_.SortBy(SenderColumn::kName, true);
    EXPECT_EQ(Addresses(), (V{u"B@x.com", u"d@x.com", u"c@x.com", u"a@x.com"}));
    rows_.SortBy(SenderColumn::kName, false);
    EXPECT_EQ(Addresses(), (V{u"a@x.com", u"c@x.com", u"d@x.com", u"B@x.com"}));

    const V addresses = Addresses();
    for (std::size_t row = 0; row < addresses.size(); ++row)
        EXPECT_EQ(rows_.RowOf(addresses[row]), row);
    EXPECT_EQ(rows_.RowOf(u"b@X.COM"), 3u);
    EXPECT_EQ(rows_.RowOf(u"none@x.com"), SenderRows::npos);
}

TEST_F(SenderRowsTest, ChangesShowAfterARefreshAndAShrunkListIsNeverReadPastItsEnd) {
    rows_.SortBy(SenderColumn::kName, true);
    list_.Add(u"e@x.com", {u"Aaron", u"e@x.com"});
    EXPECT_EQ(rows_.Count(), 4u);
    rows_.Refresh();
    EXPECT_EQ(rows_.Count(), 5u);
    EXPECT_EQ(Addresses().front(), u"e@x.com");

    // Rows read between a change and the refresh may show the wrong sender,
    // but never reach past the list (the sanitizers watch).
    list_.Remove(u"a@x.com");
    list_.Remove(u"c@x.com");
    list_.Remove(u"e@x.com");
    SenderRecord record;
    std::size_t readable = 0;
    for (std::size_t row = 0; row < 5; ++row)
        readable += rows_.At(row, record) ? 1 : 0;
    EXPECT_LE(readable, 2u);
    rows_.Refresh();
    EXPECT_EQ(Addresses(), (std::vector<std::u16string>{u"B@x.com", u"d@x.com"}));
}

}  // namespace
}  // namespace velk::senders
