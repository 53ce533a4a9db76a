#include "settings/setting_keys.h"

#include <cwchar>

namespace velk::settings {
namespace {

constexpr SettingsFile U = SettingsFile::User;
constexpr SettingsFile I = SettingsFile::Install;
constexpr ValueType Text = ValueType::Text;
constexpr ValueType Decimal = ValueType::Decimal;
constexpr ValueType Flag = ValueType::Flag;
constexpr ValueType Int = ValueType::Integer;
constexpr ValueType YesNo = ValueType::YesNo;

constexpr wchar_t kGeneral[] = L"General";
constexpr wchar_t kAntispam[] = L"Antispam";
constexpr wchar_t kStatistics[] = L"Statistics";
constexpr wchar_t kRuleFileUpdate[] = L"RuleFile-Update";

constexpr SettingKey kKeys[] = {
    {Key::PurgeDays, U, kGeneral, L"PurgeDays", Decimal, L"20"},
    {Key::DeleteDeleted, U, kGeneral, L"DeleteDeleted", Flag, L"0"},
    {Key::AutoMoved, U, kGeneral, L"AutoMoved", Flag, L"0"},
    {Key::NotifyIcon, U, kGeneral, L"NotifyIcon", Flag, L"0"},
    {Key::AutoApprove, U, kGeneral, L"AutoApprove", Flag, L"1"},
    {Key::ProtectLevel, U, kGeneral, L"ProtectLevel", Decimal, L"2"},
    {Key::GlobalLevel, U, kGeneral, L"GlobalLevel", Decimal, L"1"},
    {Key::EnableInTheCloud, U, kGeneral, L"EnableInTheCloud", Flag, L"1"},
    {Key::SexualLevel, U, kGeneral, L"SexualLevel", Int, L"2"},
    {Key::CommercialLevel, U, kGeneral, L"CommercialLevel", Int, L"2"},
    {Key::FinancialLevel, U, kGeneral, L"FinancialLevel", Int, L"2"},
    {Key::HealthLevel, U, kGeneral, L"HealthLevel", Int, L"2"},
    {Key::RacialLevel, U, kGeneral, L"RacialLevel", Int, L"2"},
    {Key::SpiritualLevel, U, kGeneral, L"SpiritualLevel", Int, L"2"},
    {Key::OtherLevel, U, kGeneral, L"OtherLevel", Int, L"2"},
    {Key::UserShowReportButton, U, kGeneral, L"ShowReportButton", Flag, L"1"},
    {Key::UserVELKLogoTooltip, U, kGeneral, L"VELKLogoTooltip", Text, L""},
    {Key::UserVELKMenuBarName, U, kGeneral, L"VELKMenuBarName", Text, L""},
    {Key::VELKStartTimes, U, kGeneral, L"VELKStartTimes", Int, L"0"},
    {Key::HiddenFunc, U, kGeneral, L"HiddenFunc", Int, L"0"},
    {Key::AgentLog, U, kGeneral, L"AgentLog", Text, L"VELKAgent.log"},

    {Key::CorpName, I, kGeneral, L"CorpName", Text, L""},
    {Key::AntiSpam, I, kGeneral, L"Anti-Spam", Text, L""},
    {Key::ASGroupTitle, I, kGeneral, L"ASGroupTitle", Text, L""},
    {Key::AboutTitle, I, kGeneral, L"AboutTitle", Text, L""},
    {Key::AboutBannerPath, I, kGeneral, L"AboutBannerPath", Text, L""},
    {Key::AboutProductName, I, kGeneral, L"AboutProductName", Text, L""},
    {Key::AboutCompanyName, I, kGeneral, L"AboutCompanyName", Text, L""},
    {Key::ApproveSenderTitle, I, kGeneral, L"ApproveSenderTitle", Text, L""},
    {Key::ApproveSenderNote, I, kGeneral, L"ApproveSenderNote", Text, L""},
    {Key::ApproveMailList, I, kGeneral, L"ApproveMailList", Text, L""},
    {Key::BlockSenderTitle, I, kGeneral, L"BlockSenderTitle", Text, L""},
    {Key::BlockSenderNote, I, kGeneral, L"BlockSenderNote", Text, L""},
    {Key::SliderBitmap, I, kGeneral, L"SliderBitmap", Text, L""},
    {Key::WebSiteForLogo, I, kGeneral, L"WebSiteForLogo", Text, L""},
    {Key::ShowCRXButton, I, kGeneral, L"ShowCRXButton", Int, L"1"},
    {Key::CRXLink, I, kGeneral, L"CRXLink", Text, L""},
    {Key::Debug, I, kGeneral, L"Debug", Flag, L"0"},
    {Key::ShowReportButton, I, kGeneral, L"ShowReportButton", Flag, L"1"},
    {Key::VELKLogoTooltip, I, kGeneral, L"VELKLogoTooltip", Text, L""},
    {Key::VELKMenuBarName, I, kGeneral, L"VELKMenuBarName", Text, L""},
    {Key::VELKLogo, I, kGeneral, L"VELKLogo", Text, L""},
    {Key::VELKReportSpamIcon, I, kGeneral, L"VELKReportSpamIcon", Text, L""},
    {Key::VELKReportSpamIconDisabled, I, kGeneral, L"VELKReportSpamIcon_disable", Text, L""},
    {Key::VELKReportFpIcon, I, kGeneral, L"VELKReportFpIcon", Text, L""},
    {Key::VELKReportFpIconDisabled, I, kGeneral, L"VELKReportFpIcon_disable", Text, L""},

    {Key::EnableTBar, U, kAntispam, L"EnableTBar", Flag, L"1"},
    {Key::EngineVer, U, kAntispam, L"EngineVer", Text, L"0.0.0"},
    {Key::PatchVer, U, kAntispam, L"PatchVer", Text, L"00000000"},
    {Key::VELKOEVer, U, kAntispam, L"VELKOEVer", Text, L"0.00.0.0000"},

    {Key::RunningSince, U, kStatistics, L"RunningSince", Int, L"0"},
    {Key::ProcessedMsg, U, kStatistics, L"ProcessedMsg", Int, L"0"},
    {Key::DetectedSpam, U, kStatistics, L"DetectedSpam", Int, L"0"},
    {Key::ReportedSpam, U, kStatistics, L"ReportedSpam", Int, L"0"},
    {Key::ReportedFP, U, kStatistics, L"ReportedFP", Int, L"0"},
    {Key::EnableCRX, U, kStatistics, L"EnableCRX", Int, L"1"},
    {Key::CRXWebServer, U, kStatistics, L"CRXWebServer", Text,
     L"http://crx.nuvexa.com/crx/feedback"},

    {Key::EnableProxy, U, kRuleFileUpdate, L"EnableProxy", YesNo, L"no"},
    {Key::HTTPProxy, U, kRuleFileUpdate, L"HTTPProxy", Text, L""},
    {Key::HTTPPort, U, kRuleFileUpdate, L"HTTPPort", Int, L"80"},
    {Key::ProxyUserName, U, kRuleFileUpdate, L"ProxyUserName", Text, L""},
    {Key::ProxyPassword, U, kRuleFileUpdate, L"ProxyPassword", Text, L""},
    {Key::AUServer, U, kRuleFileUpdate, L"AUServer", Text, L""},
    {Key::EnableSchedule, U, kRuleFileUpdate, L"EnableSchedule", Int, L"1"},
    {Key::Interval, U, kRuleFileUpdate, L"Interval", Int, L"180"},
    {Key::UpdateUI, U, kRuleFileUpdate, L"UpdateUI", Int, L"0"},
    {Key::LastUpdateTime, U, kRuleFileUpdate, L"LastUpdateTime", Int, L"0"},
    {Key::UpToDate, U, kRuleFileUpdate, L"UpToDate", Int, L"0"},

    {Key::ReportSpamAddress, U, L"ReportSpam", L"Address", Text, L""},
    {Key::ReportFPAddress, U, L"ReportFP", L"Address", Text, L""},
    {Key::ReportPhishAddress, U, L"ReportPhish", L"Address", Text, L""},

    // No default is known for EnableQzufe; off is the safe reading.
    {Key::EnableQzufe, U, L"Qzufe", L"EnableQzufe", Int, L"0"},
    {Key::SecurityLevel, U, L"Qzufe", L"SecurityLevel", Decimal, L"2"},

    // The link filter is on, with both warnings, until the user says otherwise.
    {Key::EnableLinkFilter, U, L"LinkFilter", L"EnableLinkFilter", Flag, L"1"},
    {Key::WarnMismatchedLinks, U, L"LinkFilter", L"WarnMismatchedLinks", Flag, L"1"},
    {Key::FlagNumericLinks, U, L"LinkFilter", L"FlagNumericLinks", Flag, L"1"},
    {Key::TrustedDomains, U, L"LinkFilter", L"TrustedDomains", Text, L""},
};

constexpr bool InKeyOrder() {
    for (std::size_t i = 0; i < sizeof(kKeys) / sizeof(kKeys[0]); ++i) {
        if (static_cast<std::size_t>(kKeys[i].key) != i)
            return false;
    }
    return true;
}
static_assert(sizeof(kKeys) / sizeof(kKeys[0]) == kKeyCount, "one row per key");
static_assert(InKeyOrder(), "rows in the order of Key, so Setting() can index");

// Existing user files carry these marker names, irregular as they are
// (SettedAutomove for AutoMoved, SettedPLevel for ProtectLevel, ...).
constexpr AdminPreset kPresets[] = {
    {Key::AUServer, L"", L"SettedAUUrl"},
    {Key::EnableSchedule, L"", L"SettedEnableScheduleUpdate"},
    {Key::Interval, L"", L"SettedSecUpdateInterval"},
    {Key::UpdateUI, L"", L"SettedUpdateUI"},
    {Key::ProtectLevel, L"", L"SettedPLevel"},
    // Non-empty, so these two reach every user at the first start.
    {Key::EnableInTheCloud, L"1", L"SettedEnableInTheCloud"},
    {Key::AutoApprove, L"", L"SettedAutoApprove"},
    {Key::NotifyIcon, L"0", L"SettedNotifyIcon"},
    {Key::AutoMoved, L"", L"SettedAutomove"},
    {Key::PurgeDays, L"", L"SettedPurgeDays"},
    {Key::DeleteDeleted, L"", L"SettedDeleteDeleted"},
    {Key::ReportSpamAddress, L"", L"SettedReportAddr"},
    {Key::ReportFPAddress, L"", L"SettedReportAddr"},
    {Key::ReportPhishAddress, L"", L"SettedReportAddr"},
};
static_assert(sizeof(kPresets) / sizeof(kPresets[0]) == kAdminPresetCount, "14 presets");

}  // namespace

const SettingKey* AllSettingKeys() noexcept {
    return kKeys;
}

const SettingKey& Setting(Key key) noexcept {
    std::size_t index = static_cast<std::size_t>(key);
    return kKeys[index < kKeyCount ? index : 0];
}

int DefaultInt(Key key) noexcept {
    return static_cast<int>(std::wcstol(Setting(key).default_value, nullptr, 10));
}

const AdminPreset* AdminPresets() noexcept {
    return kPresets;
}

}  // namespace velk::settings
