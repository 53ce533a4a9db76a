// Saving never destroys the old list: every failure of the temporary-file
// write or of the replace leaves the old file whole, is logged and is still
// answered with true.
#include <gtest/gtest.h>

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
    std::size_t writeFailsAfter = kNever;  // bytes written before the write fails
    bool replaceFails = false;
    bool throws = false;  // reads and writes throw as an exhausted heap would

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
        return replaceFails ? FileResult::Failed(32) : real_.Replace(from, to);
    }
    FileResult Remove(const std::u16string& path) override { return real_.Remove(path); }

private:
    ISenderFileSystem& real_ = PlatformFileSystem();
};

class SenderListSaveTest : public ::testing::Test {
protected:
    void SetUp() override {
        list_.Add(u"old@x.com", {u"Old", u"old@x.com"});
        ASSERT_TRUE(list_.Save(path_));
        oldBytes_ = dir_.ReadFile(L"BlackList.dat");
        list_.Add(u"new@x.com", {u"New", u"new@x.com"});
    }
    // Saves and expects the old file whole, no temporary and the log line.
    void ExpectOldListKept(const char* logged_reason) {
        const std::string logged =
            testing::CaptureLog(dir_, [&] { EXPECT_TRUE(list_.Save(path_)); });
        EXPECT_EQ(dir_.ReadFile(L"BlackList.dat"), oldBytes_);
        EXPECT_FALSE(dir_.Exists(L"BlackList.dat.tmp"));
        EXPECT_NE(logged.find(logged_reason), std::string::npos) << logged;
    }

    testing::TempFolder dir_;
    FaultyFileSystem fs_;
    SenderList list_{SenderListKind::kBlocked, fs_};
    std::u16string path_ = SenderListPath(testing::Folder(dir_), SenderListKind::kBlocked);
    std::string oldBytes_;
};

TEST_F(SenderListSaveTest, AWriteFailingPartWayKeepsTheOldFileUntilTheNextGoodSave) {
    fs_.writeFailsAfter = oldBytes_.size() / 2;
    ExpectOldListKept("not saved, writing");
    fs_.writeFailsAfter = FaultyFileSystem::kNever;
    ASSERT_TRUE(list_.Save(path_));
    EXPECT_NE(dir_.ReadFile(L"BlackList.dat").find("new@x.com"), std::string::npos);
}

TEST_F(SenderListSaveTest, AFailedReplaceKeepsTheOldFile) {
    fs_.replaceFails = true;
    ExpectOldListKept("cannot be replaced (error 32)");
}

TEST_F(SenderListSaveTest, ATemporaryFileLeftByACrashIsRemovedAtTheNextSaveEvenAFailedOne) {
    dir_.WriteFile(L"BlackList.dat.tmp", "half a list from a crash");
    ASSERT_TRUE(list_.Save(path_));
    EXPECT_FALSE(dir_.Exists(L"BlackList.dat.tmp"));
    SenderList reloaded(SenderListKind::kBlocked);
    ASSERT_TRUE(reloaded.Load(path_));
    EXPECT_EQ(reloaded.Count(), 2u);

    dir_.WriteFile(L"BlackList.dat.tmp", "half a list from a crash");
    fs_.writeFailsAfter = 0;
    ASSERT_TRUE(list_.Save(path_));
    EXPECT_FALSE(dir_.Exists(L"BlackList.dat.tmp"));
}

TEST_F(SenderListSaveTest, AnExceptionInsideLoadOrSaveIsLoggedAndGoesNoFurther) {
    fs_.throws = true;
    const std::string logged = testing::CaptureLog(dir_, [&] {
        EXPECT_TRUE(list_.Save(path_));
        EXPECT_TRUE(list_.Load(path_));
    });
    EXPECT_EQ(dir_.ReadFile(L"BlackList.dat"), oldBytes_);
    EXPECT_NE(logged.find("saving the sender list"), std::string::npos) << logged;
    EXPECT_NE(logged.find("loading the sender list"), std::string::npos) << logged;
}

// Folder names outside ASCII reach the file system intact on both
// platforms; a missing folder is not created.
TEST(SenderListPlatformFiles, ANonAsciiFolderSavesAndLoadsAndAMissingOneIsNotCreated) {
    testing::TempFolder dir;
    dir.MakeFolder(L"J\u00F6rg \u5C71\u7530");
    const std::u16string path = SenderListPath(
        testing::Folder(dir) + u"J\u00F6rg \u5C71\u7530" + testing::Folder(dir).back(),
        SenderListKind::kApproved);
    SenderList list(SenderListKind::kApproved);
    list.Add(u"a@x.com", {u"\u00E9", u"a@x.com"});
    ASSERT_TRUE(list.Save(path));
    SenderList loaded(SenderListKind::kApproved);
    ASSERT_TRUE(loaded.Load(path));
    EXPECT_TRUE(loaded.IsSameRecord(u"a@x.com", u"\u00E9"));

    EXPECT_TRUE(
        list.Save(SenderListPath(testing::Folder(dir) + u"absent/", SenderListKind::kApproved)));
    EXPECT_FALSE(dir.Exists(L"absent"));
}

}  // namespace
}  // namespace velk::senders
