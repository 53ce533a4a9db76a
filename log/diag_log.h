// The diagnostic log: the one logging call every part of the add-in uses.
//
// The log is closed until the per-user start opens it (installation
// [General] "Debug" = "1"). While it is closed a call costs one load and one
// branch: nothing is formatted, nothing reaches the debugger.
//
// Format strings: Windows code may use "%s" for wide strings (the log formats
// with the CRT's wide printf, where "%s" is wide); code that is also built
// natively must use "%ls", which means a wide string on both platforms.
//
// This header includes no <windows.h>: platform-free code logs through it too.
#pragma once

#include <string>

namespace velk::log {

// True while the log is open and has a file: the test that keeps a closed
// log free of any formatting.
bool IsOpen() noexcept;

// Opens the log at `base_path` plus the date (".YYYYMMDD" before the last
// dot). A failed open leaves the log silent, without retrying, until the
// next Open; the log never creates its folder.
void Open(const std::wstring& base_path);

// Closes the file; later calls are silent until the next Open.
void Close() noexcept;

// The second debugger echo of every line (per-user [General] "HiddenFunc").
void SetSecondEcho(bool on) noexcept;

// The dated file most recently opened; empty before the first Open.
std::wstring CurrentPath();

// Appends one line: printf-style with a wide format; a "\n" is added.
void Write(const wchar_t* format, ...) noexcept;

// An assertion report: source name, line, function and message, written
// through the same log.
void AssertReport(const wchar_t* source, unsigned line, const wchar_t* function,
                  const wchar_t* message) noexcept;

}  // namespace velk::log

// The logging call. Arguments are not even evaluated while the log is closed.
#define VELK_LOG(...)                        \
    do {                                     \
        if (::velk::log::IsOpen())           \
            ::velk::log::Write(__VA_ARGS__); \
    } while (0)
