// The replace step against the real Windows file system: another process
// holding the list open must not cost the user the list.
#include <windows.h>

#include <gtest/gtest.h>

#include "common_src/win32/handles.h"
#include "senders/sender_list.h"
#include "senders/senders_test_util.h"

namespace velk::senders {
namespace {

class SenderListHeldOpenTest : public ::testing::Test {
protected:
    void SetUp() override {
        list_.Add(u"old@x.com", {u"Old", u"old@x.com"});
        ASSERT_TRUE(list_.Save(path_));
        oldBytes_ = dir_.ReadFile(L"WhiteList.dat");
        list_.Add(u"new@x.com", {u"New", u"new@x.com"});
    }
    win32::unique_file Hold(DWORD access, DWORD share) {
        return win32::unique_file(::CreateFileW((dir_.path() + L"WhiteList.dat").c_str(), access,
                                                share, nullptr, OPEN_EXISTING, 0, nullptr));
    }

    testing::TempFolder dir_;
    SenderList list_{SenderListKind::kApproved};
    std::u16string path_ = SenderListPath(testing::Folder(dir_), SenderListKind::kApproved);
    std::string oldBytes_;
};

// How the scanning process reads the list: shared for reading and writing,
// not for deletion.
TEST_F(SenderListHeldOpenTest, AReaderWithoutShareDeleteKeepsReadingTheOldListWhole) {
    {
        win32::unique_file held = Hold(GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE);
        ASSERT_TRUE(held);
        const std::string logged =
            testing::CaptureLog(dir_, [&] { EXPECT_TRUE(list_.Save(path_)); });
        EXPECT_NE(logged.find("cannot be replaced"), std::string::npos) << logged;
        EXPECT_FALSE(dir_.Exists(L"WhiteList.dat.tmp"));
        char buffer[4096];
        DWORD got = 0;
        ASSERT_TRUE(::ReadFile(held.get(), buffer, sizeof buffer, &got, nullptr));
        EXPECT_EQ(std::string(buffer, got), oldBytes_);
    }
    // Once the other process lets go, the next save goes through.
    ASSERT_TRUE(list_.Save(path_));
    SenderList reloaded(SenderListKind::kApproved);
    ASSERT_TRUE(reloaded.Load(path_));
    EXPECT_TRUE(reloaded.Exists(u"new@x.com"));
}

TEST_F(SenderListHeldOpenTest, AWriterWithoutSharingKeepsTheOldContent) {
    win32::unique_file held = Hold(GENERIC_READ | GENERIC_WRITE, 0);
    ASSERT_TRUE(held);
    EXPECT_TRUE(list_.Save(path_));
    EXPECT_FALSE(dir_.Exists(L"WhiteList.dat.tmp"));
    held.reset();
    EXPECT_EQ(dir_.ReadFile(L"WhiteList.dat"), oldBytes_);
}

}  // namespace
}  // namespace velk::senders
