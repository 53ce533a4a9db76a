// Where the settings live. Windows paths, composed here without Win32 so the
// rules are tested natively; settings_locations.h fills in what the system
// knows (the module path, the common application-data folder).
//
// Platform-free.
#pragma once

#include <string>

namespace velk::settings {

// Both settings files are named this, in the module folder and in each
// user folder.
constexpr wchar_t kSettingsFileName[] = L"VELK_OE.ini";

// The module path cut after its last backslash (empty without one).
std::wstring InstallDirectoryOf(const std::wstring& module_path);

// common_app_data + "\" + "Nuvexa\" + "OE\".
std::wstring DataDirectoryOf(const std::wstring& common_app_data);

// The shared version file: the data folder without its trailing "OE\" (when
// it ends in "\OE\") + "VELK_common\VELK_version.ini".
std::wstring SharedVersionFileOf(const std::wstring& data_dir);

struct SettingsLocations {
    std::wstring install_dir;  // ends in "\"
    std::wstring install_ini;  // read only
    std::wstring data_dir;     // ends in "\"
    std::wstring user_dir;     // data_dir + "Users\" + identity id + "\"
    std::wstring user_ini;

    SettingsLocations() = default;
    SettingsLocations(const std::wstring& install_directory, const std::wstring& data_directory);

    // The identity id comes from the mail client (empty when it has none,
    // which gives "Users\\").
    void SetUser(const std::wstring& identity_id);

    // user_dir + "log\" + the AgentLog name.
    std::wstring LogFile(const std::wstring& agent_log) const;
};

}  // namespace velk::settings
