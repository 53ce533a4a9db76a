#include "settings_ui/detection_settings.h"

#include <gtest/gtest.h>

#include "settings_ui/sheet_test_profile.h"

namespace velk::settings_ui {
namespace {

using test::RecordingProfile;

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

    RecordingProfile profile;  // nothing stored: default mode, medium everywhere, cloud on
    DetectionValues v = LoadDetection(profile);
    EXPECT_TRUE(v.default_mode);
    EXPECT_EQ(1, v.protect_stop);
    EXPECT_EQ(std::optional<bool>(true), v.in_the_cloud);

    profile.Set(L"General", L"SexualLevel", L"1");
    profile.Set(L"General", L"CommercialLevel", L"3");
    profile.Set(L"General", L"FinancialLevel", L"7");
    profile.Set(L"General", L"OtherLevel", L"abc");
    profile.Set(L"General", L"EnableInTheCloud", L"0");
    v = LoadDetection(profile);
    EXPECT_EQ(2, v.category_stops[static_cast<int>(Category::kSexual)]);
    EXPECT_EQ(0, v.category_stops[static_cast<int>(Category::kCommercial)]);
    EXPECT_EQ(1, v.category_stops[static_cast<int>(Category::kFinancial)]);
    EXPECT_EQ(1, v.category_stops[static_cast<int>(Category::kOther)]);
    EXPECT_EQ(std::optional<bool>(false), v.in_the_cloud);
}

TEST(DetectionSettings, SaveWritesEveryKeyInTheScanningProcesssOrder) {
    RecordingProfile profile;
    profile.Set(L"General", L"ProtectLevel", L"5");
    DetectionValues v = LoadDetection(profile);
    v.default_mode = false;
    v.category_stops = {0, 1, 2, 0, 1, 2, 0};  // shown order: ... Racial, Spiritual, Other
    v.in_the_cloud = false;
    ASSERT_TRUE(SaveDetection(profile, v));
    const std::vector<std::wstring> expected = {
        L"[General] GlobalLevel=0",    L"[General] ProtectLevel=2",
        L"[General] SexualLevel=3",    L"[General] CommercialLevel=2",
        L"[General] FinancialLevel=1", L"[General] HealthLevel=3",
        L"[General] OtherLevel=3",     L"[General] RacialLevel=2",
        L"[General] SpiritualLevel=1", L"[General] EnableInTheCloud=0",
    };
    EXPECT_EQ(expected, profile.writes);

    // No panel showed the check box: its key is left as it was.
    profile.writes.clear();
    v.in_the_cloud.reset();
    ASSERT_TRUE(SaveDetection(profile, v));
    EXPECT_EQ(9u, profile.writes.size());
    EXPECT_EQ(L"[General] SpiritualLevel=1", profile.writes.back());

    // One failing write is reported; the rest are still written.
    profile.writes.clear();
    profile.failing_name = L"ProtectLevel";
    EXPECT_FALSE(SaveDetection(profile, v));
    EXPECT_EQ(8u, profile.writes.size());
}

TEST(DetectionSettings, SerenelFollowsTheSameThreeStopScheme) {
    RecordingProfile profile;
    SerenelValues v = LoadSerenel(profile);
    EXPECT_FALSE(v.enabled);
    EXPECT_EQ(1, v.stop);
    profile.Set(L"Qzufe", L"EnableQzufe", L"1");
    profile.Set(L"Qzufe", L"SecurityLevel", L" 3");
    v = LoadSerenel(profile);
    EXPECT_TRUE(v.enabled);
    EXPECT_EQ(0, v.stop);
    v.stop = 2;
    ASSERT_TRUE(SaveSerenel(profile, v));
    EXPECT_EQ((std::vector<std::wstring>{L"[Qzufe] EnableQzufe=1", L"[Qzufe] SecurityLevel=1"}),
              profile.writes);
}

}  // namespace
}  // namespace velk::settings_ui
