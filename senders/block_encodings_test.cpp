#include "senders/block_encodings.h"

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "senders/memory_file_system.h"
#include "senders/senders_test_util.h"

namespace velk::senders {
namespace {

constexpr char kBom[] = "\xEF\xBB\xBF";
constexpr char kBanner[] = "; Written by VELK v3.5 (c) 2005 Nuvexa\r\n";

TEST(BlockedEncodingsFile, IsWrittenInTheListFormatAndReadsBackTheSame) {
    const std::vector<BlockedEncoding> entries = {
        {"Greek", true, {1253, 28597}}, {"Thai", false, {874}}, {"Empty", true, {}}};
    const std::string bytes = SerializeBlockedEncodings(entries);
    EXPECT_EQ(bytes, std::string(kBom) + kBanner +
                         "3\r\nGreek\t1\t1253\t28597\r\nThai\t0\t874\r\nEmpty\t1\r\n");

    std::vector<BlockedEncoding> parsed;
    std::string problem;
    ASSERT_TRUE(ParseBlockedEncodings(bytes, parsed, problem)) << problem;
    EXPECT_EQ(parsed, entries);
    // Without the byte-order mark, with bare LF and a trailing blank line too.
    ASSERT_TRUE(ParseBlockedEncodings(
        "; Written by VELK v3.5 (c) 2005 Nuvexa\n1\nThai\t1\t874\n\n", parsed, problem))
        << problem;
    EXPECT_EQ(parsed, (std::vector<BlockedEncoding>{{"Thai", true, {874}}}));
}

TEST(BlockedEncodingsFile, AnythingButAWellFormedFileIsRefusedWithItsReason) {
    const std::string head = std::string(kBanner);
    const struct {
        std::string bytes;
        const char* problem;
    } broken[] = {
        {"", "no banner"},
        {"; written by velk v3.5\r\n0\r\n", "no banner"},
        {head, "no count"},
        {head + "x\r\n", "no count"},
        {head + "-1\r\n", "no count"},
        {head + "99999\r\n", "no count"},
        {head + "2\r\nThai\t0\r\n", "the count does not match the entries"},
        {head + "0\r\nThai\t0\r\n", "the count does not match the entries"},
        {head + "1\r\nThai\r\n", "an entry without its key, tab and flag"},
        {head + "1\r\n\t0\r\n", "an entry without its key, tab and flag"},
        {head + "1\r\nTh ai\t0\r\n", "a key that is not plain ASCII"},
        {head + "1\r\nThai\t2\r\n", "a flag other than 0 or 1"},
        {head + "1\r\nThai\t1\t874x\r\n", "a code page that is no number from 1 to 65535"},
        {head + "1\r\nThai\t1\t65536\r\n", "a code page that is no number from 1 to 65535"},
        {head + "1\r\nThai\t1\t\r\n", "a code page that is no number from 1 to 65535"},
        {head + "2\r\nThai\t1\r\nThai\t0\r\n", "a key given twice"},
    };
    for (const auto& b : broken) {
        std::vector<BlockedEncoding> parsed;
        std::string problem;
        EXPECT_FALSE(ParseBlockedEncodings(b.bytes, parsed, problem)) << b.bytes;
        EXPECT_EQ(problem, b.problem) << b.bytes;
        EXPECT_TRUE(parsed.empty());
    }
}

TEST(BlockedEncodingsLoad, TakesTheFlagsOfOfferedEntriesAndFallsBackToTheDefaultsWhenBroken) {
    MemoryFileSystem fs;
    const std::u16string path = BlockedEncodingsPath(u"C:\\u\\");
    EXPECT_EQ(path, u"C:\\u\\BlockEncodings.dat");
    EXPECT_EQ(LoadBlockedEncodings(fs, path), DefaultBlockedEncodings());  // no file

    testing::TempFolder dir;
    fs.files[path] = std::string(kBanner) + "3\r\nGreek\t1\t1\r\nKlingon\t1\t9\r\nThai\t0\r\n";
    std::vector<BlockedEncoding> loaded;
    std::string logged = testing::CaptureLog(dir, [&] { loaded = LoadBlockedEncodings(fs, path); });
    std::vector<BlockedEncoding> expected = DefaultBlockedEncodings();
    for (BlockedEncoding& e : expected)
        e.blocked = e.key == "Greek";  // with our own code pages, not the file's
    EXPECT_EQ(loaded, expected);
    EXPECT_NE(logged.find("entry Klingon is not offered here"), std::string::npos) << logged;

    fs.files[path] = std::string(kBanner) + "1\r\nGreek\t1\t1253";  // count ok, entry fine
    EXPECT_EQ(LoadBlockedEncodings(fs, path), expected);
    fs.files[path] = std::string(kBanner) + "2\r\nGreek\t1\r\n";
    logged = testing::CaptureLog(dir, [&] { loaded = LoadBlockedEncodings(fs, path); });
    EXPECT_EQ(loaded, DefaultBlockedEncodings());
    EXPECT_NE(logged.find("the count does not match the entries; nothing is blocked"),
              std::string::npos)
        << logged;
}

TEST(BlockedEncodingsLoad, EveryOfferedEntryHasAName) {
    // A name missing from the table would leave a blank row on the page, and a
    // code page offered twice would be blocked by either entry.
    std::set<int> pages;
    for (const BlockedEncoding& e : DefaultBlockedEncodings()) {
        EXPECT_FALSE(BlockedEncodingTextId(e.key).empty()) << e.key;
        for (int page : e.codePages)
            EXPECT_TRUE(pages.insert(page).second) << page;
    }
    EXPECT_TRUE(BlockedEncodingTextId("Klingon").empty());
}

TEST(BlockedEncodingsSave, GoesThroughATemporaryFileAndReportsAFailure) {
    MemoryFileSystem fs;
    std::vector<BlockedEncoding> entries = DefaultBlockedEncodings();
    entries[0].blocked = true;
    ASSERT_TRUE(SaveBlockedEncodings(fs, u"b.dat", entries));
    EXPECT_EQ(fs.files.size(), 1u);
    EXPECT_EQ(LoadBlockedEncodings(fs, u"b.dat"), entries);

    fs.failReplaces = true;
    fs.files.erase(u"b.dat");  // nothing to write in place either
    EXPECT_FALSE(SaveBlockedEncodings(fs, u"b.dat", entries));
    EXPECT_TRUE(fs.files.empty());
}

}  // namespace
}  // namespace velk::senders
