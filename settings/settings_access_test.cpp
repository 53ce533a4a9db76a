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

    void Set(SettingsFile file, const wchar_t* section, const wchar_t* name, const wchar_t* v) {
        values[Slot(file, section, name)] = v;
    }
    const std::wstring* Get(SettingsFile file, const wchar_t* section, const wchar_t* name) const {
        auto it = values.find(Slot(file, section, name));
        return it == values.end() ? nullptr : &it->second;
    }

    std::wstring ReadString(SettingsFile file, const wchar_t* section, const wchar_t* name,
                            const wchar_t* fallback) override {
        const std::wstring* v = Get(file, section, name);
        return v ? *v : fallback;
    }
    int ReadInt(SettingsFile file, const wchar_t* section, const wchar_t* name,
                int fallback) override {
        const std::wstring* v = Get(file, section, name);
        if (v == nullptr || v->empty() || !std::iswdigit((*v)[0]))
            return fallback;
        return std::stoi(*v);
    }
    bool WriteString(SettingsFile file, const wchar_t* section, const wchar_t* name,
                     const wchar_t* value) override {
        Set(file, section, name, value);
        return true;
    }
};

constexpr SettingsFile kUser = SettingsFile::User;
constexpr SettingsFile kInstall = SettingsFile::Install;

TEST(SettingsAccess, ReadsFallBackToTheTableDefaults) {
    MemoryProfile profile;
    EXPECT_EQ(ReadText(profile, Key::AgentLog), L"VELKAgent.log");
    EXPECT_EQ(ReadInt(profile, Key::HTTPPort), 80);
    EXPECT_EQ(ReadInt(profile, Key::EnableCRX), 1);
    EXPECT_FALSE(ReadYesNo(profile, Key::EnableProxy));

    profile.Set(kUser, L"RuleFile-Update", L"HTTPPort", L"abc");
    EXPECT_EQ(ReadInt(profile, Key::HTTPPort), 80);
    profile.Set(kUser, L"RuleFile-Update", L"HTTPPort", L"8080");
    EXPECT_EQ(ReadInt(profile, Key::HTTPPort), 8080);
    // The key's own file decides: the toolbar's ShowReportButton is the installation one.
    profile.Set(kUser, L"General", L"ShowReportButton", L"0");
    EXPECT_EQ(ReadText(profile, Key::ShowReportButton), L"1");
    EXPECT_EQ(ReadText(profile, Key::UserShowReportButton), L"0");
}

TEST(SettingsAccess, ProxySwitchIsYesInAnyCaseAndNothingElse) {
    MemoryProfile profile;
    for (const wchar_t* on : {L"yes", L"YES", L"Yes", L"yEs"}) {
        profile.Set(kUser, L"RuleFile-Update", L"EnableProxy", on);
        EXPECT_TRUE(ReadYesNo(profile, Key::EnableProxy)) << on;
    }
    for (const wchar_t* off : {L"no", L"1", L"yes ", L"y", L"yess", L""}) {
        profile.Set(kUser, L"RuleFile-Update", L"EnableProxy", off);
        EXPECT_FALSE(ReadYesNo(profile, Key::EnableProxy)) << off;
    }
}

TEST(SettingsAccess, WritesUseTheStoredForms) {
    MemoryProfile profile;
    WriteFlag(profile, Key::EnableTBar, false);
    WriteYesNo(profile, Key::EnableProxy, true);
    WriteInt(profile, Key::VELKStartTimes, -3);
    WriteText(profile, Key::ReportFPAddress, L"fp@example.com");
    EXPECT_EQ(*profile.Get(kUser, L"Antispam", L"EnableTBar"), L"0");
    EXPECT_EQ(*profile.Get(kUser, L"RuleFile-Update", L"EnableProxy"), L"yes");
    EXPECT_EQ(*profile.Get(kUser, L"General", L"VELKStartTimes"), L"-3");
    EXPECT_EQ(*profile.Get(kUser, L"ReportFP", L"Address"), L"fp@example.com");
    WriteFlag(profile, Key::EnableTBar, true);
    WriteYesNo(profile, Key::EnableProxy, false);
    EXPECT_EQ(*profile.Get(kUser, L"Antispam", L"EnableTBar"), L"1");
    EXPECT_EQ(*profile.Get(kUser, L"RuleFile-Update", L"EnableProxy"), L"no");
}

TEST(SettingsAccess, TrimRemovesOnlySurroundingBlanks) {
    EXPECT_EQ(TrimBlanks(L" \t1 \t"), L"1");
    EXPECT_EQ(TrimBlanks(L"a b"), L"a b");
    EXPECT_EQ(TrimBlanks(L" \t "), L"");
    MemoryProfile profile;
    profile.Set(kInstall, L"General", L"Debug", L"  1 ");
    EXPECT_EQ(ReadTrimmed(profile, Key::Debug), L"1");
}

TEST(SettingsPaths, FoldersAndFilesAreComposedAsTheOtherProgramsExpect) {
    EXPECT_EQ(InstallDirectoryOf(L"C:\\Program Files\\Nuvexa\\OEA\\VELK_OEA.dll"),
              L"C:\\Program Files\\Nuvexa\\OEA\\");
    EXPECT_EQ(InstallDirectoryOf(L"VELK_OEA.dll"), L"");
    EXPECT_EQ(DataDirectoryOf(L"C:\\ProgramData"), L"C:\\ProgramData\\Nuvexa\\OE\\");

    SettingsLocations where(L"C:\\Program Files\\Nuvexa\\OEA\\", L"C:\\ProgramData\\Nuvexa\\OE\\");
    EXPECT_EQ(where.install_ini, L"C:\\Program Files\\Nuvexa\\OEA\\VELK_OE.ini");
    where.SetUser(L"{A1B2}");
    EXPECT_EQ(where.user_dir, L"C:\\ProgramData\\Nuvexa\\OE\\Users\\{A1B2}\\");
    EXPECT_EQ(where.user_ini, L"C:\\ProgramData\\Nuvexa\\OE\\Users\\{A1B2}\\VELK_OE.ini");
    EXPECT_EQ(where.LogFile(L"VELKAgent.log"),
              L"C:\\ProgramData\\Nuvexa\\OE\\Users\\{A1B2}\\log\\VELKAgent.log");
    where.SetUser(L"");  // a client without identities
    EXPECT_EQ(where.user_dir, L"C:\\ProgramData\\Nuvexa\\OE\\Users\\\\");

    EXPECT_EQ(SharedVersionFileOf(L"C:\\ProgramData\\Nuvexa\\OE\\"),
              L"C:\\ProgramData\\Nuvexa\\VELK_common\\VELK_version.ini");
    // Only a trailing "\OE\" is dropped.
    EXPECT_EQ(SharedVersionFileOf(L"D:\\data\\"), L"D:\\data\\VELK_common\\VELK_version.ini");
    EXPECT_EQ(SharedVersionFileOf(L"D:\\SHOE\\"), L"D:\\SHOE\\VELK_common\\VELK_version.ini");
}

}  // namespace
}  // namespace velk::settings
