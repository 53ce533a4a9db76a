// The stored form of the proxy password ([RuleFile-Update] ProxyPassword of
// the user's settings file). The scanning process of the same user reads it
// to reach the update server, so this comment is the one description of the
// format:
//
//   ProxyPassword = ""                      no password
//                 | "DP1:" BASE64           anything else
//
//   BASE64  RFC 4648 base64 (standard alphabet, "=" padding, no line
//           breaks) of the blob that CryptProtectData returns for
//             pDataIn           the password as UTF-16LE code units, without
//                               a terminating zero
//             szDataDescr       NULL
//             pOptionalEntropy  NULL
//             dwFlags           CRYPTPROTECT_UI_FORBIDDEN
//           i.e. protected with the current user's key, so only a process
//           of that user (on that machine) gets it back with
//           CryptUnprotectData (same entropy and flags).
//   The whole value is ASCII and at most 1023 characters; the password edit
//   limits a password to 127 characters, which keeps it well inside.
//
// Another user of the machine who can read the settings file cannot read the
// password. A value that does not decode (another scheme, a damaged value, a
// blob of another user) reads as no password, with a log line.
#pragma once

#include <string>

namespace velk::settings_ui {

// The longest password the proxy dialog takes.
constexpr int kMaxProxyPasswordChars = 127;

// The stored form of `password` (empty for an empty password). False, with
// `stored` empty, when the system cannot protect it or the result would not
// fit the settings buffer.
bool EncodePassword(const std::wstring& password, std::wstring& stored);

// The password of a stored value; an empty value is an empty password.
// False, with `password` empty and the reason logged, when it does not
// decode.
bool DecodePassword(const std::wstring& stored, std::wstring& password);

}  // namespace velk::settings_ui
