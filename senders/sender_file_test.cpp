// The list files byte for byte: what Save writes, and what Load makes of good
// and hostile files. The scanning process reads and writes the same files.
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
using Entries = std::vector<std::pair<std::u16string, SenderRecord>>;

const std::string kBom = "\xEF\xBB\xBF";
const std::string kBanner = "; Written by VELK v3.5 (c) 2005 Nuvexa";

std::string ApprovedLine(const std::string& name, const std::string& address) {
    return "<WL_REC><SN_ATTR>" + name + "<\\SN_ATTR><SA_ATTR>" + address + "<\\SA_ATTR><\\WL_REC>";
}

// Golden bytes written by hand: byte-order mark, banner, the tags of each
// list, CR LF, key order, stored case, fields unchanged.
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
          {u" Bob\t", u"Bob@x.com"},
          {u"", u"*@Lists.Example.org"}},
         "<WL_REC><SN_ATTR><\\SN_ATTR><SA_ATTR>*@Lists.Example.org<\\SA_ATTR><\\WL_REC>\r\n"
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
        ASSERT_TRUE(list.Save(SenderListPath(testing::Folder(dir), c.kind)));
        const std::wstring file =
            c.kind == SenderListKind::kApproved ? L"WhiteList.dat" : L"BlackList.dat";
        EXPECT_EQ(dir.ReadFile(file), kBom + kBanner + "\r\n" + c.expected);
        EXPECT_FALSE(dir.Exists(file + L".tmp"));
    }
}

