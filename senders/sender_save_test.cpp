// Saving never destroys the old list: every failure of the temporary-file
// write, of the replace and of the write in place leaves the old file whole,
// is logged, is answered with false and leaves the list marked as changed.
#include <gtest/gtest.h>

#include <limits>

#include "senders/memory_file_system.h"
#include "senders/sender_list.h"
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

class SenderListSaveTest : public ::testing::Test {
protected:
    void SetUp() override {
        list_.Add(u"old@x.com", {u"Old", u"old@x.com"});
        ASSERT_TRUE(list_.Save(u"b"));
        old_ = fs_.mem.files[u"b"];
        list_.Add(u"new@x.com", {u"New", u"new@x.com"});
        fs_.replaces = 0;
    }
    // Saves with the faults set up; the log of the save.
    std::string Save(bool expected) {
        return testing::CaptureLog(logs_, [&] { EXPECT_EQ(expected, list_.Save(u"b")); });
    }
    void ExpectOldFileKept() {
        EXPECT_EQ(fs_.mem.files[u"b"], old_);
        EXPECT_EQ(fs_.mem.files.count(u"b.tmp"), 0u);
        EXPECT_TRUE(list_.Modified());
    }

    testing::TempFolder logs_;
    FaultyFileSystem fs_;
    SenderList list_{SenderListKind::kBlocked, fs_};
    std::string old_;
};

TEST_F(SenderListSaveTest, AWriteFailingPartWayKeepsTheOldFileAndTheNextSaveWorks) {
    fs_.mem.files[u"b.tmp"] = "half a list from a crash";
    fs_.writeFailsAfter = old_.size() / 2;
    std::string logged = Save(false);
    ExpectOldFileKept();
    EXPECT_NE(logged.find("not saved, writing"), std::string::npos) << logged;
    EXPECT_NE(logged.find("(error 112); the old file is kept"), std::string::npos) << logged;
    EXPECT_EQ(fs_.replaces, 0);  // nothing half-written ever takes the list's place

    fs_.mem.files[u"b.tmp"] = "half a list from a crash";
    fs_.writeFailsAfter = FaultyFileSystem::kNever;
    Save(true);
    EXPECT_FALSE(list_.Modified());
    EXPECT_EQ(fs_.mem.files.count(u"b.tmp"), 0u);
    EXPECT_NE(fs_.mem.files[u"b"].find("new@x.com"), std::string::npos);
}

// Another program holding the list open without delete sharing: a moment's
// refusal is retried, a lasting one is answered by writing in place, and a
// write in place that fails part-way puts the old bytes back.
TEST_F(SenderListSaveTest, AReplaceRefusedIsRetriedThenTheFileIsWrittenInPlace) {
    fs_.replaceFailures = 2;
    EXPECT_EQ(Save(true).find("in place"), std::string::npos);
    EXPECT_EQ(fs_.replaces, 3);
    EXPECT_NE(fs_.mem.files[u"b"].find("new@x.com"), std::string::npos);

    list_.Add(u"newer@x.com", {u"", u"newer@x.com"});
    old_ = fs_.mem.files[u"b"];
    fs_.replaceFailures = -1;
    fs_.overwriteFailsAfter = 10;
    std::string logged = Save(false);
    ExpectOldFileKept();
    EXPECT_NE(logged.find("nor written in place (error 112)"), std::string::npos) << logged;

    logged = Save(true);
    EXPECT_NE(logged.find("cannot be replaced (error 32); written in place"), std::string::npos)
        << logged;
    EXPECT_NE(fs_.mem.files[u"b"].find("newer@x.com"), std::string::npos);
    EXPECT_EQ(fs_.mem.files.count(u"b.tmp"), 0u);
    EXPECT_FALSE(list_.Modified());
}

}  // namespace
}  // namespace velk::senders
