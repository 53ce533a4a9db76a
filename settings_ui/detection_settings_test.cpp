#include "settings_ui/detection_settings.h"

#include <gtest/gtest.h>

#include <cwctype>
#include <map>

namespace velk::settings_ui {
namespace {

// The user's settings in memory, read with the profile API's conventions.
class RecordingProfile : public settings::Profile {
public:
    std::map<std::wstring, std::wstring> values;  // "Section/Name" -> value

    void Set(const wchar_t* section, const wchar_t* name, const wchar_t* value) {
        values[std::wstring(section) + L"/" + name] = value;
    }
    std::wstring ReadString(settings::SettingsFile, const wchar_t* section, const wchar_t* name,
                            const wchar_t* fallback) override {
        auto it = values.find(std::wstring(section) + L"/" + name);
        return it == values.end() ? fallback : it->second;
    }
    int ReadInt(settings::SettingsFile file, const wchar_t* section, const wchar_t* name,
                int fallback) override {
        const std::wstring text = ReadString(file, section, name, L"");
        return text.empty() || !std::iswdigit(text[0]) ? fallback : std::stoi(text);
    }
    bool WriteString(settings::SettingsFile, const wchar_t*, const wchar_t*,
                     const wchar_t*) override {
        return false;  // the native tests only read
    }
};

TEST(DetectionSettings, StoredValuesReadWithTheirFallbacks) {
    struct Case {
        const wchar_t* global;
        const wchar_t* protect;
        bool default_mode;
        int stop;
    } cases[] = {
        {L"1", L" 3 ", true, 0},  // blanks around a level are trimmed
        {L"2", L"5", true, 1},    // only 0 means custom; an unknown level is 2
        {L"", L"", true, 1},     {L" 0 ", L"1", false, 2}, {L"abc", L"3x", true, 1},
    };
    for (const Case& c : cases) {
        RecordingProfile profile;
        profile.Set(L"General", L"GlobalLevel", c.global);
        profile.Set(L"General", L"ProtectLevel", c.protect);
        const DetectionValues v = LoadDetection(profile);
        EXPECT_EQ(c.default_mode, v.default_mode) << c.global;
        EXPECT_EQ(c.stop, v.protect_stop) << c.protect;
    }

    RecordingProfile profile;  // nothing stored: medium everywhere, cloud on
    EXPECT_EQ(std::optional<bool>(true), LoadDetection(profile).in_the_cloud);
    profile.Set(L"General", L"SexualLevel", L"1");
    profile.Set(L"General", L"CommercialLevel", L"3");
    profile.Set(L"General", L"FinancialLevel", L"7");
    profile.Set(L"General", L"OtherLevel", L"abc");
    profile.Set(L"General", L"EnableInTheCloud", L"0");
    const DetectionValues v = LoadDetection(profile);
    EXPECT_EQ((std::array<int, kCategoryCount>{2, 0, 1, 1, 1, 1, 1}), v.category_stops);
    EXPECT_EQ(std::optional<bool>(false), v.in_the_cloud);
}

}  // namespace
}  // namespace velk::settings_ui
