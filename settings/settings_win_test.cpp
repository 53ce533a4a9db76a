// Settings against the real profile API and file system under Wine, and the
// files other programs share with the add-in, byte for byte.
#include <windows.h>

#include <gtest/gtest.h>
#include <shlobj.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <string>

#include "common_src/QzCommon/QzComn_test_util.h"
#include "settings/ini_profile.h"
#include "settings/settings_locations.h"

namespace velk::settings {
namespace {

using QzCommon::testing_util::TempFolder;

std::string Golden(const char* name) {
    std::ifstream in(std::string(VELK_SETTINGS_TESTDATA) + "/" + name, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

class SettingsFilesTest : public ::testing::Test {
protected:
    std::string UserFile() {
        ::WritePrivateProfileStringW(nullptr, nullptr, nullptr,
                                     profile.PathOf(SettingsFile::User).c_str());
        return folder.ReadFile(L"user.ini");
    }

    TempFolder folder;
    IniProfile profile{folder.path() + L"install.ini", folder.path() + L"user.ini"};
};

// The scanning process reads the user file by these sections and names, and
// finds the defaults the add-in falls back to.
TEST_F(SettingsFilesTest, EveryUserKeyIsWrittenUnderItsSectionAndNameWithItsDefault) {
    for (std::size_t i = 0; i < kKeyCount; ++i) {
        const SettingKey& k = AllSettingKeys()[i];
        if (k.file == SettingsFile::User)
            ASSERT_TRUE(WriteText(profile, k.key, k.default_value)) << k.name;
    }
    EXPECT_EQ(UserFile(), Golden("user_keys.ini")) << "a key changed its section, name or default";
}

// At the first start the administrator's presets reach the user file with a
// marker the scanning process and later starts honour; empty presets are not
// copied, and a marker that is set blocks its preset for good.
TEST_F(SettingsFilesTest, PresetsReachTheUserFileOnceWithTheirMarkers) {
    folder.WriteFile(
        L"install.ini",
        "[RuleFile-Update]\r\nAUServer=http://au.example.com/\r\nEnableSchedule=0\r\n"
        "Interval=60\r\nUpdateUI=1\r\n[General]\r\nProtectLevel=3\r\nAutoApprove=0\r\n"
        "AutoMoved=\r\nEnableInTheCloud=\r\nPurgeDays=30\r\nDeleteDeleted=1\r\n"
        "[ReportSpam]\r\nAddress=s@example.com\r\n[ReportFP]\r\nAddress=f@example.com\r\n"
        "[ReportPhish]\r\nAddress=p@example.com\r\n");
    // A marker that is not a number blocks nothing.
    folder.WriteFile(L"user.ini",
                     "[ReportPhish]\r\nSettedReportAddr=7\r\n[General]\r\nSettedNotifyIcon=x\r\n");
    EXPECT_EQ(ApplyAdminPresets(profile), 11);
    const std::string first = UserFile();
    EXPECT_EQ(first, Golden("presets_applied.ini"));

    folder.WriteFile(L"install.ini", "[General]\r\nProtectLevel=1\r\nEnableInTheCloud=\r\n");
    EXPECT_EQ(ApplyAdminPresets(profile), 0);
    EXPECT_EQ(UserFile(), first);
    EXPECT_EQ(ReadText(profile, Key::ProtectLevel), L"3");
}

TEST_F(SettingsFilesTest, NumbersFollowTheProfileApiButATextReadsAsTheDefault) {
    const std::string long_value(2000, 'v');
    folder.WriteFile(L"user.ini",
                     "[RuleFile-Update]\r\nHTTPPort=abc\r\nInterval=45min\r\n"
                     "HTTPProxy=" +
                         long_value + "\r\nEnableProxy=YES\r\n");
    EXPECT_EQ(ReadInt(profile, Key::HTTPPort), 80);
    EXPECT_EQ(ReadInt(profile, Key::Interval), 45);  // leading digits count
    EXPECT_EQ(ReadText(profile, Key::HTTPProxy), std::wstring(kValueBufferChars - 1, L'v'));
    EXPECT_TRUE(ReadYesNo(profile, Key::EnableProxy));
    folder.WriteFile(L"user.ini", "[RuleFile-Update]\r\nHTTPPort= -8\r\nInterval=\r\n");
    EXPECT_EQ(ReadInt(profile, Key::HTTPPort), -8);
    EXPECT_EQ(ReadInt(profile, Key::Interval), 180);  // present but empty
}

TEST_F(SettingsFilesTest, WritesUseTheStoredFormsAndNeverTouchTheInstallationFile) {
    folder.WriteFile(L"install.ini", "[General]\r\nDebug=0\r\n");
    EXPECT_FALSE(WriteFlag(profile, Key::Debug, true));
    EXPECT_EQ(folder.ReadFile(L"install.ini"), "[General]\r\nDebug=0\r\n");
    EXPECT_FALSE(folder.Exists(L"user.ini"));
    for (bool on : {false, true}) {
        WriteFlag(profile, Key::EnableTBar, on);
        WriteYesNo(profile, Key::EnableProxy, !on);
        WriteInt(profile, Key::VELKStartTimes, on ? 12 : -3);
        EXPECT_EQ(UserFile(),
                  on ? "[Antispam]\r\nEnableTBar=1\r\n[RuleFile-Update]\r\nEnableProxy=no\r\n"
                       "[General]\r\nVELKStartTimes=12\r\n"
                     : "[Antispam]\r\nEnableTBar=0\r\n[RuleFile-Update]\r\nEnableProxy=yes\r\n"
                       "[General]\r\nVELKStartTimes=-3\r\n");
    }
}

TEST(SettingsLocationsWin, FoldersAreCreatedAsNeededAndABlockedPathIsReported) {
    std::wstring data_dir;
    ASSERT_EQ(PrepareDataDirectory(data_dir), static_cast<DWORD>(ERROR_SUCCESS));
    wchar_t common[MAX_PATH];
    ASSERT_TRUE(::SHGetSpecialFolderPathW(nullptr, common, CSIDL_COMMON_APPDATA, FALSE));
    EXPECT_EQ(data_dir, std::wstring(common) + L"\\Nuvexa\\OE\\");
    EXPECT_NE(::GetFileAttributesW(data_dir.c_str()), INVALID_FILE_ATTRIBUTES);
    SettingsLocations where;
    ASSERT_EQ(ResolveLocations(nullptr, where), static_cast<DWORD>(ERROR_SUCCESS));
    EXPECT_EQ(where.data_dir, data_dir);
    wchar_t exe[MAX_PATH];
    const std::wstring exe_path(exe, ::GetModuleFileNameW(nullptr, exe, MAX_PATH));
    EXPECT_EQ(where.install_ini, exe_path.substr(0, exe_path.rfind(L'\\') + 1) + L"VELK_OE.ini");

    TempFolder folder;
    EXPECT_EQ(EnsureDirectory(folder.path() + L"Nuvexa\\OE\\Users\\{ID}\\"),
              static_cast<DWORD>(ERROR_SUCCESS));
    EXPECT_TRUE(folder.Exists(L"Nuvexa\\OE\\Users\\{ID}"));
    // A file where a folder should be: the add-in must refuse to start.
    folder.WriteFile(L"blocker", "not a folder");
    EXPECT_NE(EnsureDirectory(folder.path() + L"blocker\\Nuvexa\\OE\\"),
              static_cast<DWORD>(ERROR_SUCCESS));
}

// What administrators start from: the shipped file, read through the same
// profile API the add-in uses.
TEST(ShippedInstallSettings, DocumentsEveryKeyWithItsDefaultAndLeavesPresetsOut) {
    std::wstring shipped = VELK_SHIPPED_INI;
    std::replace(shipped.begin(), shipped.end(), L'/', L'\\');
    IniProfile profile(shipped, L"");
    ASSERT_NE(profile.ReadString(SettingsFile::Install, L"General", L"Debug", L"<absent>"),
              L"<absent>");
    for (std::size_t i = 0; i < kKeyCount; ++i) {
        const SettingKey& k = AllSettingKeys()[i];
        if (k.file == SettingsFile::Install) {
            EXPECT_EQ(profile.ReadString(k.file, k.section, k.name, L"<absent>"), k.default_value)
                << k.name;
        }
    }
    // A shipped preset would be forced on every user at the first start.
    for (std::size_t i = 0; i < kAdminPresetCount; ++i) {
        const SettingKey& k = Setting(AdminPresets()[i].key);
        EXPECT_EQ(profile.ReadString(SettingsFile::Install, k.section, k.name, L"<absent>"),
                  L"<absent>")
            << k.section << L" " << k.name;
    }
    // Every key line follows a "; " comment that says what it does.
    std::ifstream in(std::string(shipped.begin() + 2, shipped.end()));  // without "Z:"
    std::string line, previous;
    int keys = 0;
    while (std::getline(in, line)) {
        if (!line.empty() && line.back() == '\r')
            line.pop_back();
        const bool commented_key = line.size() > 1 && line[0] == ';' && line[1] != ' ';
        if (!line.empty() && (commented_key || (line[0] != ';' && line[0] != '['))) {
            keys += commented_key ? 0 : 1;
            EXPECT_EQ(previous.substr(0, 2), "; ") << line;
        }
        previous = line;
    }
    EXPECT_GT(keys, 20);
}

}  // namespace
}  // namespace velk::settings
