#include "senders/block_encodings.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "senders/memory_file_system.h"

namespace velk::senders {
namespace {

const std::string kBanner = "; Written by VELK v3.5 (c) 2005 Nuvexa\r\n";

// The bytes the scanning process reads: byte-order mark, the lists' banner,
// the count, then key, flag and code pages separated by tabs, CR LF.
TEST(BlockedEncodingsFile, IsWrittenInTheListFormatAndReadsBackTheSame) {
    const std::vector<BlockedEncoding> entries = {
        {"Greek", true, {1253, 28597}}, {"Thai", false, {874}}, {"Empty", true, {}}};
    const std::string bytes = SerializeBlockedEncodings(entries);
    EXPECT_EQ(bytes, "\xEF\xBB\xBF" + kBanner +
                         "3\r\nGreek\t1\t1253\t28597\r\nThai\t0\t874\r\nEmpty\t1\r\n");
    std::vector<BlockedEncoding> parsed;
    std::string problem;
    ASSERT_TRUE(ParseBlockedEncodings(bytes, parsed, problem)) << problem;
    EXPECT_EQ(parsed, entries);
    // Without the byte-order mark, with bare LF and a trailing blank line too.
    ASSERT_TRUE(ParseBlockedEncodings(kBanner + "1\nThai\t1\t874\n\n", parsed, problem)) << problem;
    EXPECT_EQ(parsed, (std::vector<BlockedEncoding>{{"Thai", true, {874}}}));
}

TEST(BlockedEncodingsFile, AnythingButAWellFormedFileIsRefusedWithItsReason) {
    const struct {
        std::string bytes;
        const char* problem;
    } broken[] = {
        {"; written by velk v3.5\r\n0\r\n", "no banner"},
        {kBanner + "-1\r\n", "no count"},
        {kBanner + "2\r\nThai\t0\r\n", "the count does not match the entries"},
        {kBanner + "1\r\n\t0\r\n", "an entry without its key, tab and flag"},
        {kBanner + "1\r\nTh ai\t0\r\n", "a key that is not plain ASCII"},
        {kBanner + "1\r\nThai\t2\r\n", "a flag other than 0 or 1"},
        {kBanner + "1\r\nThai\t1\t65536\r\n", "a code page that is no number from 1 to 65535"},
        {kBanner + "2\r\nThai\t1\r\nThai\t0\r\n", "a key given twice"},
    };
    for (const auto& b : broken) {
        std::vector<BlockedEncoding> parsed;
        std::string problem;
        EXPECT_FALSE(ParseBlockedEncodings(b.bytes, parsed, problem)) << b.bytes;
        EXPECT_EQ(problem, b.problem) << b.bytes;
        EXPECT_TRUE(parsed.empty());
        MemoryFileSystem fs;  // and the page offers nothing blocked
        fs.files[u"f"] = b.bytes;
        EXPECT_EQ(LoadBlockedEncodings(fs, u"f"), DefaultBlockedEncodings());
    }
}

}  // namespace
}  // namespace velk::senders
