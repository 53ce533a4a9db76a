// The diagnostic log's state machine over a LogPlatform: opening the dated
// file, building and cutting lines, the debugger echoes and the new file at
// midnight. The process-wide log (diag_log.h) is one instance of it; tests
// make their own over a fake platform.
#pragma once

#include <atomic>
#include <cstdarg>
#include <memory>
#include <string>

#include "log/log_line.h"
#include "log/log_platform.h"

namespace velk::log {

class DiagLog {
public:
    explicit DiagLog(LogPlatform& platform) noexcept : platform_(platform) {}
    ~DiagLog();
    DiagLog(const DiagLog&) = delete;
    DiagLog& operator=(const DiagLog&) = delete;

    // Read without the lock, like the writers do before taking it.
    bool IsOpen() const noexcept {
        return !closed_.load(std::memory_order_relaxed) &&
               has_file_.load(std::memory_order_relaxed);
    }

    // Stores `base_path`, opens base path + date for appending and clears the
    // closed flag even when the open fails: a log that cannot be opened stays
    // silent, and is not retried, until the next Open.
    void Open(const std::wstring& base_path) noexcept;
    void Close() noexcept;
    void SetSecondEcho(bool on) noexcept { second_echo_.store(on, std::memory_order_relaxed); }

    void Write(const wchar_t* format, ...) noexcept;
    void WriteV(const wchar_t* format, std::va_list args) noexcept;

    // The dated path of the file most recently opened (for the host's own
    // "log opened" note and for tests).
    std::wstring CurrentPath() const;

private:
    // Replaces the open file by base path + today's date. Under the lock.
    void OpenDatedLocked() noexcept;
    void EmitLine(const wchar_t* message) noexcept;

    LogPlatform& platform_;
    std::unique_ptr<LogLock> lock_;  // created by the first Open, kept until destruction
    std::wstring base_path_;
    std::wstring current_path_;
    std::unique_ptr<LogFile> file_;
    LocalTime file_date_;
    std::atomic<bool> closed_{true};
    std::atomic<bool> has_file_{false};
    std::atomic<bool> second_echo_{false};
};

}  // namespace velk::log
