#include "host/per_user_start.h"

#include <gtest/gtest.h>

#include <windows.h>

#include "common_src/QzCommon/QzComn_test_util.h"

namespace velk::host {
namespace {

// The first start on a machine that has never run the add-in: nothing of the
// data folder exists yet. host_tests.rc gives this executable the
// FileVersion "6.0.1234.5"; copied, it plays the scanning process.
TEST(PerUserStart, FirstStartCreatesTheFoldersAndTellsTheOtherProgramsTheVersion) {
    QzCommon::testing_util::TempFolder root;
    root.MakeFolder(L"bin");
    wchar_t self[MAX_PATH];
    ::GetModuleFileNameW(nullptr, self, MAX_PATH);
    ASSERT_TRUE(::CopyFileW(self, (root.path() + L"bin\\VELK_OE.exe").c_str(), FALSE));
    settings::SettingsLocations where(root.path() + L"bin\\", root.path() + L"Nuvexa\\OE\\");

    EXPECT_EQ(1, RunPerUserStart(where, L"{user-1}", true).start_count);
    const std::string user = root.ReadFile(L"Nuvexa\\OE\\Users\\{user-1}\\VELK_OE.ini");
    EXPECT_NE(std::string::npos, user.find("VELKOEVer=6.0.5")) << user;
    EXPECT_NE(std::string::npos, user.find("VELKStartTimes=1")) << user;
    // Read by the product's other programs, byte for byte.
    EXPECT_EQ("[VELK_OE64]\r\npname=velk\r\nclass=1\r\ntype=145\r\nDeployVersion=6.0.5\r\n",
              root.ReadFile(L"Nuvexa\\VELK_common\\VELK_version.ini"));
}

}  // namespace
}  // namespace velk::host
