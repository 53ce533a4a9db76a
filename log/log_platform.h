// What the diagnostic log needs from the system, behind one small interface so
// that tests can move the clock past midnight, make an open fail and capture
// the debugger output without waiting or touching the real machine.
//
// Platform-free; the Windows adapter lives in log_platform_win.cpp, the
// native (POSIX) one in log_platform_posix.cpp.
#pragma once

#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "log/log_line.h"

namespace velk::log {

// An open log file. Destroying it closes the file.
class LogFile {
public:
    virtual ~LogFile() = default;
    // Writes one finished line (its "\n", if any, still included) in the
    // system's ANSI code page and flushes, so the line survives a crash of
    // the mail client right after.
    virtual void WriteLine(const wchar_t* line, std::size_t length) noexcept = 0;
};

// The lock that serialises writers; a critical section on Windows.
class LogLock {
public:
    virtual ~LogLock() = default;
    virtual void Enter() noexcept = 0;
    virtual void Leave() noexcept = 0;
};

class LogPlatform {
public:
    virtual ~LogPlatform() = default;

    // The local date and time; false (and `now` untouched) when unknown.
    virtual bool LocalNow(LocalTime& now) noexcept = 0;
    virtual std::uint32_t CurrentThreadId() noexcept = 0;

    // Opens `path` for appending in text mode; null when it cannot be opened.
    // Never creates folders.
    virtual std::unique_ptr<LogFile> OpenAppend(const std::wstring& path) noexcept = 0;

    virtual void DebugOutput(const wchar_t* line) noexcept = 0;

    // printf-style formatting of at most `count` characters into `buffer`.
    // On Windows this is the CRT's wide printf, where "%s" takes a wide
    // string; callers shared with POSIX use "%ls".
    virtual void Format(wchar_t* buffer, std::size_t count, const wchar_t* format,
                        std::va_list args) noexcept = 0;

    virtual std::unique_ptr<LogLock> CreateLock() = 0;
};

// The adapter of the tree being built (Windows or POSIX); lives for the
// whole process.
LogPlatform& SystemLogPlatform() noexcept;

}  // namespace velk::log
