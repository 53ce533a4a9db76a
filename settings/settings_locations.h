// The parts of the settings locations that only the system knows: the
// add-in's own folder and the common application-data folder.
#pragma once

#include <windows.h>

#include <string>

#include "settings/settings_paths.h"

namespace velk::settings {

// The folder of `module` (the add-in itself at run time), ending in "\".
// Empty when the module path cannot be read.
std::wstring ModuleInstallDirectory(HMODULE module);

// Makes sure `dir` exists, creating it with every missing parent. Returns
// ERROR_SUCCESS or the reason it could not be created.
DWORD EnsureDirectory(const std::wstring& dir);

// The data folder: CSIDL_COMMON_APPDATA + "\Nuvexa\OE\", created when
// missing. Returns ERROR_SUCCESS and fills `data_dir`, or a failure code, in
// which case the add-in refuses to start.
DWORD PrepareDataDirectory(std::wstring& data_dir);

// Install and data folders for `module`, the data folder created when
// missing. Returns ERROR_SUCCESS or the failure of PrepareDataDirectory.
DWORD ResolveLocations(HMODULE module, SettingsLocations& where);

}  // namespace velk::settings
