// The list files byte for byte: what Save writes, and what Load makes of good
// and hostile files.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <random>

#include "senders/memory_file_system.h"
#include "senders/sender_list.h"
#include "senders/sender_text.h"
#include "senders/senders_test_util.h"

namespace velk::senders {
namespace {

using ::testing::ElementsAre;
using ::testing::Pair;

const std::string kBom = "\xEF\xBB\xBF";

std::u16string Trim(const std::u16string& s) {
    const std::size_t first = s.find_first_not_of(u" \t");
    if (first == std::u16string::npos)
        return {};
    return s.substr(first, s.find_last_not_of(u" \t") - first + 1);
}
const std::string kBanner = "; Written by VELK v3.5 (c) 2005 Nuvexa";

std::string ApprovedLine(const std::string& name, const std::string& address) {
    return "<WL_REC><SN_ATTR>" + name + "<\\SN_ATTR><SA_ATTR>" + address + "<\\SA_ATTR><\\WL_REC>";
}

// Golden bytes are written here by hand: byte-order mark, banner, the tags of
// each list, CR LF, key order, stored case, fields unchanged. The scanning
// process reads them.
TEST(SenderListFileGolden, SavedListsMatchTheHandWrittenFiles) {
    struct Golden {
        SenderListKind kind;
        std::vector<SenderRecord> added;  // in this order
        std::string expected;
    };
    const Golden cases[] = {
        {SenderListKind::kApproved,
         {{u"Zed", u"Zed@Example.com"},
          {u"J\u00F6rg M\u00FCller", u"Joerg.Mueller@Example.DE"},
          {u"Ann Lee", u"ann@example.com"},
          {u" Bob\t", u"Bob@x.com"},
          {u"", u"*@Lists.Example.org"}},
         "<WL_REC><SN_ATTR><\\SN_ATTR><SA_ATTR>*@Lists.Example.org<\\SA_ATTR><\\WL_REC>\r\n"
         "<WL_REC><SN_ATTR>Ann Lee<\\SN_ATTR><SA_ATTR>ann@example.com<\\SA_ATTR><\\WL_REC>\r\n"
         "<WL_REC><SN_ATTR> Bob\t<\\SN_ATTR><SA_ATTR>Bob@x.com<\\SA_ATTR><\\WL_REC>\r\n"
         "<WL_REC><SN_ATTR>J\xC3\xB6rg M\xC3\xBCller<\\SN_ATTR>"
         "<SA_ATTR>Joerg.Mueller@Example.DE<\\SA_ATTR><\\WL_REC>\r\n"
         "<WL_REC><SN_ATTR>Zed<\\SN_ATTR><SA_ATTR>Zed@Example.com<\\SA_ATTR><\\WL_REC>\r\n"},
        {SenderListKind::kBlocked,
         {{u"\u5C71\u7530 \U0001F600", u"spam@Spam.example"}, {u"Bulk", u"*.Bulk.example"}},
         "<BL_REC><SN_ATTR>Bulk<\\SN_ATTR><SA_ATTR>*.Bulk.example<\\SA_ATTR><\\BL_REC>\r\n"
         "<BL_REC><SN_ATTR>\xE5\xB1\xB1\xE7\x94\xB0 \xF0\x9F\x98\x80<\\SN_ATTR>"
         "<SA_ATTR>spam@Spam.example<\\SA_ATTR><\\BL_REC>\r\n"},
        {SenderListKind::kBlocked, {}, ""},  // an empty list is the banner alone
    };
    testing::TempFolder dir;
    for (const Golden& c : cases) {
        SCOPED_TRACE(c.expected);
        SenderList list(c.kind);
        for (const SenderRecord& r : c.added)
            list.Add(r.address, r);
        const std::u16string path = SenderListPath(dir.Folder(), c.kind);
        ASSERT_TRUE(list.Save(path));
        EXPECT_EQ(testing::ReadFileBytes(path),
                  "\xEF\xBB\xBF; Written by VELK v3.5 (c) 2005 Nuvexa\r\n" + c.expected);
        EXPECT_FALSE(testing::FileExists(path + u".tmp"));
    }
}

class SenderListLoadTest : public ::testing::Test {
protected:
    bool LoadBytes(const std::string& bytes) {
        fs_.files[u"f"] = bytes;
        return list_.Load(u"f");
    }
    std::string SaveBytes() {
        EXPECT_TRUE(list_.Save(u"out"));
        return fs_.files[u"out"];
    }
    std::vector<std::pair<std::u16string, SenderRecord>> Entries() const { return list_.Entries(); }

