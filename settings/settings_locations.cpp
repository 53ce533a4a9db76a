#include "settings/settings_locations.h"

#include <io.h>
#include <shlobj.h>

#include <vector>

#include "log/diag_log.h"

namespace velk::settings {

std::wstring ModuleInstallDirectory(HMODULE module) {
    std::vector<wchar_t> path(MAX_PATH);
    for (;;) {
        DWORD length = ::GetModuleFileNameW(module, path.data(), static_cast<DWORD>(path.size()));
        if (length == 0) {
            VELK_LOG(L"@@@ Error : GetModuleFileNameW failed (%lu)", ::GetLastError());
            return std::wstring();
        }
        if (length < path.size())
            return InstallDirectoryOf(std::wstring(path.data(), length));
        if (path.size() >= 32768)
            return std::wstring();  // longer than any Windows path
        path.resize(path.size() * 2);
    }
}

DWORD EnsureDirectory(const std::wstring& dir) {
    if (::_waccess(dir.c_str(), 0) == 0)
        return ERROR_SUCCESS;
    int result = ::SHCreateDirectoryExW(nullptr, dir.c_str(), nullptr);
    if (result == ERROR_SUCCESS)
        return ERROR_SUCCESS;
    // Created by someone else between the check and the call: as good.
    if (result == ERROR_ALREADY_EXISTS || result == ERROR_FILE_EXISTS) {
        DWORD attributes = ::GetFileAttributesW(dir.c_str());
        if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY)) {
            return ERROR_SUCCESS;
        }
    }
    VELK_LOG(L"@@@ Error : cannot create the folder %s (%d)", dir.c_str(), result);
    return static_cast<DWORD>(result);
}

DWORD PrepareDataDirectory(std::wstring& data_dir) {
    wchar_t common[MAX_PATH] = L"";
    if (!::SHGetSpecialFolderPathW(nullptr, common, CSIDL_COMMON_APPDATA, FALSE)) {
        VELK_LOG(L"@@@ Error : the common application data folder is unknown");
        return ERROR_PATH_NOT_FOUND;
    }
    std::wstring dir = DataDirectoryOf(common);
    DWORD error = EnsureDirectory(dir);
    if (error == ERROR_SUCCESS)
        data_dir = dir;
    return error;
}

DWORD ResolveLocations(HMODULE module, SettingsLocations& where) {
    std::wstring data_dir;
    DWORD error = PrepareDataDirectory(data_dir);
    if (error != ERROR_SUCCESS)
        return error;
    where = SettingsLocations(ModuleInstallDirectory(module), data_dir);
    return ERROR_SUCCESS;
}

}  // namespace velk::settings
