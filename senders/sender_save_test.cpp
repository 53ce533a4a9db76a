// Saving never destroys the old list: every failure of the temporary-file
// write, of the replace and of the write in place leaves the old file whole,
// is logged, is answered with false and leaves the list marked as changed.
#include <gtest/gtest.h>

#include <limits>

#include "senders/memory_file_system.h"
#include "senders/sender_list.h"
#include "senders/sender_text.h"
#include "senders/senders_test_util.h"

namespace velk::senders {
namespace {

// Files in memory with one step made to fail on request.
class FaultyFileSystem final : public ISenderFileSystem {
public:
    static constexpr std::size_t kNever = std::numeric_limits<std::size_t>::max();
    MemoryFileSystem mem;
    std::size_t writeFailsAfter = kNever;      // bytes written before the disk is full
    int replaceFailures = 0;                   // replaces refused before one works (-1: all)
    std::size_t overwriteFailsAfter = kNever;  // the same for the write in place, once
    int replaces = 0;

    FileResult ReadAll(const std::u16string& path, std::size_t maxBytes, std::string& bytes,
                       bool& truncated) override {
        return mem.ReadAll(path, maxBytes, bytes, truncated);
    }
    FileResult WriteAll(const std::u16string& path, std::string_view bytes) override {
        mem.WriteAll(path, bytes.substr(0, writeFailsAfter));  // a partial file is left
        return writeFailsAfter == kNever ? FileResult::Ok() : FileResult::Failed(112);
    }
    FileResult Replace(const std::u16string& from, const std::u16string& to) override {
        ++replaces;
        if (replaceFailures == 0)
            return mem.Replace(from, to);
        --replaceFailures;
        return FileResult::Failed(32);
    }
    FileResult Remove(const std::u16string& path) override { return mem.Remove(path); }
    FileResult Overwrite(const std::u16string& path, std::string_view bytes) override {
        const std::size_t keep = std::exchange(overwriteFailsAfter, kNever);
        mem.Overwrite(path, bytes.substr(0, keep));
        return keep == kNever ? FileResult::Ok() : FileResult::Failed(112);
    }
};

// Another program holding the list open without delete sharing: a moment's
// refusal is retried, a lasting one is answered by writing in place, and a
// write in place that fails part-way puts the old bytes back.
TEST(SenderListSave, EveryFailureKeepsTheOldFileAndTheChangedMark) {
    testing::TempFolder logs;
    FaultyFileSystem fs;
    SenderList list(SenderListKind::kBlocked, fs);
    list.Add(u"old@x.com", {u"Old", u"old@x.com"});
    ASSERT_TRUE(list.Save(u"b"));
    std::string old = fs.mem.files[u"b"];
    auto save = [&](bool expected, const std::string& new_address) {
        list.Add(Utf8ToUtf16(new_address), {u"", Utf8ToUtf16(new_address)});
        fs.replaces = 0;
        const std::string logged =
            testing::CaptureLog(logs, [&] { EXPECT_EQ(expected, list.Save(u"b")); });
        EXPECT_EQ(expected, fs.mem.files[u"b"].find(new_address) != std::string::npos);
        if (!expected)
            EXPECT_EQ(fs.mem.files[u"b"], old) << logged;  // the old list, whole
        EXPECT_EQ(fs.mem.files.count(u"b.tmp"), 0u);
        EXPECT_EQ(!expected, list.Modified());
        old = fs.mem.files[u"b"];
        return logged;
    };
    fs.mem.files[u"b.tmp"] = "half a list from a crash";
    fs.writeFailsAfter = old.size() / 2;
    std::string logged = save(false, "a@x.com");
    EXPECT_NE(logged.find("not saved, writing"), std::string::npos);
    EXPECT_NE(logged.find("(error 112); the old file is kept"), std::string::npos);
    EXPECT_EQ(fs.replaces, 0);  // nothing half-written ever takes the list's place

    fs.mem.files[u"b.tmp"] = "half a list from a crash";
    fs.writeFailsAfter = FaultyFileSystem::kNever;
    fs.replaceFailures = 2;
    EXPECT_EQ(save(true, "b@x.com").find("in place"), std::string::npos);
    EXPECT_EQ(fs.replaces, 3);

    fs.replaceFailures = -1;
    fs.overwriteFailsAfter = 10;
    EXPECT_NE(save(false, "c@x.com").find("nor written in place (error 112)"), std::string::npos);
    logged = save(true, "d@x.com");
    EXPECT_NE(logged.find("cannot be replaced (error 32); written in place"), std::string::npos);
}

}  // namespace
}  // namespace velk::senders
