// What the spam detection page and its dialogs keep in the user settings
// file, read and written without any window so the rules are tested
// natively: the mode, the default level, the seven category levels, the
// in-the-cloud switch and the Serenel level.
//
// Every level slider has three stops; a stored level is always 3 minus the
// stop (stop 0 is stored as 3, stop 2 as 1). The scanning process reads
// these keys after message 1036.
//
// Platform-free.
#pragma once

#include <array>
#include <optional>
#include <string>

#include "settings/settings_access.h"

namespace velk::settings_ui {

constexpr int kLevelStops = 3;
constexpr int kMediumStop = 1;  // level 2, the fallback of every level

// A stored level (1 to 3) as a slider stop; any other value is level 2.
int StopOfLevel(int level);
// The level stored for a slider stop; a stop out of range is the middle one.
int LevelOfStop(int stop);
// A level kept as text (ProtectLevel, SecurityLevel): blanks trimmed, "1"
// and "3" mean themselves, anything else (empty, "2", "5", "abc") means 2.
int ParseLevelText(const std::wstring& text);
// GlobalLevel: only "0" (blanks trimmed) means custom mode.
bool IsDefaultMode(const std::wstring& text);

// The categories of the custom mode, in the order the dialog shows them.
enum class Category { kSexual, kCommercial, kFinancial, kHealth, kRacial, kSpiritual, kOther };
constexpr int kCategoryCount = 7;
settings::Key CategoryKey(Category category);

struct DetectionValues {
    bool default_mode = true;
    int protect_stop = kMediumStop;
    std::array<int, kCategoryCount> category_stops{
        kMediumStop, kMediumStop, kMediumStop, kMediumStop, kMediumStop, kMediumStop, kMediumStop};
    // Empty when no panel shows the check box: the key is then left alone.
    std::optional<bool> in_the_cloud = true;
};

DetectionValues LoadDetection(settings::Profile& profile);

// Writes every detection key in the order the scanning process has always
// seen them: GlobalLevel, ProtectLevel, SexualLevel, CommercialLevel,
// FinancialLevel, HealthLevel, OtherLevel, RacialLevel, SpiritualLevel,
// then EnableInTheCloud (when known), each as "%d". A failed write is
// logged and the others are still written; false when any failed.
bool SaveDetection(settings::Profile& profile, const DetectionValues& values);

struct SerenelValues {
    bool enabled = false;
    int stop = kMediumStop;
};

SerenelValues LoadSerenel(settings::Profile& profile);
// EnableQzufe then SecurityLevel, "%d"; false when a write failed.
bool SaveSerenel(settings::Profile& profile, const SerenelValues& values);

}  // namespace velk::settings_ui
