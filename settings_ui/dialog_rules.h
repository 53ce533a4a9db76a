// The rules behind the advanced page and the updates and proxy dialogs that
// need no window: how stored values read, what the status line says, which
// proxy entries are accepted. The dialogs apply them to what the scanning
// process wrote and to what the user typed.
//
// Platform-free.
#pragma once

#include <string>

namespace velk::settings_ui {

// ---- Advanced page ----
constexpr unsigned kDefaultPurgeDays = 20;
constexpr unsigned kMaxPurgeDays = 365;
// The purge period as stored: digits only and 1 to 365, else 20.
unsigned PurgeDaysOf(const std::wstring& stored);

// ---- Updates ----
// Seven days: a pattern this old is out of date whatever UpToDate says.
constexpr long long kOutOfDateSeconds = 604800;

enum class UpdateStatus { NeverUpdated, UpToDate, OutOfDate };
UpdateStatus StatusOf(long long last_update, long long now, int up_to_date);

// The pattern version with a "." before its last three characters when it
// is longer than three ("1234" -> "1.234").
std::wstring PatternVersionText(const std::wstring& stored);

// True when the update-now request must not be sent for this engine
// installation version (a "17." installation updates itself).
bool IsRefusedEngineVersion(const std::wstring& version);

// hh.exe's arguments for the update topic of the help file in `help_dir`.
std::wstring HelpArguments(const std::wstring& help_dir);

// ---- Proxy ----
constexpr int kDefaultProxyPort = 80;
// A stored port outside 1 to 65535 reads as 80.
bool IsPortInRange(int port);
// 1 to 256 characters, none above code 128.
bool IsAcceptedProxyHost(const std::wstring& host);
// At most 255 characters, and the text's UTF-16LE bytes up to the first
// zero byte are all "0" to "9". For the usual text that checks only the
// first character ("8x" passes, "x8" fails, an empty text passes); the
// scanning process's own settings dialog accepts exactly the same texts.
bool PassesPortCheck(const std::wstring& port);

}  // namespace velk::settings_ui
