// The settings files through the system's private profile functions.
#pragma once

#include <string>

#include "settings/settings_access.h"
#include "settings/settings_paths.h"

namespace velk::settings {

class IniProfile : public Profile {
public:
    IniProfile(std::wstring install_ini, std::wstring user_ini)
        : install_ini_(std::move(install_ini)), user_ini_(std::move(user_ini)) {}
    explicit IniProfile(const SettingsLocations& where)
        : IniProfile(where.install_ini, where.user_ini) {}

    // GetPrivateProfileStringW with a kValueBufferChars buffer.
    std::wstring ReadString(SettingsFile file, const wchar_t* section, const wchar_t* name,
                            const wchar_t* fallback) override;
    // GetPrivateProfileIntW ("45min" reads 45), except that a value that
    // does not start with a number reads as `fallback`, like a missing one.
    int ReadInt(SettingsFile file, const wchar_t* section, const wchar_t* name,
                int fallback) override;
    // WritePrivateProfileStringW; the installation file is never written.
    bool WriteString(SettingsFile file, const wchar_t* section, const wchar_t* name,
                     const wchar_t* value) override;

    const std::wstring& PathOf(SettingsFile file) const {
        return file == SettingsFile::Install ? install_ini_ : user_ini_;
    }

private:
    std::wstring install_ini_;
    std::wstring user_ini_;
};

}  // namespace velk::settings
