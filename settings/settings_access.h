// Typed reads and writes of the keys of setting_keys.h, over a Profile: the
// private profile files on Windows (ini_profile.h), an in-memory one in the
// native tests. Reading conventions: text through a 1024-character buffer
// (longer values are cut), integer keys through the profile's integer read
// (a non-numeric value reads as the default), switches written "1"/"0" and
// the proxy switch "yes"/"no".
//
// Platform-free.
#pragma once

#include <string>

#include "settings/setting_keys.h"

namespace velk::settings {

// Text values longer than this many characters minus one are cut.
constexpr std::size_t kValueBufferChars = 1024;

class Profile {
public:
    virtual ~Profile() = default;
    virtual std::wstring ReadString(SettingsFile file, const wchar_t* section, const wchar_t* name,
                                    const wchar_t* fallback) = 0;
    virtual int ReadInt(SettingsFile file, const wchar_t* section, const wchar_t* name,
                        int fallback) = 0;
    // False when the write failed; most callers may ignore it.
    virtual bool WriteString(SettingsFile file, const wchar_t* section, const wchar_t* name,
                             const wchar_t* value) = 0;
};

std::wstring ReadText(Profile& profile, Key key);
// The value without surrounding blanks (spaces and tabs).
std::wstring ReadTrimmed(Profile& profile, Key key);
int ReadInt(Profile& profile, Key key);
// The proxy switch: on when the value is "yes" in any case.
bool ReadYesNo(Profile& profile, Key key);

bool WriteText(Profile& profile, Key key, const std::wstring& value);
bool WriteInt(Profile& profile, Key key, int value);  // "%d"
bool WriteFlag(Profile& profile, Key key, bool on);   // "1" / "0"
bool WriteYesNo(Profile& profile, Key key, bool on);  // "yes" / "no"

std::wstring TrimBlanks(const std::wstring& text);

// Copies each administrator preset of the installation file into the user
// file once, guarded by its marker; a user's later change is never
// overwritten and a later change of the preset is not taken over. Runs at
// every band build. Returns how many presets were copied.
int ApplyAdminPresets(Profile& profile);

}  // namespace velk::settings
