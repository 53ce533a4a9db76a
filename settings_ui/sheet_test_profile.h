// An in-memory settings profile for the native tests of the settings
// windows' rules: the profile API's reading conventions, every write
// recorded in order, and a key that can be made to fail.
#pragma once

#include <cwctype>
#include <map>
#include <string>
#include <tuple>
#include <vector>

#include "settings/settings_access.h"

namespace velk::settings_ui::test {

class RecordingProfile : public settings::Profile {
public:
    using Slot = std::tuple<settings::SettingsFile, std::wstring, std::wstring>;
    std::map<Slot, std::wstring> values;
    std::vector<std::wstring> writes;  // "[Section] Name=value", in order
    std::wstring failing_name;         // writes of this key name fail

    void Set(const wchar_t* section, const wchar_t* name, const wchar_t* value,
             settings::SettingsFile file = settings::SettingsFile::User) {
        values[Slot(file, section, name)] = value;
    }
    std::wstring ReadString(settings::SettingsFile file, const wchar_t* section,
                            const wchar_t* name, const wchar_t* fallback) override {
        auto it = values.find(Slot(file, section, name));
        return it == values.end() ? fallback : it->second;
    }
    int ReadInt(settings::SettingsFile file, const wchar_t* section, const wchar_t* name,
                int fallback) override {
        auto it = values.find(Slot(file, section, name));
        if (it == values.end() || it->second.empty() || !std::iswdigit(it->second[0]))
            return fallback;
        return std::stoi(it->second);
    }
    bool WriteString(settings::SettingsFile file, const wchar_t* section, const wchar_t* name,
                     const wchar_t* value) override {
        if (failing_name == name)
            return false;
        values[Slot(file, section, name)] = value;
        writes.push_back(std::wstring(L"[") + section + L"] " + name + L"=" + value);
        return true;
    }
};

}  // namespace velk::settings_ui::test
