// Saving never destroys the old list: every failure of the temporary-file
// write, of the replace and of the write in place leaves the old file whole,
// is logged, is answered with false and leaves the list marked as changed.
#include <gtest/gtest.h>

#include <filesystem>
#include <limits>
#include <new>

#include "senders/sender_list.h"
#include "senders/sender_text.h"
#include "senders/senders_test_util.h"

namespace velk::senders {
namespace {

// The real file system with one step made to fail on request.
class FaultyFileSystem final : public ISenderFileSystem {
public:
    static constexpr std::size_t kNever = std::numeric_limits<std::size_t>::max();
    std::size_t writeFailsAfter = kNever;      // bytes written before the write fails
    int replaceFailures = 0;                   // replaces that fail before one works
    std::size_t overwriteFailsAfter = kNever;  // the same for the write in place
    bool throws = false;  // reads and writes throw as an exhausted heap would
    int replaces = 0;

    FileResult ReadAll(const std::u16string& path, std::size_t maxBytes, std::string& bytes,
                       bool& truncated) override {
        if (throws)
            throw std::bad_alloc();
        return real_.ReadAll(path, maxBytes, bytes, truncated);
    }
    FileResult WriteAll(const std::u16string& path, std::string_view bytes) override {
        if (throws)
            throw std::bad_alloc();
        if (writeFailsAfter == kNever)
            return real_.WriteAll(path, bytes);
        // The disk fills up part-way: a partial file is left behind.
        real_.WriteAll(path, bytes.substr(0, writeFailsAfter));
        return FileResult::Failed(112);
    }
    FileResult Replace(const std::u16string& from, const std::u16string& to) override {
        ++replaces;
        if (replaceFailures != 0) {
            --replaceFailures;
            return FileResult::Failed(32);
        }
        return real_.Replace(from, to);
    }
    FileResult Remove(const std::u16string& path) override { return real_.Remove(path); }
    FileResult Overwrite(const std::u16string& path, std::string_view bytes) override {
        if (overwriteFailsAfter == kNever)
            return real_.Overwrite(path, bytes);
        real_.Overwrite(path, bytes.substr(0, overwriteFailsAfter));
        overwriteFailsAfter = kNever;  // the disk has room again for the undo
        return FileResult::Failed(112);
    }

private:
    ISenderFileSystem& real_ = PlatformFileSystem();
};

class SenderListSaveTest : public ::testing::Test {
protected:
    void SetUp() override {
        path_ = SenderListPath(testing::Folder(dir_), SenderListKind::kBlocked);
        list_.Add(u"old@x.com", {u"Old", u"old@x.com"});
        ASSERT_TRUE(list_.Save(path_));
        oldBytes_ = testing::ReadFileBytes(path_);
        list_.Add(u"new@x.com", {u"New", u"new@x.com"});
        fs_.replaces = 0;
    }