    MemoryFileSystem fs_;
    SenderList list_{SenderListKind::kApproved, fs_};
};

TEST_F(SenderListLoadTest, EachAcceptedBannerLoadsWhereverItStandsInTheFirstLine) {
    for (const char* banner : {"; Written by QZFlenmarrow v1.0 (c) 2003 Nuvexa",
                               "; Written by QZAnti-Spam v1.0 (c) 2003 Nuvexa",
                               "; Written by VELK v3.5 (c) 2005 Nuvexa"}) {
        EXPECT_TRUE(LoadBytes(std::string("junk ") + banner + " more\r\n" +
                              ApprovedLine("A", "a@x.com") + "\r\n"))
            << banner;
        EXPECT_EQ(list_.Count(), 1u) << banner;
    }
}

TEST_F(SenderListLoadTest, AnUnknownBannerFailsAndLeavesTheListEmpty) {
    const std::string record = ApprovedLine("A", "a@x.com") + "\r\n";
    for (const std::string& first :
         {std::string("; written by VELK v3.5 (c) 2005 Nuvexa"), std::string("; Written by VELK"),
          std::string(""), ApprovedLine("B", "b@x.com")}) {
        list_.Add(u"stale@x.com", {u"", u"stale@x.com"});
        EXPECT_FALSE(LoadBytes(kBom + first + "\r\n" + kBanner + "\r\n" + record)) << first;
        EXPECT_EQ(list_.Count(), 0u) << first;
    }
}

TEST_F(SenderListLoadTest, EmptyMissingAndUnreadableFilesGiveAnEmptyList) {
    for (const std::string& bytes : {std::string(), kBom}) {
        list_.Add(u"stale@x.com", {u"", u"stale@x.com"});
        EXPECT_TRUE(LoadBytes(bytes));
        EXPECT_EQ(list_.Count(), 0u);
    }
    list_.Add(u"stale@x.com", {u"", u"stale@x.com"});
    EXPECT_TRUE(list_.Load(u"no such file"));
    EXPECT_EQ(list_.Count(), 0u);

    list_.Add(u"stale@x.com", {u"", u"stale@x.com"});
    fs_.failReads = true;
    EXPECT_TRUE(LoadBytes(kBom + kBanner + "\r\n" + ApprovedLine("A", "a@x.com")));
    EXPECT_EQ(list_.Count(), 0u);
}

TEST_F(SenderListLoadTest, ByteOrderMarkAndLineEndsDoNotChangeWhatLoads) {
    const std::string a = ApprovedLine("Ann", "Ann@X.com");
    const std::string b = ApprovedLine("Bob", "bob@y.com");
    const std::vector<std::string> variants = {
        kBom + kBanner + "\r\n" + a + "\r\n" + b + "\r\n", kBanner + "\n" + a + "\n" + b + "\n",
        kBanner + "\r\n" + a + "\n" + b,  // mixed, no final line end
    };
    for (const std::string& bytes : variants) {
        ASSERT_TRUE(LoadBytes(bytes));
        EXPECT_THAT(Entries(), ElementsAre(Pair(u"ann@x.com", SenderRecord{u"Ann", u"Ann@X.com"}),
                                           Pair(u"bob@y.com", SenderRecord{u"Bob", u"bob@y.com"})));
    }
}

TEST_F(SenderListLoadTest, RecordsOfTheOtherListCommentsAndBrokenRecordsAreSkipped) {
    const std::string bytes =
        kBom + kBanner + "\r\n" +
        "<BL_REC><SN_ATTR>B<\\SN_ATTR><SA_ATTR>blocked@x.com<\\SA_ATTR><\\BL_REC>\r\n"
        "; a comment\r\n"
        "\r\n"
        "<WL_REC><SN_ATTR>names only<\\SN_ATTR><\\WL_REC>\r\n"
        "<WL_REC><SN_ATTR>n<\\SN_ATTR><SA_ATTR>no.close@x.com<\\WL_REC>\r\n"
        "<WL_REC><SN_ATTR>n<\\SN_ATTR><SA_ATTR>no.record.close@x.com<\\SA_ATTR>\r\n"
        "<WL_REC><SN_ATTR>n<\\SN_ATTR><SA_ATTR> \t <\\SA_ATTR><\\WL_REC>\r\n"
        "<WL_REC><SN_ATTR>n</SN_ATTR><SA_ATTR>slash@x.com</SA_ATTR></WL_REC>\r\n"
        "<WL_REC><SN_ATTR>no name close<SA_ATTR>kept@x.com<\\SA_ATTR><\\WL_REC>\r\n";
    ASSERT_TRUE(LoadBytes(bytes));
    // Only the last survives: a name without its closing tag is just empty.
    EXPECT_THAT(Entries(), ElementsAre(Pair(u"kept@x.com", SenderRecord{u"", u"kept@x.com"})));
}

// The format has no escaping: the first tag found wins, whatever field it
// stands in.
TEST_F(SenderListLoadTest, TagTextInsideANameIsReadAsTagsWithoutCrashing) {
    const std::string bytes =
        kBanner + "\n" +
        "<WL_REC><SN_ATTR>a <SA_ATTR>evil@x.com<\\SA_ATTR> b<\\SN_ATTR>"
        "<SA_ATTR>real@x.com<\\SA_ATTR><\\WL_REC>\n"
        "<WL_REC><SN_ATTR>cut<\\WL_REC>here<\\SN_ATTR><SA_ATTR>lost@x.com<\\SA_ATTR><\\WL_REC>\n"
        "<WL_REC><SN_ATTR><WL_REC>x<\\SN_ATTR><SA_ATTR>inner@x.com<\\SA_ATTR><\\WL_REC>\n";
    ASSERT_TRUE(LoadBytes(bytes));
    EXPECT_THAT(Entries(),
                ElementsAre(Pair(u"evil@x.com", SenderRecord{u"a <SA_ATTR>evil@x.com<\\SA_ATTR> b",
                                                             u"evil@x.com"}),
                            Pair(u"inner@x.com", SenderRecord{u"<WL_REC>x", u"inner@x.com"})));
}

TEST(SenderListLoadBlocked, BlanksAndAsteriskRunsAreCleanedAndTheKeyIndexedAsWildcard) {
    MemoryFileSystem fs;
    fs.files[u"b"] = kBanner +
                     "\r\n<BL_REC><SN_ATTR> Spam King <\\SN_ATTR>"
                     "<SA_ATTR> ***@Junk.Example\t<\\SA_ATTR><\\BL_REC>\r\n";
    SenderList list(SenderListKind::kBlocked, fs);
    ASSERT_TRUE(list.Load(u"b"));
    EXPECT_THAT(list.Entries(), ElementsAre(Pair(u"*@junk.example",
                                                 SenderRecord{u"Spam King", u"*@Junk.Example"})));
    EXPECT_THAT(list.WildcardKeys(), ElementsAre(u"*@junk.example"));
}

TEST_F(SenderListLoadTest, TheFirstOfTwoAddressesDifferingInCaseWins) {
    ASSERT_TRUE(LoadBytes(kBanner + "\n" + ApprovedLine("First", "Ann@X.com") + "\n" +
                          ApprovedLine("Second", "ann@x.COM") + "\n"));
    EXPECT_THAT(Entries(), ElementsAre(Pair(u"ann@x.com", SenderRecord{u"First", u"Ann@X.com"})));
}

// Lines past the capacity are dropped in file order, not key order.
TEST_F(SenderListLoadTest, NineThousandLinesLoadTheFirstEightThousand) {
    std::string bytes = kBom + kBanner + "\r\n";
    for (int i = 9000; i > 0; --i) {
        bytes += ApprovedLine("n", "s" + std::to_string(i) + "@x.com") + "\r\n";
    }
    testing::TempFolder logFolder;
    const std::string logged =
        testing::CaptureLog(logFolder, [&] { ASSERT_TRUE(LoadBytes(bytes)); });
    EXPECT_NE(logged.find("0 lines hold no usable record, 1000 duplicates or entries past 8000"),
              std::string::npos)
        << logged;
    EXPECT_EQ(list_.Count(), 8000u);
    EXPECT_TRUE(list_.Exists(u"s9000@x.com"));
    EXPECT_TRUE(list_.Exists(u"s1001@x.com"));
    EXPECT_FALSE(list_.Exists(u"s1000@x.com"));
    EXPECT_FALSE(list_.Exists(u"s1@x.com"));
}

// Files edited by other tools need not be in key order; the first line of a
// key still wins, and the list comes out ordered.
TEST_F(SenderListLoadTest, LinesOutOfKeyOrderLoadAsTheFirstOfEachKey) {
    std::vector<std::string> addresses;
    for (int i = 0; i < 400; ++i) {
        addresses.push_back((i % 3 ? "Sender" : "sender") + std::to_string(i % 250) + "@x.com");
    }
    std::shuffle(addresses.begin(), addresses.end(), std::mt19937(7));
    std::string bytes = kBanner + "\n";
    std::map<std::u16string, SenderRecord> expected;
    for (std::size_t i = 0; i < addresses.size(); ++i) {
        bytes += ApprovedLine("n" + std::to_string(i), addresses[i]) + "\n";
        const std::u16string address = Utf8ToUtf16(addresses[i]);
        expected.emplace(FoldKey(address),
                         SenderRecord{Utf8ToUtf16("n" + std::to_string(i)), address});
    }
    ASSERT_TRUE(LoadBytes(bytes));
    EXPECT_EQ(Entries(), (std::vector<std::pair<std::u16string, SenderRecord>>(expected.begin(),
                                                                               expected.end())));
}

TEST_F(SenderListLoadTest, ATenMegabyteLineLoadsAndSavesAgain) {
    const std::string huge(10u << 20, 'n');
    const std::string bytes = kBanner + "\r\n" + ApprovedLine(huge, "big@x.com") + "\r\n" +
                              std::string(10u << 20, '<') + "\r\n" +
                              ApprovedLine("after", "after@x.com") + "\r\n";
    ASSERT_TRUE(LoadBytes(bytes));
    ASSERT_EQ(list_.Count(), 2u);
    EXPECT_EQ(Entries()[1].second.name.size(), huge.size());
    EXPECT_TRUE(list_.IsSameRecord(u"after@x.com", u"after"));
    const std::string saved = SaveBytes();
    EXPECT_NE(saved.find(ApprovedLine(huge, "big@x.com") + "\r\n"), std::string::npos);
}

// Invalid UTF-8 decodes to U+FFFD (one per maximal ill-formed subpart) and
// never takes the tags after it along.
TEST_F(SenderListLoadTest, InvalidUtf8BecomesReplacementCharactersAndTheRecordSurvives) {
    const std::string bytes = kBom + "\xFF" + kBanner + "\xC0\r\n" +
                              ApprovedLine("Bad\xE5\xB1", "a\x80\xBF@x.com") + "\r\n" +
                              ApprovedLine("\xF0\x9F\x98", "ok@x.com") + "\r\n";
    ASSERT_TRUE(LoadBytes(bytes));
    EXPECT_THAT(Entries(), ElementsAre(Pair(u"a\uFFFD\uFFFD@x.com",
                                            SenderRecord{u"Bad\uFFFD", u"a\uFFFD\uFFFD@x.com"}),
                                       Pair(u"ok@x.com", SenderRecord{u"\uFFFD", u"ok@x.com"})));
    // Saved again, the replacement characters are plain UTF-8.
    EXPECT_NE(SaveBytes().find(ApprovedLine("Bad\xEF\xBF\xBD", "a\xEF\xBF\xBD\xEF\xBF\xBD@x.com")),
              std::string::npos);
}

TEST_F(SenderListLoadTest, ANulCharacterEndsItsLine) {
    std::string bytes = kBanner + "\n" + ApprovedLine("n", "cut@x.com") + "\n" +
                        ApprovedLine("n", "whole@x.com") + "\n";
    bytes[bytes.find("cut@") + 2] = '\0';
    ASSERT_TRUE(LoadBytes(bytes));
    EXPECT_THAT(Entries(), ElementsAre(Pair(u"whole@x.com", SenderRecord{u"n", u"whole@x.com"})));
}

TEST_F(SenderListLoadTest, OnlyTheCrDirectlyBeforeALineFeedIsDropped) {
    ASSERT_TRUE(LoadBytes(kBanner + "\r\r\n" + ApprovedLine("a\rb", "a@x.com") + "\r\r\n"));
    EXPECT_THAT(Entries(), ElementsAre(Pair(u"a@x.com", SenderRecord{u"a\rb", u"a@x.com"})));
}

TEST_F(SenderListLoadTest, AFileLargerThanTheReadLimitKeepsTheRecordsBeforeTheCut) {
    std::string bytes = kBanner + "\r\n" + ApprovedLine("n", "first@x.com") + "\r\n";
    bytes += "; " + std::string(kMaxListFileBytes - bytes.size() - 20, 'x') + "\r\n";
    bytes += ApprovedLine("n", "straddles@x.com") + "\r\n";
    ASSERT_TRUE(LoadBytes(bytes));
    EXPECT_THAT(Entries(), ElementsAre(Pair(u"first@x.com", SenderRecord{u"n", u"first@x.com"})));
}

// A line feed in a field would split its record; it is written as a blank.
TEST_F(SenderListLoadTest, ALineFeedInsideAFieldIsSavedAsABlank) {
    list_.Add(u"a@x.com", {u"two\nlines", u"a@x.com"});
    EXPECT_NE(SaveBytes().find(ApprovedLine("two lines", "a@x.com") + "\r\n"), std::string::npos);
    ASSERT_TRUE(list_.Load(u"out"));
    EXPECT_TRUE(list_.IsSameRecord(u"a@x.com", u"two lines"));
}

// Random lists: names and addresses with non-ASCII text, "*" runs, blanks and
// tabs at the ends. Loading the saved list gives the cleaned entries (trimmed,
// "*" runs collapsed, the first of colliding keys kept), and from then on
// saving and loading is a fixed point.
TEST(SenderListRoundTrip, LoadOfSaveGivesTheSameEntriesAndSavingAgainTheSameBytes) {
    const std::u16string alphabet =
        u"abcXYZ019.-_@* \t\r\u00E9\u00DF\u0130\u5C71\uFFFD\U0001F600\U00010348";
    std::mt19937 rng(20050);
    auto text = [&](std::size_t maxLength) {
        std::u16string s;
        const std::size_t n = rng() % (maxLength + 1);
        while (s.size() < n) {
            std::size_t i = rng() % alphabet.size();
            if (alphabet[i] >= 0xDC00 && alphabet[i] <= 0xDFFF)
                --i;  // start of its pair
            s.push_back(alphabet[i]);
            if (alphabet[i] >= 0xD800 && alphabet[i] <= 0xDBFF)
                s.push_back(alphabet[i + 1]);
        }
        return s;
    };

    for (int round = 0; round < 40; ++round) {
        for (SenderListKind kind : {SenderListKind::kApproved, SenderListKind::kBlocked}) {
            MemoryFileSystem fs;
            SenderList original(kind, fs);
            const std::size_t n = rng() % 300;
            for (std::size_t i = 0; i < n; ++i) {
                const std::u16string address = text(30);
                original.Add(address, {text(20), address});
            }

            std::map<std::u16string, SenderRecord> expected;
            for (const auto& e : original.Entries()) {
                SenderRecord r{Trim(e.second.name), Trim(e.second.address)};
                CollapseAsteriskRuns(r.address);
                if (!r.address.empty())
                    expected.emplace(FoldKey(r.address), r);
            }

            ASSERT_TRUE(original.Save(u"first"));
            SenderList loaded(kind, fs);
            ASSERT_TRUE(loaded.Load(u"first"));
            const auto entries = loaded.Entries();
            ASSERT_EQ(entries, (std::vector<std::pair<std::u16string, SenderRecord>>(
                                   expected.begin(), expected.end())))
                << "round " << round;

            ASSERT_TRUE(loaded.Save(u"second"));
            SenderList again(kind, fs);
            ASSERT_TRUE(again.Load(u"second"));
            EXPECT_EQ(again.Entries(), entries);
            ASSERT_TRUE(again.Save(u"third"));
            EXPECT_EQ(fs.files[u"third"], fs.files[u"second"]) << "round " << round;
        }
    }
}

}  // namespace
}  // namespace velk::senders
