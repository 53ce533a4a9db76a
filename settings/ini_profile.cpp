#include "settings/ini_profile.h"

#include <windows.h>

#include "log/diag_log.h"

namespace velk::settings {
namespace {

bool StartsWithNumber(const std::wstring& text) {
    std::size_t i = text.find_first_not_of(L" \t");
    if (i == std::wstring::npos)
        return false;
    if (text[i] == L'-' || text[i] == L'+')
        ++i;
    return i < text.size() && text[i] >= L'0' && text[i] <= L'9';
}

}  // namespace

std::wstring IniProfile::ReadString(SettingsFile file, const wchar_t* section, const wchar_t* name,
                                    const wchar_t* fallback) {
    wchar_t buffer[kValueBufferChars];
    DWORD length =
        ::GetPrivateProfileStringW(section, name, fallback, buffer,
                                   static_cast<DWORD>(kValueBufferChars), PathOf(file).c_str());
    if (length >= kValueBufferChars)
        length = kValueBufferChars - 1;
    return std::wstring(buffer, length);
}

int IniProfile::ReadInt(SettingsFile file, const wchar_t* section, const wchar_t* name,
                        int fallback) {
    // GetPrivateProfileIntW gives 0, not the default, for a value that is
    // not a number ("abc"); a port of 0 or a level of 0 would then be taken
    // as the user's choice. Such a value reads as missing instead.
    std::wstring text = ReadString(file, section, name, L"");
    if (!StartsWithNumber(text)) {
        if (!text.empty()) {
            VELK_LOG(L"!!! [%s] %s = \"%s\" is not a number, %d used", section, name, text.c_str(),
                     fallback);
        }
        return fallback;
    }
    return static_cast<int>(::GetPrivateProfileIntW(section, name, fallback, PathOf(file).c_str()));
}

bool IniProfile::WriteString(SettingsFile file, const wchar_t* section, const wchar_t* name,
                             const wchar_t* value) {
    if (file == SettingsFile::Install) {
        VELK_LOG(L"!!! refused to write [%s] %s into the installation settings", section, name);
        return false;
    }
    if (::WritePrivateProfileStringW(section, name, value, user_ini_.c_str()))
        return true;
    VELK_LOG(L"@@@ Error : writing [%s] %s to %s failed (%lu)", section, name, user_ini_.c_str(),
             ::GetLastError());
    return false;
}

}  // namespace velk::settings
