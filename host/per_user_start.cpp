#include "host/per_user_start.h"

#include <windows.h>

#include "host/file_version.h"
#include "host/version_text.h"
#include "log/diag_log.h"
#include "settings/ini_profile.h"
#include "settings/settings_access.h"
#include "settings/settings_locations.h"

namespace velk::host {

using settings::Key;

namespace {

// Read by the product's other programs to learn what is installed; the
// section, names and values are theirs.
void WriteSharedVersionFile(const std::wstring& data_dir, const std::wstring& version, bool x64) {
    const std::wstring file = settings::SharedVersionFileOf(data_dir);
    const std::wstring folder = file.substr(0, file.rfind(L'\\') + 1);
    if (settings::EnsureDirectory(folder) != ERROR_SUCCESS)
        VELK_LOG(L"@@@ Error : can't create %s", folder.c_str());
    const wchar_t* section = x64 ? L"VELK_OE64" : L"VELK_OE";
    ::WritePrivateProfileStringW(section, L"pname", L"velk", file.c_str());
    ::WritePrivateProfileStringW(section, L"class", L"1", file.c_str());
    ::WritePrivateProfileStringW(section, L"type", x64 ? L"145" : L"119", file.c_str());
    ::WritePrivateProfileStringW(section, L"DeployVersion", version.c_str(), file.c_str());
}

}  // namespace

PerUserStartResult RunPerUserStart(settings::SettingsLocations& where,
                                   const std::wstring& identity_id, bool x64) {
    PerUserStartResult result;
    result.user_id = identity_id;
    where.SetUser(identity_id);
    // The private profile functions do not create folders; without this a
    // first start would lose every per-user write.
    if (settings::EnsureDirectory(where.user_dir) != ERROR_SUCCESS)
        VELK_LOG(L"@@@ Error : can't create the user folder %s", where.user_dir.c_str());

    settings::IniProfile profile(where);
    if (settings::ReadTrimmed(profile, Key::Debug) == L"1") {
        // The log folder is the administrator's to create: no folder, no log.
        const std::wstring log_file = where.LogFile(settings::ReadText(profile, Key::AgentLog));
        log::Open(log_file);
        log::SetSecondEcho(settings::ReadInt(profile, Key::HiddenFunc) != 0);
    }

    result.companion_version =
        ReduceFileVersion(ReadFileVersionText(where.install_dir + L"VELK_OE.exe"));
    VELK_LOG(L"VLEK_OE version: %s", result.companion_version.c_str());
    settings::WriteText(profile, Key::VELKOEVer, result.companion_version);
    WriteSharedVersionFile(where.data_dir, result.companion_version, x64);

    result.start_count = settings::ReadInt(profile, Key::VELKStartTimes) + 1;
    settings::WriteInt(profile, Key::VELKStartTimes, result.start_count);

    result.presets_copied = settings::ApplyAdminPresets(profile);
    return result;
}

}  // namespace velk::host