    testing::TempFolder dir_;
    FaultyFileSystem fs_;
    SenderList list_{SenderListKind::kBlocked, fs_};
    std::u16string path_;
    std::string oldBytes_;
};

TEST_F(SenderListSaveTest, AWriteFailingPartWayKeepsTheOldFileAndTheChangedMark) {
    fs_.writeFailsAfter = oldBytes_.size() / 2;
    const std::string logged = testing::CaptureLog(dir_, [&] { EXPECT_FALSE(list_.Save(path_)); });
    EXPECT_EQ(testing::ReadFileBytes(path_), oldBytes_);
    EXPECT_FALSE(testing::FileExists(path_ + u".tmp"));
    EXPECT_TRUE(list_.Modified());
    EXPECT_NE(logged.find("not saved"), std::string::npos) << logged;
    EXPECT_NE(logged.find("error 112"), std::string::npos) << logged;
    EXPECT_EQ(fs_.replaces, 0);  // nothing half-written ever takes the list's place

    fs_.writeFailsAfter = FaultyFileSystem::kNever;
    ASSERT_TRUE(list_.Save(path_));
    EXPECT_FALSE(list_.Modified());
    EXPECT_NE(testing::ReadFileBytes(path_).find("new@x.com"), std::string::npos);
}

TEST_F(SenderListSaveTest, AReplaceRefusedForAMomentIsRetried) {
    fs_.replaceFailures = 2;
    const std::string logged = testing::CaptureLog(dir_, [&] { EXPECT_TRUE(list_.Save(path_)); });
    EXPECT_EQ(fs_.replaces, 3);
    EXPECT_NE(testing::ReadFileBytes(path_).find("new@x.com"), std::string::npos);
    EXPECT_EQ(logged.find("in place"), std::string::npos) << logged;
}

TEST_F(SenderListSaveTest, AReplaceRefusedForGoodFallsBackToWritingInPlace) {
    fs_.replaceFailures = -1;
    const std::string logged = testing::CaptureLog(dir_, [&] { EXPECT_TRUE(list_.Save(path_)); });
    EXPECT_NE(testing::ReadFileBytes(path_).find("new@x.com"), std::string::npos);
    EXPECT_FALSE(testing::FileExists(path_ + u".tmp"));
    EXPECT_FALSE(list_.Modified());
    EXPECT_NE(logged.find("cannot be replaced (error 32); written in place"), std::string::npos)
        << logged;
}

TEST_F(SenderListSaveTest, AWriteInPlaceFailingPartWayPutsTheOldBytesBack) {
    fs_.replaceFailures = -1;
    fs_.overwriteFailsAfter = 10;
    const std::string logged = testing::CaptureLog(dir_, [&] { EXPECT_FALSE(list_.Save(path_)); });
    EXPECT_EQ(testing::ReadFileBytes(path_), oldBytes_);
    EXPECT_FALSE(testing::FileExists(path_ + u".tmp"));
    EXPECT_TRUE(list_.Modified());
    EXPECT_NE(logged.find("nor written in place (error 112)"), std::string::npos) << logged;
}

TEST_F(SenderListSaveTest, ATemporaryFileLeftByACrashIsRemovedAtTheNextSave) {
    testing::WriteFileBytes(path_ + u".tmp", "half a list from a crash");
    ASSERT_TRUE(list_.Save(path_));
    EXPECT_FALSE(testing::FileExists(path_ + u".tmp"));
    SenderList reloaded(SenderListKind::kBlocked);
    ASSERT_TRUE(reloaded.Load(path_));
    EXPECT_EQ(reloaded.Count(), 2u);

    // Also when the save itself then fails.
    testing::WriteFileBytes(path_ + u".tmp", "half a list from a crash");
    fs_.writeFailsAfter = 0;
    EXPECT_FALSE(list_.Save(path_));
    EXPECT_FALSE(testing::FileExists(path_ + u".tmp"));
}

TEST_F(SenderListSaveTest, AnExceptionInsideLoadOrSaveIsLoggedAndGoesNoFurther) {
    fs_.throws = true;
    std::string logged = testing::CaptureLog(dir_, [&] {
        EXPECT_FALSE(list_.Save(path_));
        EXPECT_TRUE(list_.Load(path_));
    });
    EXPECT_EQ(testing::ReadFileBytes(path_), oldBytes_);
    EXPECT_EQ(list_.Count(), 0u);
    EXPECT_NE(logged.find("saving the sender list"), std::string::npos) << logged;
    EXPECT_NE(logged.find("loading the sender list"), std::string::npos) << logged;
}

TEST_F(SenderListSaveTest, SavingIntoAMissingFolderFailsAndCreatesNothing) {
    const std::u16string missing = (testing::Folder(dir_) + u"absent") + u"/";
    EXPECT_FALSE(list_.Save(SenderListPath(missing, SenderListKind::kBlocked)));
    EXPECT_FALSE(testing::FileExists((testing::Folder(dir_) + u"absent")));
}

// Folder names outside ASCII reach the file system intact on both platforms.
TEST(SenderListPlatformFiles, ANonAsciiFolderSavesAndLoads) {
    testing::TempFolder dir;
    const std::u16string folder = (testing::Folder(dir) + u"J\u00F6rg \u5C71\u7530");
    std::filesystem::create_directory(std::filesystem::path(folder));
    const std::u16string path =
        SenderListPath(folder + static_cast<char16_t>(std::filesystem::path::preferred_separator),
                       SenderListKind::kApproved);

    SenderList list(SenderListKind::kApproved);
    list.Add(u"a@x.com", {u"\u00E9", u"a@x.com"});
    ASSERT_TRUE(list.Save(path));
    SenderList loaded(SenderListKind::kApproved);
    ASSERT_TRUE(loaded.Load(path));
    EXPECT_TRUE(loaded.IsSameRecord(u"a@x.com", u"\u00E9"));
}

}  // namespace
}  // namespace velk::senders
