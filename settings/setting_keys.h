// Every settings key the add-in reads or writes: its file, section, name,
// type and default. This table is the only place a default is stated; code
// reads a key through the helpers of settings_access.h, never with a literal
// default of its own. The names and sections are shared with the scanning
// process and the installer, and existing user files carry them, so they are
// fixed letter for letter.
//
// Platform-free: built in both trees.
#pragma once

#include <cstddef>

namespace velk::settings {

enum class SettingsFile {
    Install,  // module folder + "VELK_OE.ini": branding and presets, read only
    User,     // user folder + "VELK_OE.ini": every per-user setting, read and written
};

enum class ValueType {
    Text,     // any text, read through a 1024-character buffer
    Decimal,  // a number kept as text; the page that owns it parses it
    Flag,     // "1" or "0"; how other values read is up to the owner of the key
    Integer,  // read with the profile's integer read: non-numeric reads as the default
    YesNo,    // "yes" or "no" (the proxy switch)
};

enum class Key {
    // [General], user file
    PurgeDays,
    DeleteDeleted,
    AutoMoved,
    NotifyIcon,
    AutoApprove,
    ProtectLevel,
    GlobalLevel,
    EnableInTheCloud,
    SexualLevel,
    CommercialLevel,
    FinancialLevel,
    HealthLevel,
    RacialLevel,
    SpiritualLevel,
    OtherLevel,
    // Per-user copies of three toolbar keys; the toolbar itself reads the
    // installation ones below.
    UserShowReportButton,
    UserVELKLogoTooltip,
    UserVELKMenuBarName,
    VELKStartTimes,
    HiddenFunc,
    AgentLog,
    // [General], install file
    CorpName,
    AntiSpam,
    ASGroupTitle,
    AboutTitle,
    AboutBannerPath,
    AboutProductName,
    AboutCompanyName,
    ApproveSenderTitle,
    ApproveSenderNote,
    ApproveMailList,
    BlockSenderTitle,
    BlockSenderNote,
    SliderBitmap,
    WebSiteForLogo,  // empty: the localised IDS_FLENMARROW_NUVEXA_HOMEWEB
    ShowCRXButton,
    CRXLink,
    Debug,
    ShowReportButton,
    VELKLogoTooltip,
    VELKMenuBarName,
    VELKLogo,  // bitmap overrides: a file relative to the module folder
    VELKReportSpamIcon,
    VELKReportSpamIconDisabled,
    VELKReportFpIcon,
    VELKReportFpIconDisabled,
    // [Antispam], user file
    EnableTBar,
    EngineVer,
    PatchVer,
    VELKOEVer,
    // [Statistics], user file (the counters are written by the scanning process)
    RunningSince,
    ProcessedMsg,
    DetectedSpam,
    ReportedSpam,
    ReportedFP,
    EnableCRX,
    CRXWebServer,
    // [RuleFile-Update], user file
    EnableProxy,
    HTTPProxy,
    HTTPPort,
    ProxyUserName,
    ProxyPassword,  // in the password-encoding helper's form
    AUServer,
    EnableSchedule,
    Interval,
    UpdateUI,
    LastUpdateTime,
    UpToDate,
    // [ReportSpam], [ReportFP], [ReportPhish], user file
    ReportSpamAddress,
    ReportFPAddress,
    ReportPhishAddress,
    // [Qzufe], user file
    EnableQzufe,
    SecurityLevel,
    // [LinkFilter], user file: the link filter page (ours; the scanning
    // process reads it after message 1037)
    EnableLinkFilter,
    WarnMismatchedLinks,
    FlagNumericLinks,
    TrustedDomains,  // domains separated by ";", lower case, no "*."

    Count
};

struct SettingKey {
    Key key;
    SettingsFile file;
    const wchar_t* section;
    const wchar_t* name;
    ValueType type;
    const wchar_t* default_value;  // integers too are stated as text
};

constexpr std::size_t kKeyCount = static_cast<std::size_t>(Key::Count);

// The whole table, in the order of Key.
const SettingKey* AllSettingKeys() noexcept;

const SettingKey& Setting(Key key) noexcept;

// The default of an Integer key as a number (0 for text that is not one).
int DefaultInt(Key key) noexcept;

// One administrator preset: the user key it seeds, the default used when
// reading the installation file, and the marker that records in the user
// file (same section) that the preset was copied.
struct AdminPreset {
    Key key;
    const wchar_t* install_default;
    const wchar_t* marker;
};

constexpr std::size_t kAdminPresetCount = 14;
// In the order the presets are applied.
const AdminPreset* AdminPresets() noexcept;

// The updates dialog's registry value: HKEY_LOCAL_MACHINE, 64-bit view on a
// 64-bit system.
constexpr wchar_t kAppPathRegistryKey[] = L"SOFTWARE\\Nuvexa\\Tessaveli";
constexpr wchar_t kAppPathRegistryValue[] = L"Application Path";

}  // namespace velk::settings
