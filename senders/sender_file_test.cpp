// The list files byte for byte: what Save writes, and what Load makes of the
// files other programs wrote. The scanning process reads and writes the same
// files.
#include <gtest/gtest.h>

#include "senders/memory_file_system.h"
#include "senders/sender_list.h"
#include "senders/sender_text.h"
#include "senders/senders_test_util.h"

namespace velk::senders {
namespace {

using Entries = std::vector<std::pair<std::u16string, SenderRecord>>;

const std::string kBom = "\xEF\xBB\xBF";
const std::string kBanner = "; Written by VELK v3.5 (c) 2005 Nuvexa";

std::string Line(const std::string& name, const std::string& address) {
    return "<WL_REC><SN_ATTR>" + name + "<\\SN_ATTR><SA_ATTR>" + address + "<\\SA_ATTR><\\WL_REC>";
}

// Byte-order mark, banner, each list's tags, CR LF, key order, the case as
// stored and the fields unchanged, but for a line feed, which would split its
// record and is written as a blank.
TEST(SenderListFile, SavedListsMatchTheHandWrittenFiles) {
    testing::TempFolder dir;
    SenderList approved(SenderListKind::kApproved);
    SenderList blocked(SenderListKind::kBlocked);
    for (const SenderRecord& r : {SenderRecord{u"Zed", u"Zed@Example.com"},
                                  SenderRecord{u"J\u00F6rg\nM\u00FCller", u"J.M@Example.DE"},
                                  SenderRecord{u" Bob\t", u"*@Lists.Example.org"}})
        approved.Add(r.address, r);
    blocked.Add(u"spam@Spam.example", {u"\u5C71\u7530 \U0001F600", u"spam@Spam.example"});
    ASSERT_TRUE(approved.Save(SenderListPath(testing::Folder(dir), SenderListKind::kApproved)));
    ASSERT_TRUE(blocked.Save(SenderListPath(testing::Folder(dir), SenderListKind::kBlocked)));
    EXPECT_EQ(dir.ReadFile(L"WhiteList.dat"),
              kBom + kBanner + "\r\n" + Line(" Bob\t", "*@Lists.Example.org") + "\r\n" +
                  Line("J\xC3\xB6rg M\xC3\xBCller", "J.M@Example.DE") + "\r\n" +
                  Line("Zed", "Zed@Example.com") + "\r\n");
    EXPECT_EQ(dir.ReadFile(L"BlackList.dat"),
              kBom + kBanner +
                  "\r\n<BL_REC><SN_ATTR>\xE5\xB1\xB1\xE7\x94\xB0 \xF0\x9F\x98\x80<\\SN_ATTR>"
                  "<SA_ATTR>spam@Spam.example<\\SA_ATTR><\\BL_REC>\r\n");
}

// One file with every kind of line the scanning process and other tools
// leave behind, loaded into a list that held a stale entry before.
TEST(SenderListFile, FilesLoadAsTheScanningProcessReadsThem) {
    std::string cut = Line("n", "cut@x.com") + "\n";
    cut[cut.find("cut@") + 2] = '\0';  // the rest of the line is invisible to every reader
    const std::string bytes =
        kBom + "\xFF junk ; Written by QZFlenmarrow v1.0 (c) 2003 Nuvexa \xC0\r\n" +
        Line("First", "Ann@X.com") + "\r\n" + Line("Second", "ann@x.COM") + "\n" +
        "<BL_REC><SN_ATTR>B<\\SN_ATTR><SA_ATTR>blocked@x.com<\\SA_ATTR><\\BL_REC>\r\n"
        "; a comment\r\n\r\n<WL_REC><SN_ATTR>names only<\\SN_ATTR><\\WL_REC>\r\n" +
        Line("n", " \t ") + "\r\n" +
        "<WL_REC><SN_ATTR>n</SN_ATTR><SA_ATTR>slash@x.com</SA_ATTR></WL_REC>\r\n" +
        "<WL_REC><SN_ATTR>no name close<SA_ATTR>kept@x.com<\\SA_ATTR><\\WL_REC>\r\n" + cut +
        Line("a\rb", "cr@x.com") + "\r\r\n" +  // only the CR right before LF goes
        // Other arrangements of the tags load by the rule of the written shape:
        // the first open tag, the next close tag after it, blanks and tabs trimmed.
        " <WL_REC><SN_ATTR>N<\\SN_ATTR><SA_ATTR>a@x.com<\\SA_ATTR><\\WL_REC> \n"
        "<WL_REC><SA_ATTR>b@x.com<\\SA_ATTR><SN_ATTR>N<\\SN_ATTR><\\WL_REC>\n"
        "x<WL_REC><SN_ATTR>\tN <\\SN_ATTR> <SA_ATTR> c@x.com\t<\\SA_ATTR><\\WL_REC>junk\n"
        "<WL_REC><SN_ATTR>N<SA_ATTR>x<\\SN_ATTR><SA_ATTR>d@x.com<\\SA_ATTR><\\WL_REC>\n" +
        Line(" Spam King ", " ***@Junk.Example\t") + "\n" +
        // One U+FFFD per maximal ill-formed subpart, never taking a tag along;
        // keys fold A-Z only, as the scanning process folds them.
        Line("Bad\xE5\xB1", "\xC3\x84\x80\xBF@X.com") + "\r\n" +
        Line("\xF0\x9F\x98", "\xED\xA0\x80@x.com");
    MemoryFileSystem fs;
    fs.files[u"f"] = bytes;
    SenderList list(SenderListKind::kApproved, fs);
    list.Add(u"stale@x.com", {u"", u"stale@x.com"});
    ASSERT_TRUE(list.Load(u"f"));
    EXPECT_FALSE(list.Modified());
    EXPECT_EQ(list.Entries(),
              (Entries{{u"*@junk.example", {u"Spam King", u"*@Junk.Example"}},
                       {u"a@x.com", {u"N", u"a@x.com"}},
                       {u"ann@x.com", {u"First", u"Ann@X.com"}},
                       {u"b@x.com", {u"N", u"b@x.com"}},
                       {u"c@x.com", {u"N", u"c@x.com"}},
                       {u"cr@x.com", {u"a\rb", u"cr@x.com"}},
                       {u"kept@x.com", {u"", u"kept@x.com"}},
                       {u"x<\\sn_attr><sa_attr>d@x.com",
                        {u"N<SA_ATTR>x", u"x<\\SN_ATTR><SA_ATTR>d@x.com"}},
                       {u"\u00C4\uFFFD\uFFFD@x.com", {u"Bad\uFFFD", u"\u00C4\uFFFD\uFFFD@X.com"}},
                       {u"\uFFFD\uFFFD\uFFFD@x.com", {u"\uFFFD", u"\uFFFD\uFFFD\uFFFD@x.com"}}}));
    EXPECT_EQ(list.WildcardKeys(), std::vector<std::u16string>{u"*@junk.example"});

    // The first line must hold a known banner, in its case and nowhere later;
    // a missing, empty or unreadable file is an empty list.
    const std::string a = Line("Ann", "Ann@X.com");
    for (const auto& [file, loads] : std::vector<std::pair<std::string, bool>>{
             {"; Written by QZAnti-Spam v1.0 (c) 2003 Nuvexa\n" + a, true},
             {"; written by VELK v3.5 (c) 2005 Nuvexa\r\n" + a, false},
             {a + "\n" + kBanner, false},
             {"", true}}) {
        fs.files[u"f"] = file;
        list.Add(u"stale@x.com", {u"", u"stale@x.com"});
        EXPECT_EQ(loads, list.Load(u"f")) << file;
        EXPECT_EQ(list.Count(), loads && !file.empty() ? 1u : 0u) << file;
    }
    EXPECT_TRUE(list.Load(u"no such file"));
    fs.files[u"f"] = kBanner + "\n" + a;
    fs.failReads = true;
    list.Add(u"stale@x.com", {u"", u"stale@x.com"});
    EXPECT_TRUE(list.Load(u"f"));
    EXPECT_EQ(list.Count(), 0u);
}

// Files edited by other tools need not be in key order: the first line of a
// key wins, lines past the capacity are dropped in file order, not key order,
// and the log says how many.
TEST(SenderListFile, ABigUnorderedFileLoadsTheFirst8000DistinctKeys) {
    std::string bytes = kBom + kBanner + "\r\n";
    for (int i = 9000; i > 0; --i) {
        bytes += Line("n", "s" + std::to_string(i) + "@x.com") + "\r\n";
        if (i % 1000 == 0)  // a later line of a key taken already
            bytes += Line("late", "S" + std::to_string(i) + "@X.com") + "\r\n";
    }
    MemoryFileSystem fs;
    fs.files[u"f"] = bytes;
    SenderList list(SenderListKind::kApproved, fs);
    testing::TempFolder logs;
    const std::string logged = testing::CaptureLog(logs, [&] { EXPECT_TRUE(list.Load(u"f")); });
    EXPECT_NE(logged.find("0 lines hold no usable record, 1009 duplicates or entries past 8000"),
              std::string::npos)
        << logged;
    EXPECT_EQ(list.Count(), 8000u);
    EXPECT_TRUE(list.IsSameRecord(u"s2000@x.com", u"n"));
    EXPECT_TRUE(list.Exists(u"s1001@x.com"));
    EXPECT_FALSE(list.Exists(u"s1000@x.com"));
}

}  // namespace
}  // namespace velk::senders
