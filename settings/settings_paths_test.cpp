#include <gtest/gtest.h>

#include "settings/settings_paths.h"

namespace velk::settings {
namespace {

// The installer and the scanning process look for the files at these places.
TEST(SettingsPaths, FoldersAndFilesAreComposedAsTheOtherProgramsExpect) {
    EXPECT_EQ(InstallDirectoryOf(L"C:\\Program Files\\Nuvexa\\OEA\\VELK_OEA.dll"),
              L"C:\\Program Files\\Nuvexa\\OEA\\");
    SettingsLocations where(L"C:\\P\\OEA\\", DataDirectoryOf(L"C:\\ProgramData"));
    EXPECT_EQ(where.install_ini, L"C:\\P\\OEA\\VELK_OE.ini");
    where.SetUser(L"{A1B2}");
    EXPECT_EQ(where.user_ini, L"C:\\ProgramData\\Nuvexa\\OE\\Users\\{A1B2}\\VELK_OE.ini");
    EXPECT_EQ(where.LogFile(L"VELKAgent.log"),
              L"C:\\ProgramData\\Nuvexa\\OE\\Users\\{A1B2}\\log\\VELKAgent.log");
    EXPECT_EQ(SharedVersionFileOf(where.data_dir),
              L"C:\\ProgramData\\Nuvexa\\VELK_common\\VELK_version.ini");
    // Only a trailing "\OE\" is dropped.
    EXPECT_EQ(SharedVersionFileOf(L"D:\\SHOE\\"), L"D:\\SHOE\\VELK_common\\VELK_version.ini");
}

}  // namespace
}  // namespace velk::settings
