// The per-user start, run at every band build before any string is loaded:
// the user's folder and file from the client's identity, the log, the
// scanning process's version, the shared version file, the start counter and
// the administrator presets.
#pragma once

#include <string>

#include "settings/settings_paths.h"

namespace velk::host {

struct PerUserStartResult {
    std::wstring user_id;
    std::wstring companion_version;  // reduced, as written to VELKOEVer
    int start_count = 0;             // VELKStartTimes after this start
    int presets_copied = 0;
};

// `where` must have install_dir/install_ini/data_dir set; its user part is
// filled from `identity_id`. `x64` chooses the section of the shared version
// file.
PerUserStartResult RunPerUserStart(settings::SettingsLocations& where,
                                   const std::wstring& identity_id, bool x64);

}  // namespace velk::host
