// Settings against the real profile API and file system under Wine.
#include <windows.h>

#include <gtest/gtest.h>
#include <io.h>
#include <shlobj.h>

#include <algorithm>
#include <fstream>
#include <string>
#include <vector>

#include "common_src/QzCommon/QzComn_test_util.h"
#include "settings/ini_profile.h"
#include "settings/settings_locations.h"

namespace velk::settings {
namespace {

using QzCommon::testing_util::TempFolder;

void WriteFile(const std::wstring& path, const std::string& text) {
    std::ofstream out(std::string(path.begin(), path.end()), std::ios::binary);
    out << text;
}

std::wstring Raw(const std::wstring& ini, const wchar_t* section, const wchar_t* name) {
    wchar_t value[64];
    ::GetPrivateProfileStringW(section, name, L"<absent>", value, 64, ini.c_str());
    return value;
}

// Each row: section, name and the value expected there ("<absent>": no value).
struct RawValue {
    const wchar_t* section;
    const wchar_t* name;
    const wchar_t* value;
};
void ExpectRaw(const std::wstring& ini, std::initializer_list<RawValue> rows) {
    for (const RawValue& r : rows)
        EXPECT_EQ(Raw(ini, r.section, r.name), r.value) << L"[" << r.section << L"] " << r.name;
}

class SettingsFilesTest : public ::testing::Test {
protected:
    TempFolder folder;
    std::wstring install_ini = folder.path() + L"install.ini";
    std::wstring user_ini = folder.path() + L"user.ini";
    IniProfile profile{install_ini, user_ini};
};

TEST_F(SettingsFilesTest, FirstStartSeedsTheUserFileAndLaterStartsKeepTheUsersValue) {
    WriteFile(install_ini, "[General]\r\nProtectLevel=3\r\n");
    ASSERT_EQ(::_waccess(user_ini.c_str(), 0), -1);

    ApplyAdminPresets(profile);
    ::WritePrivateProfileStringW(nullptr, nullptr, nullptr, user_ini.c_str());  // flush
    ExpectRaw(user_ini, {{L"General", L"ProtectLevel", L"3"},
                         {L"General", L"SettedPLevel", L"1"},
                         {L"General", L"EnableInTheCloud", L"1"},
                         {L"General", L"SettedEnableInTheCloud", L"1"},
                         {L"General", L"NotifyIcon", L"0"},
                         {L"General", L"SettedNotifyIcon", L"1"},
                         {L"General", L"AutoApprove", L"<absent>"},
                         {L"General", L"SettedAutoApprove", L"<absent>"}});

    WriteFile(install_ini, "[General]\r\nProtectLevel=1\r\n");
    EXPECT_EQ(ApplyAdminPresets(profile), 0);
    EXPECT_EQ(Raw(user_ini, L"General", L"ProtectLevel"), L"3");
    EXPECT_EQ(ReadText(profile, Key::ProtectLevel), L"3");
}

TEST_F(SettingsFilesTest, EmptyPresetsAreNotCopiedAndMarkersGoToTheKeysSection) {
    WriteFile(install_ini,
              "[General]\r\nAutoMoved=\r\nEnableInTheCloud=\r\n"
              "[RuleFile-Update]\r\nAUServer=http://au.example.com/\r\nEnableSchedule=\r\n"
              "[ReportSpam]\r\nAddress=spam@example.com\r\n[ReportFP]\r\nAddress=\r\n"
              "[ReportPhish]\r\nAddress=p@example.com\r\n");
    // Any non-zero marker blocks its preset; one that is not a number does not.
    WriteFile(user_ini,
              "[ReportPhish]\r\nSettedReportAddr=7\r\n[General]\r\nSettedNotifyIcon=x\r\n");
    EXPECT_EQ(ApplyAdminPresets(profile), 3);  // AUServer, the spam address, NotifyIcon
    ExpectRaw(user_ini, {{L"ReportPhish", L"Address", L"<absent>"},
                         {L"General", L"SettedNotifyIcon", L"1"},
                         {L"General", L"AutoMoved", L"<absent>"},
                         {L"General", L"SettedAutomove", L"<absent>"},
                         // Present but empty in the installation file is not the "1" default.
                         {L"General", L"EnableInTheCloud", L"<absent>"},
                         {L"RuleFile-Update", L"AUServer", L"http://au.example.com/"},
                         {L"RuleFile-Update", L"SettedAUUrl", L"1"},
                         {L"RuleFile-Update", L"SettedEnableScheduleUpdate", L"<absent>"},
                         {L"ReportSpam", L"Address", L"spam@example.com"},
                         {L"ReportSpam", L"SettedReportAddr", L"1"},
                         {L"ReportFP", L"SettedReportAddr", L"<absent>"},
                         {L"General", L"SettedReportAddr", L"<absent>"}});
}

TEST_F(SettingsFilesTest, EveryMarkerIsWrittenUnderItsExactName) {
    WriteFile(install_ini,
              "[RuleFile-Update]\r\nAUServer=a\r\nEnableSchedule=0\r\nInterval=60\r\nUpdateUI=1\r\n"
              "[General]\r\nProtectLevel=3\r\nAutoApprove=0\r\nAutoMoved=1\r\nPurgeDays=30\r\n"
              "DeleteDeleted=1\r\n[ReportSpam]\r\nAddress=s\r\n[ReportFP]\r\nAddress=f\r\n"
              "[ReportPhish]\r\nAddress=p\r\n");
    EXPECT_EQ(ApplyAdminPresets(profile), 14);
    ExpectRaw(user_ini, {{L"RuleFile-Update", L"SettedAUUrl", L"1"},
                         {L"RuleFile-Update", L"SettedEnableScheduleUpdate", L"1"},
                         {L"RuleFile-Update", L"SettedSecUpdateInterval", L"1"},
                         {L"RuleFile-Update", L"SettedUpdateUI", L"1"},
                         {L"General", L"SettedPLevel", L"1"},
                         {L"General", L"SettedEnableInTheCloud", L"1"},
                         {L"General", L"SettedAutoApprove", L"1"},
                         {L"General", L"SettedNotifyIcon", L"1"},
                         {L"General", L"SettedAutomove", L"1"},
                         {L"General", L"SettedPurgeDays", L"1"},
                         {L"General", L"SettedDeleteDeleted", L"1"},
                         {L"ReportSpam", L"SettedReportAddr", L"1"},
                         {L"ReportFP", L"SettedReportAddr", L"1"},
                         {L"ReportPhish", L"SettedReportAddr", L"1"},
                         {L"General", L"AutoMoved", L"1"},
                         {L"RuleFile-Update", L"Interval", L"60"},
                         {L"ReportPhish", L"Address", L"p"}});
}

TEST_F(SettingsFilesTest, ReadingConventionsOfTheProfileApi) {
    std::string long_value(2000, 'v');
    WriteFile(user_ini, "[RuleFile-Update]\r\nHTTPPort=abc\r\nHTTPProxy=" + long_value +
                            "\r\nInterval=45min\r\nEnableProxy=YES\r\n");
    EXPECT_EQ(ReadInt(profile, Key::HTTPPort), 80);
    EXPECT_EQ(ReadInt(profile, Key::Interval), 45);  // leading digits count
    WriteFile(user_ini, "[RuleFile-Update]\r\nHTTPPort= -8\r\nInterval=\r\n");
    EXPECT_EQ(ReadInt(profile, Key::HTTPPort), -8);
    EXPECT_EQ(ReadInt(profile, Key::Interval), 180);  // present but empty
    WriteFile(user_ini, "[RuleFile-Update]\r\nHTTPProxy=" + long_value + "\r\nEnableProxy=YES\r\n");
    EXPECT_EQ(ReadText(profile, Key::HTTPProxy), std::wstring(kValueBufferChars - 1, L'v'));
    EXPECT_TRUE(ReadYesNo(profile, Key::EnableProxy));
    EXPECT_EQ(ReadText(profile, Key::EngineVer), L"0.0.0");  // missing key
    IniProfile nowhere(folder.path() + L"none.ini", folder.path() + L"none2.ini");
    EXPECT_EQ(ReadInt(nowhere, Key::EnableCRX), 1);  // missing file
    EXPECT_EQ(ReadText(nowhere, Key::AgentLog), L"VELKAgent.log");
}

TEST_F(SettingsFilesTest, WritesReachOnlyTheUserFile) {
    WriteFile(install_ini, "[General]\r\nDebug=0\r\n");
    EXPECT_TRUE(WriteInt(profile, Key::VELKStartTimes, 7));
    EXPECT_TRUE(WriteYesNo(profile, Key::EnableProxy, false));
    EXPECT_FALSE(WriteFlag(profile, Key::Debug, true));
    ExpectRaw(user_ini, {{L"General", L"VELKStartTimes", L"7"},
                         {L"RuleFile-Update", L"EnableProxy", L"no"},
                         {L"General", L"Debug", L"<absent>"}});
    EXPECT_EQ(Raw(install_ini, L"General", L"Debug"), L"0");
}

TEST(SettingsLocationsWin, DataDirectoryIsCreatedUnderCommonAppData) {
    std::wstring data_dir;
    ASSERT_EQ(PrepareDataDirectory(data_dir), static_cast<DWORD>(ERROR_SUCCESS));
    wchar_t common[MAX_PATH];
    ASSERT_TRUE(::SHGetSpecialFolderPathW(nullptr, common, CSIDL_COMMON_APPDATA, FALSE));
    EXPECT_EQ(data_dir, std::wstring(common) + L"\\Nuvexa\\OE\\");
    DWORD attributes = ::GetFileAttributesW(data_dir.c_str());
    ASSERT_NE(attributes, INVALID_FILE_ATTRIBUTES);
    EXPECT_TRUE(attributes & FILE_ATTRIBUTE_DIRECTORY);
    // Present already: nothing to do, still a success.
    EXPECT_EQ(PrepareDataDirectory(data_dir), static_cast<DWORD>(ERROR_SUCCESS));

    SettingsLocations where;
    ASSERT_EQ(ResolveLocations(nullptr, where), static_cast<DWORD>(ERROR_SUCCESS));
    EXPECT_EQ(where.data_dir, data_dir);
    wchar_t exe[MAX_PATH];
    std::wstring exe_path(exe, ::GetModuleFileNameW(nullptr, exe, MAX_PATH));
    EXPECT_EQ(where.install_dir + exe_path.substr(where.install_dir.size()), exe_path);
    EXPECT_EQ(where.install_dir.back(), L'\\');
    EXPECT_EQ(exe_path.find(L'\\', where.install_dir.size()), std::wstring::npos);
    EXPECT_EQ(where.install_ini, where.install_dir + L"VELK_OE.ini");
}

TEST(SettingsLocationsWin, NestedFoldersAreCreatedAndABlockedPathIsReported) {
    TempFolder folder;
    const std::wstring nested = folder.path() + L"Nuvexa\\OE\\Users\\{ID}\\";
    EXPECT_EQ(EnsureDirectory(nested), static_cast<DWORD>(ERROR_SUCCESS));
    EXPECT_EQ(::_waccess(nested.c_str(), 0), 0);

    // A file where a folder should be: the add-in must refuse to start.
    WriteFile(folder.path() + L"blocker", "not a folder");
    EXPECT_NE(EnsureDirectory(folder.path() + L"blocker\\Nuvexa\\OE\\"),
              static_cast<DWORD>(ERROR_SUCCESS));
    EXPECT_NE(EnsureDirectory(L""), static_cast<DWORD>(ERROR_SUCCESS));
}

// The shipped file is read through the same profile API the add-in uses.
TEST(ShippedInstallSettings, HoldsTheTableDefaultsAndLeavesPresetsOut) {
    std::wstring shipped = VELK_SHIPPED_INI;
    std::replace(shipped.begin(), shipped.end(), L'/', L'\\');
    ASSERT_EQ(::_waccess(shipped.c_str(), 0), 0);
    IniProfile profile(shipped, L"");
    for (std::size_t i = 0; i < kKeyCount; ++i) {
        const SettingKey& k = AllSettingKeys()[i];
        if (k.file != SettingsFile::Install)
            continue;
        // Present (documented) and equal to the default the code falls back to.
        EXPECT_EQ(profile.ReadString(k.file, k.section, k.name, L"<absent>"), k.default_value)
            << k.name;
    }
    // A shipped preset would be forced on every user at the first start.
    for (std::size_t i = 0; i < kAdminPresetCount; ++i) {
        const SettingKey& k = Setting(AdminPresets()[i].key);
        EXPECT_EQ(profile.ReadString(SettingsFile::Install, k.section, k.name, L"<absent>"),
                  L"<absent>")
            << k.section << L" " << k.name;
    }
}

TEST(ShippedInstallSettings, EveryKeyLineFollowsAComment) {
    std::wstring shipped = VELK_SHIPPED_INI;
    std::string path(shipped.begin() + 2, shipped.end());  // drop the "Z:"
    std::ifstream in(path);
    ASSERT_TRUE(in);
    std::string line;
    std::string previous;
    int keys = 0;
    while (std::getline(in, line)) {
        if (!line.empty() && line.back() == '\r')
            line.pop_back();
        bool is_key = !line.empty() && line[0] != ';' && line[0] != '[';
        if (is_key) {
            ++keys;
            EXPECT_EQ(previous.substr(0, 2), "; ") << line;
        }
        // A commented preset ("; text" then ";Key=value") documents itself too.
        if (!line.empty() && line[0] == ';' && line.find('=') != std::string::npos &&
            line.find(' ') == std::string::npos) {
            EXPECT_EQ(previous.substr(0, 2), "; ") << line;
        }
        previous = line;
    }
    // 25 [General] keys and the 9 [OnlinHelp] keys the help commands read.
    EXPECT_EQ(keys, 34);
}

}  // namespace
}  // namespace velk::settings
