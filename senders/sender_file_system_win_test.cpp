// The save against the real Windows file system: another process holding the
// list open must cost the user neither the old list nor the edits.
#include <windows.h>

#include <gtest/gtest.h>

#include "common_src/win32/handles.h"
#include "senders/sender_list.h"
#include "senders/senders_test_util.h"

namespace velk::senders {
namespace {

const wchar_t* Wide(const std::u16string& s) {
    return reinterpret_cast<const wchar_t*>(s.c_str());
}

class SenderListHeldOpenTest : public ::testing::Test {
protected:
    void SetUp() override {
        path_ = SenderListPath(testing::Folder(dir_), SenderListKind::kApproved);
        list_.Add(u"old@x.com", {u"Old", u"old@x.com"});
        ASSERT_TRUE(list_.Save(path_));
        oldBytes_ = testing::ReadFileBytes(path_);
        list_.Add(u"new@x.com", {u"New", u"new@x.com"});
    }

    // How the scanning process reads the list: shared for reading and
    // writing, not for deletion.
    win32::unique_file OpenLikeAnotherReader(DWORD share) {
        return win32::unique_file(::CreateFileW(Wide(path_), GENERIC_READ, share, nullptr,
                                                OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    }

    testing::TempFolder dir_;
    SenderList list_{SenderListKind::kApproved};
    std::u16string path_;
    std::string oldBytes_;
};

TEST_F(SenderListHeldOpenTest, ATargetOpenWithoutShareDeleteIsWrittenInPlace) {
    win32::unique_file held = OpenLikeAnotherReader(FILE_SHARE_READ | FILE_SHARE_WRITE);
    ASSERT_TRUE(held);
    const std::string logged = testing::CaptureLog(dir_, [&] { EXPECT_TRUE(list_.Save(path_)); });
    EXPECT_NE(logged.find("written in place"), std::string::npos) << logged;
    EXPECT_FALSE(testing::FileExists(path_ + u".tmp"));
    EXPECT_FALSE(list_.Modified());

    // The holder reads the new list, whole: the file was cut to its length.
    char buffer[4096];
    DWORD got = 0;
    ASSERT_TRUE(::ReadFile(held.get(), buffer, sizeof buffer, &got, nullptr));
    const std::string seen(buffer, got);
    EXPECT_NE(seen.find("new@x.com"), std::string::npos);
    EXPECT_EQ(seen, testing::ReadFileBytes(path_));
}

TEST_F(SenderListHeldOpenTest, ATargetNobodyMayShareFailsAndKeepsItsOldContent) {
    win32::unique_file held(::CreateFileW(Wide(path_), GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                                          OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    ASSERT_TRUE(held);
    EXPECT_FALSE(list_.Save(path_));
    EXPECT_TRUE(list_.Modified());
    EXPECT_FALSE(testing::FileExists(path_ + u".tmp"));
    held.reset();
    EXPECT_EQ(testing::ReadFileBytes(path_), oldBytes_);

    // Once the other process lets go, the next save goes through.
    ASSERT_TRUE(list_.Save(path_));
    SenderList reloaded(SenderListKind::kApproved);
    ASSERT_TRUE(reloaded.Load(path_));
    EXPECT_TRUE(reloaded.Exists(u"new@x.com"));
}

}  // namespace
}  // namespace velk::senders
