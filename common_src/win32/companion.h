// The scanning process as the add-in's windows see it: its window, found by
// title, the private messages posted or sent to it, and the two marker
// windows that say a settings window is open. One place, so every window of
// the add-in talks to the scanning process the same way.
#pragma once

#include <windows.h>

namespace velk::win32::companion {

// The scanning process's top-level window ("{5B0E7C21-...}"), or null when
// it is not running.
HWND FindWindow() noexcept;

// Posts `msg` with both parameters 0; false when the scanning process is
// not running (nothing is shown: its absence is normal).
bool Post(UINT msg) noexcept;

// Sends `msg` with both parameters 0 and waits for it to be handled, for the
// messages whose effect the caller reads next (the counters flushed to the
// settings file). A scanning process that hangs must not hang the mail
// client with it: the wait ends after `timeout_ms` or at once when the
// system sees the process as hung, and that is logged. False when not sent.
bool Send(UINT msg, UINT timeout_ms = 5000) noexcept;

// The scanning process's own settings window is open ("{8D2C1E44-...}"):
// the band's commands and our settings windows' OK wait for it.
bool CompanionSettingsOpen() noexcept;

// Our filtering sheet is open: its hidden marker window ("{A27C5E90-...}")
// exists, in this process or any other.
bool FilteringSheetOpen() noexcept;

}  // namespace velk::win32::companion
