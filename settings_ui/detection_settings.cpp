#include "settings_ui/detection_settings.h"

#include "log/diag_log.h"

namespace velk::settings_ui {
namespace {

using settings::Key;

constexpr Key kCategoryKeys[kCategoryCount] = {
    Key::SexualLevel, Key::CommercialLevel, Key::FinancialLevel, Key::HealthLevel,
    Key::RacialLevel, Key::SpiritualLevel,  Key::OtherLevel};

// The order the category keys are written in, which is not the order the
// dialog shows them in: Other comes before Racial and Spiritual.
constexpr Category kWriteOrder[kCategoryCount] = {
    Category::kSexual, Category::kCommercial, Category::kFinancial, Category::kHealth,
    Category::kOther,  Category::kRacial,     Category::kSpiritual};

bool Write(settings::Profile& profile, Key key, int value) {
    if (settings::WriteInt(profile, key, value))
        return true;
    const settings::SettingKey& k = settings::Setting(key);
    VELK_LOG(L"@@@ Error : can't write [%ls] %ls = %d to the user settings", k.section, k.name,
             value);
    return false;
}

}  // namespace

int StopOfLevel(int level) {
    if (level < 1 || level > kLevelStops)
        level = 2;
    return kLevelStops - level;
}

int LevelOfStop(int stop) {
    if (stop < 0 || stop >= kLevelStops)
        stop = kMediumStop;
    return kLevelStops - stop;
}

int ParseLevelText(const std::wstring& text) {
    const std::wstring value = settings::TrimBlanks(text);
    if (value == L"1")
        return 1;
    if (value == L"3")
        return 3;
    return 2;
}

bool IsDefaultMode(const std::wstring& text) {
    return settings::TrimBlanks(text) != L"0";
}

settings::Key CategoryKey(Category category) {
    return kCategoryKeys[static_cast<int>(category)];
}

DetectionValues LoadDetection(settings::Profile& profile) {
    DetectionValues values;
    values.default_mode = IsDefaultMode(settings::ReadText(profile, Key::GlobalLevel));
    values.protect_stop =
        StopOfLevel(ParseLevelText(settings::ReadText(profile, Key::ProtectLevel)));
    for (int i = 0; i < kCategoryCount; ++i)
        values.category_stops[i] = StopOfLevel(settings::ReadInt(profile, kCategoryKeys[i]));
    values.in_the_cloud = settings::ReadTrimmed(profile, Key::EnableInTheCloud) != L"0";
    return values;
}

bool SaveDetection(settings::Profile& profile, const DetectionValues& values) {
    bool ok = Write(profile, Key::GlobalLevel, values.default_mode ? 1 : 0);
    ok = Write(profile, Key::ProtectLevel, LevelOfStop(values.protect_stop)) && ok;
    for (Category category : kWriteOrder) {
        const int stop = values.category_stops[static_cast<int>(category)];
        ok = Write(profile, CategoryKey(category), LevelOfStop(stop)) && ok;
    }
    if (values.in_the_cloud.has_value())
        ok = Write(profile, Key::EnableInTheCloud, *values.in_the_cloud ? 1 : 0) && ok;
    return ok;
}

SerenelValues LoadSerenel(settings::Profile& profile) {
    SerenelValues values;
    values.enabled = settings::ReadInt(profile, Key::EnableQzufe) != 0;
    values.stop = StopOfLevel(ParseLevelText(settings::ReadText(profile, Key::SecurityLevel)));
    return values;
}

bool SaveSerenel(settings::Profile& profile, const SerenelValues& values) {
    bool ok = Write(profile, Key::EnableQzufe, values.enabled ? 1 : 0);
    return Write(profile, Key::SecurityLevel, LevelOfStop(values.stop)) && ok;
}

}  // namespace velk::settings_ui
