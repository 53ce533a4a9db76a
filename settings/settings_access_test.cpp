#include "settings/settings_access.h"

#include <gtest/gtest.h>

#include <cwctype>
#include <map>
#include <tuple>

#include "settings/settings_paths.h"

namespace velk::settings {
namespace {

// Two in-memory profile files with the reading rules of the profile API:
// an integer read takes the leading digits, else the fallback.
class MemoryProfile : public Profile {
public:
    using Slot = std::tuple<SettingsFile, std::wstring, std::wstring>;
    std::map<Slot, std::wstring> values;

    std::wstring& At(SettingsFile file, const wchar_t* section, const wchar_t* name) {
        return values[Slot(file, section, name)];
    }
    std::wstring ReadString(SettingsFile file, const wchar_t* section, const wchar_t* name,
                            const wchar_t* fallback) override {
        auto it = values.find(Slot(file, section, name));
        return it == values.end() ? fallback : it->second;
    }
    int ReadInt(SettingsFile file, const wchar_t* section, const wchar_t* name,
                int fallback) override {
        const std::wstring v = ReadString(file, section, name, L"");
        return v.empty() || !std::iswdigit(v[0]) ? fallback : std::stoi(v);
    }
    bool WriteString(SettingsFile file, const wchar_t* section, const wchar_t* name,
                     const wchar_t* value) override {
        At(file, section, name) = value;
        return true;
    }
};

constexpr SettingsFile kUser = SettingsFile::User;

TEST(SettingsAccess, ReadsFallBackToTheTableDefaultsAndTheKeysOwnFileDecides) {
    MemoryProfile profile;
    EXPECT_EQ(ReadText(profile, Key::AgentLog), L"VELKAgent.log");
    EXPECT_EQ(ReadInt(profile, Key::HTTPPort), 80);
    profile.At(kUser, L"RuleFile-Update", L"HTTPPort") = L"8080";
    EXPECT_EQ(ReadInt(profile, Key::HTTPPort), 8080);
    // The toolbar's ShowReportButton is the installation's, not the user's.
    profile.At(kUser, L"General", L"ShowReportButton") = L"0";
    EXPECT_EQ(ReadText(profile, Key::ShowReportButton), L"1");
    EXPECT_EQ(ReadText(profile, Key::UserShowReportButton), L"0");
    profile.At(SettingsFile::Install, L"General", L"Debug") = L" \t1 ";
    EXPECT_EQ(ReadTrimmed(profile, Key::Debug), L"1");
}

TEST(SettingsAccess, ProxySwitchIsYesInAnyCaseAndNothingElse) {
    MemoryProfile profile;
    std::wstring& stored = profile.At(kUser, L"RuleFile-Update", L"EnableProxy");
    for (const wchar_t* on : {L"yes", L"YES", L"yEs"}) {
        stored = on;
        EXPECT_TRUE(ReadYesNo(profile, Key::EnableProxy)) << on;
    }
    for (const wchar_t* off : {L"no", L"1", L"yes ", L"y", L""}) {
        stored = off;
        EXPECT_FALSE(ReadYesNo(profile, Key::EnableProxy)) << off;
    }
}

TEST(SettingsAccess, WritesUseTheStoredForms) {
    MemoryProfile profile;
    WriteFlag(profile, Key::EnableTBar, false);
    WriteYesNo(profile, Key::EnableProxy, true);
    WriteInt(profile, Key::VELKStartTimes, -3);
    EXPECT_EQ(profile.At(kUser, L"Antispam", L"EnableTBar"), L"0");
    EXPECT_EQ(profile.At(kUser, L"RuleFile-Update", L"EnableProxy"), L"yes");
    EXPECT_EQ(profile.At(kUser, L"General", L"VELKStartTimes"), L"-3");
    WriteFlag(profile, Key::EnableTBar, true);
    WriteYesNo(profile, Key::EnableProxy, false);
    EXPECT_EQ(profile.At(kUser, L"Antispam", L"EnableTBar"), L"1");
    EXPECT_EQ(profile.At(kUser, L"RuleFile-Update", L"EnableProxy"), L"no");
}

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
