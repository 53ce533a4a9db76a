#include "settings/settings_paths.h"

namespace velk::settings {

std::wstring InstallDirectoryOf(const std::wstring& module_path) {
    std::size_t slash = module_path.rfind(L'\\');
    return slash == std::wstring::npos ? std::wstring() : module_path.substr(0, slash + 1);
}

std::wstring DataDirectoryOf(const std::wstring& common_app_data) {
    return common_app_data + L"\\" + L"Nuvexa\\" + L"OE\\";
}

std::wstring SharedVersionFileOf(const std::wstring& data_dir) {
    std::wstring folder = data_dir;
    const std::wstring oe = L"\\OE\\";
    if (folder.size() >= oe.size() &&
        folder.compare(folder.size() - oe.size(), oe.size(), oe) == 0) {
        folder.erase(folder.size() - 3);  // keep the backslash before "OE\"
    }
    return folder + L"VELK_common\\" + L"VELK_version.ini";
}

SettingsLocations::SettingsLocations(const std::wstring& install_directory,
                                     const std::wstring& data_directory)
    : install_dir(install_directory),
      install_ini(install_directory + kSettingsFileName),
      data_dir(data_directory) {}

void SettingsLocations::SetUser(const std::wstring& identity_id) {
    user_dir = data_dir + L"Users\\" + identity_id + L"\\";
    user_ini = user_dir + kSettingsFileName;
}

std::wstring SettingsLocations::LogFile(const std::wstring& agent_log) const {
    return user_dir + L"log\\" + agent_log;
}

}  // namespace velk::settings
