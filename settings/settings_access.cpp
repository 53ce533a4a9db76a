#include "settings/settings_access.h"

#include <cwctype>

#include "log/diag_log.h"

namespace velk::settings {

std::wstring ReadText(Profile& profile, Key key) {
    const SettingKey& k = Setting(key);
    return profile.ReadString(k.file, k.section, k.name, k.default_value);
}

std::wstring ReadTrimmed(Profile& profile, Key key) {
    return TrimBlanks(ReadText(profile, key));
}

int ReadInt(Profile& profile, Key key) {
    const SettingKey& k = Setting(key);
    return profile.ReadInt(k.file, k.section, k.name, DefaultInt(key));
}

bool ReadYesNo(Profile& profile, Key key) {
    std::wstring value = ReadText(profile, key);
    if (value.size() != 3)
        return false;
    return std::towlower(value[0]) == L'y' && std::towlower(value[1]) == L'e' &&
           std::towlower(value[2]) == L's';
}

bool WriteText(Profile& profile, Key key, const std::wstring& value) {
    const SettingKey& k = Setting(key);
    return profile.WriteString(k.file, k.section, k.name, value.c_str());
}

bool WriteInt(Profile& profile, Key key, int value) {
    return WriteText(profile, key, std::to_wstring(value));
}

bool WriteFlag(Profile& profile, Key key, bool on) {
    return WriteText(profile, key, on ? L"1" : L"0");
}

bool WriteYesNo(Profile& profile, Key key, bool on) {
    return WriteText(profile, key, on ? L"yes" : L"no");
}

std::wstring TrimBlanks(const std::wstring& text) {
    const wchar_t* blanks = L" \t";
    std::size_t first = text.find_first_not_of(blanks);
    if (first == std::wstring::npos)
        return std::wstring();
    std::size_t last = text.find_last_not_of(blanks);
    return text.substr(first, last - first + 1);
}

int ApplyAdminPresets(Profile& profile) {
    int copied = 0;
    const AdminPreset* presets = AdminPresets();
    for (std::size_t i = 0; i < kAdminPresetCount; ++i) {
        const AdminPreset& preset = presets[i];
        const SettingKey& k = Setting(preset.key);
        std::wstring value =
            profile.ReadString(SettingsFile::Install, k.section, k.name, preset.install_default);
        if (value.empty())
            continue;
        if (profile.ReadInt(SettingsFile::User, k.section, preset.marker, 0) != 0)
            continue;
        profile.WriteString(SettingsFile::User, k.section, k.name, value.c_str());
        profile.WriteString(SettingsFile::User, k.section, preset.marker, L"1");
        VELK_LOG(L"@@@ preset [%ls] %ls = %ls copied to the user settings", k.section, k.name,
                 value.c_str());
        ++copied;
    }
    return copied;
}

}  // namespace velk::settings