// Each file loads into the list that held a stale entry before.
TEST(SenderListLoad, FilesLoadAsTheScanningProcessReadsThem) {
    const std::string a = ApprovedLine("Ann", "Ann@X.com");
    const std::string b = ApprovedLine("Bob", "bob@y.com");
    const Entries ann_bob = {{u"ann@x.com", {u"Ann", u"Ann@X.com"}},
                             {u"bob@y.com", {u"Bob", u"bob@y.com"}}};
    std::string nul_line = kBanner + "\n" + ApprovedLine("n", "cut@x.com") + "\n";
    nul_line[nul_line.find("cut@") + 2] = '\0';  // the rest of that line is invisible
    const struct {
        const char* what;
        SenderListKind kind;
        std::string bytes;
        bool loads;
        Entries expected;
    } cases[] = {
        {"BOM and CR LF", SenderListKind::kApproved,
         kBom + kBanner + "\r\n" + a + "\r\n" + b + "\r\n", true, ann_bob},
        {"LF, mixed, no final line end", SenderListKind::kApproved, kBanner + "\n" + a + "\r\n" + b,
         true, ann_bob},
        {"older banners, anywhere in the first line",
         SenderListKind::kApproved,
         "junk ; Written by QZFlenmarrow v1.0 (c) 2003 Nuvexa more\n" + a,
         true,
         {ann_bob[0]}},
        {"the second older banner",
         SenderListKind::kApproved,
         "; Written by QZAnti-Spam v1.0 (c) 2003 Nuvexa\n" + a,
         true,
         {ann_bob[0]}},
        {"a banner in other case",
         SenderListKind::kApproved,
         kBom + "; written by VELK v3.5 (c) 2005 Nuvexa\r\n" + a,
         false,
         {}},
        {"a record before the banner",
         SenderListKind::kApproved,
         a + "\n" + kBanner + "\n" + b,
         false,
         {}},
        {"empty", SenderListKind::kApproved, "", true, {}},
        {"the byte-order mark alone", SenderListKind::kApproved, kBom, true, {}},
        {"other list, comments, broken records",
         SenderListKind::kApproved,
         kBanner +
             "\r\n<BL_REC><SN_ATTR>B<\\SN_ATTR><SA_ATTR>blocked@x.com<\\SA_ATTR><\\BL_REC>\r\n"
             "; a comment\r\n\r\n<WL_REC><SN_ATTR>names only<\\SN_ATTR><\\WL_REC>\r\n"
             "<WL_REC><SN_ATTR>n<\\SN_ATTR><SA_ATTR>no.close@x.com<\\WL_REC>\r\n"
             "<WL_REC><SN_ATTR>n<\\SN_ATTR><SA_ATTR> \t <\\SA_ATTR><\\WL_REC>\r\n"
             "<WL_REC><SN_ATTR>n</SN_ATTR><SA_ATTR>slash@x.com</SA_ATTR></WL_REC>\r\n"
             "<WL_REC><SN_ATTR>no name close<SA_ATTR>kept@x.com<\\SA_ATTR><\\WL_REC>\r\n",
         true,
         {{u"kept@x.com", {u"", u"kept@x.com"}}}},
        // No escaping: the first tag found wins, whatever field it stands in.
        {"tag text inside a name",
         SenderListKind::kApproved,
         kBanner +
             "\n<WL_REC><SN_ATTR>a <SA_ATTR>evil@x.com<\\SA_ATTR> b<\\SN_ATTR>"
             "<SA_ATTR>real@x.com<\\SA_ATTR><\\WL_REC>\n"
             "<WL_REC><SN_ATTR><WL_REC>x<\\SN_ATTR><SA_ATTR>inner@x.com<\\SA_ATTR><\\WL_REC>\n",
         true,
         {{u"evil@x.com", {u"a <SA_ATTR>evil@x.com<\\SA_ATTR> b", u"evil@x.com"}},
          {u"inner@x.com", {u"<WL_REC>x", u"inner@x.com"}}}},
        {"two addresses differing in case",
         SenderListKind::kApproved,
         kBanner + "\n" + ApprovedLine("First", "Ann@X.com") + "\n" +
             ApprovedLine("Second", "ann@x.COM"),
         true,
         {{u"ann@x.com", {u"First", u"Ann@X.com"}}}},
        {"a NUL ends its line",
         SenderListKind::kApproved,
         nul_line + ApprovedLine("n", "whole@x.com"),
         true,
         {{u"whole@x.com", {u"n", u"whole@x.com"}}}},
        {"only the CR right before LF goes",
         SenderListKind::kApproved,
         kBanner + "\r\r\n" + ApprovedLine("a\rb", "a@x.com") + "\r\r\n",
         true,
         {{u"a@x.com", {u"a\rb", u"a@x.com"}}}},
        // One U+FFFD per maximal ill-formed subpart, never taking a tag along.
        {"invalid UTF-8",
         SenderListKind::kApproved,
         kBom + "\xFF" + kBanner + "\xC0\r\n" + ApprovedLine("Bad\xE5\xB1", "a\x80\xBF@x.com") +
             "\r\n" + ApprovedLine("\xF0\x9F\x98", "ok@x.com"),
         true,
         {{u"a\uFFFD\uFFFD@x.com", {u"Bad\uFFFD", u"a\uFFFD\uFFFD@x.com"}},
          {u"ok@x.com", {u"\uFFFD", u"ok@x.com"}}}},
        {"blocked: blanks trimmed, asterisk runs collapsed",
         SenderListKind::kBlocked,
         kBanner + "\r\n<BL_REC><SN_ATTR> Spam King <\\SN_ATTR>"
                   "<SA_ATTR> ***@Junk.Example\t<\\SA_ATTR><\\BL_REC>\r\n",
         true,
         {{u"*@junk.example", {u"Spam King", u"*@Junk.Example"}}}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        MemoryFileSystem fs;
        fs.files[u"f"] = c.bytes;
        SenderList list(c.kind, fs);
        list.Add(u"stale@x.com", {u"", u"stale@x.com"});
        EXPECT_EQ(c.loads, list.Load(u"f"));
        EXPECT_EQ(c.expected, list.Entries());
        std::vector<std::u16string> wildcards;
        for (const auto& e : c.expected) {
            if (e.first.find(u'*') != std::u16string::npos)
                wildcards.push_back(e.first);
        }
        EXPECT_EQ(wildcards, list.WildcardKeys());
    }
}

TEST(SenderListLoad, MissingAndUnreadableFilesGiveAnEmptyList) {
    MemoryFileSystem fs;
    SenderList list(SenderListKind::kApproved, fs);
    list.Add(u"stale@x.com", {u"", u"stale@x.com"});
    EXPECT_TRUE(list.Load(u"no such file"));
    EXPECT_EQ(list.Count(), 0u);
    fs.files[u"f"] = kBanner + "\n" + ApprovedLine("A", "a@x.com");
    fs.failReads = true;
    list.Add(u"stale@x.com", {u"", u"stale@x.com"});
    EXPECT_TRUE(list.Load(u"f"));
    EXPECT_EQ(list.Count(), 0u);
}

// Lines past the capacity are dropped in file order, not key order, and the
// log says how many.
TEST(SenderListLoad, NineThousandLinesLoadTheFirstEightThousand) {
    std::string bytes = kBom + kBanner + "\r\n";
    for (int i = 9000; i > 0; --i)
        bytes += ApprovedLine("n", "s" + std::to_string(i) + "@x.com") + "\r\n";
    MemoryFileSystem fs;
    fs.files[u"f"] = bytes;
    SenderList list(SenderListKind::kApproved, fs);
    testing::TempFolder logs;
    const std::string logged = testing::CaptureLog(logs, [&] { EXPECT_TRUE(list.Load(u"f")); });
    EXPECT_NE(logged.find("0 lines hold no usable record, 1000 duplicates or entries past 8000"),
              std::string::npos)
        << logged;
    EXPECT_EQ(list.Count(), 8000u);
    EXPECT_TRUE(list.Exists(u"s1001@x.com"));
    EXPECT_FALSE(list.Exists(u"s1000@x.com"));
}

// Files edited by other tools need not be in key order; the first line of a
// key still wins, and the list comes out ordered.
TEST(SenderListLoad, LinesOutOfKeyOrderLoadAsTheFirstOfEachKey) {
    std::vector<std::string> addresses;
    for (int i = 0; i < 400; ++i)
        addresses.push_back((i % 3 ? "Sender" : "sender") + std::to_string(i % 250) + "@x.com");
    std::shuffle(addresses.begin(), addresses.end(), std::mt19937(7));
    std::string bytes = kBanner + "\n";
    std::map<std::u16string, SenderRecord> expected;
    for (std::size_t i = 0; i < addresses.size(); ++i) {
        bytes += ApprovedLine("n" + std::to_string(i), addresses[i]) + "\n";
        const std::u16string address = Utf8ToUtf16(addresses[i]);
        expected.emplace(FoldKey(address),
                         SenderRecord{Utf8ToUtf16("n" + std::to_string(i)), address});
    }
    MemoryFileSystem fs;
    fs.files[u"f"] = bytes;
    SenderList list(SenderListKind::kApproved, fs);
    ASSERT_TRUE(list.Load(u"f"));
    EXPECT_EQ(list.Entries(), Entries(expected.begin(), expected.end()));
}

// A file past the read limit keeps the records before the cut.
TEST(SenderListLoad, AFileLargerThanTheReadLimitKeepsTheRecordsBeforeTheCut) {
    std::string bytes = kBanner + "\r\n" + ApprovedLine("n", "first@x.com") + "\r\n";
    bytes += "; " + std::string(kMaxListFileBytes - bytes.size() - 20, 'x') + "\r\n";
    MemoryFileSystem fs;
    fs.files[u"f"] = bytes + ApprovedLine("n", "straddles@x.com") + "\r\n";
    SenderList list(SenderListKind::kApproved, fs);
    ASSERT_TRUE(list.Load(u"f"));
    EXPECT_THAT(list.Entries(),
                ElementsAre(Pair(u"first@x.com", SenderRecord{u"n", u"first@x.com"})));
}

// A line feed in a field would split its record; it is written as a blank.
TEST(SenderListSave, ALineFeedInsideAFieldIsSavedAsABlank) {
    MemoryFileSystem fs;
    SenderList list(SenderListKind::kApproved, fs);
    list.Add(u"a@x.com", {u"two\nlines", u"a@x.com"});
    ASSERT_TRUE(list.Save(u"out"));
    EXPECT_NE(fs.files[u"out"].find(ApprovedLine("two lines", "a@x.com") + "\r\n"),
              std::string::npos);
}

std::u16string Trim(const std::u16string& s) {
    const std::size_t first = s.find_first_not_of(u" \t");
    if (first == std::u16string::npos)
        return {};
    return s.substr(first, s.find_last_not_of(u" \t") - first + 1);
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
            ASSERT_EQ(loaded.Entries(), Entries(expected.begin(), expected.end())) << round;
            ASSERT_TRUE(loaded.Save(u"second"));
            SenderList again(kind, fs);
            ASSERT_TRUE(again.Load(u"second"));
            ASSERT_TRUE(again.Save(u"third"));
            EXPECT_EQ(fs.files[u"third"], fs.files[u"second"]) << "round " << round;
        }
    }
}

}  // namespace
}  // namespace velk::senders
