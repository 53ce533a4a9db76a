#include "log/log_core.h"

namespace velk::log {
namespace {

class LockGuard {
public:
    explicit LockGuard(LogLock& lock) noexcept : lock_(lock) { lock_.Enter(); }
    ~LockGuard() { lock_.Leave(); }
    LockGuard(const LockGuard&) = delete;
    LockGuard& operator=(const LockGuard&) = delete;

private:
    LogLock& lock_;
};

}  // namespace

DiagLog::~DiagLog() = default;

void DiagLog::Open(const std::wstring& base_path) noexcept {
    try {
        if (!lock_)
            lock_ = platform_.CreateLock();
    } catch (...) {
        return;  // no lock, no log: writers never run unserialised
    }
    {
        LockGuard guard(*lock_);
        try {
            base_path_ = base_path;
        } catch (...) {
            base_path_.clear();
        }
        OpenDatedLocked();
    }
    // Published last, so a writer that sees the log open also sees the lock.
    closed_.store(false, std::memory_order_release);
}

void DiagLog::Close() noexcept {
    if (!lock_)
        return;
    LockGuard guard(*lock_);
    closed_.store(true, std::memory_order_release);
    has_file_.store(false, std::memory_order_release);
    file_.reset();
}

void DiagLog::OpenDatedLocked() noexcept {
    // The flag keeps its value while the file is replaced: writers on other
    // threads test it without the lock, and a line of theirs that comes
    // during the change must wait for the new file, not be dropped.
    file_.reset();
    LocalTime today;
    platform_.LocalNow(today);
    file_date_ = today;
    try {
        current_path_ = DatedPath(base_path_, today);
    } catch (...) {
        current_path_.clear();
        has_file_.store(false, std::memory_order_release);
        return;
    }
    file_ = platform_.OpenAppend(current_path_);
    has_file_.store(file_ != nullptr, std::memory_order_release);
}

std::wstring DiagLog::CurrentPath() const {
    if (!lock_)
        return std::wstring();
    LockGuard guard(*lock_);
    return current_path_;
}

void DiagLog::Write(const wchar_t* format, ...) noexcept {
    std::va_list args;
    va_start(args, format);
    WriteV(format, args);
    va_end(args);
}

void DiagLog::WriteV(const wchar_t* format, std::va_list args) noexcept {
    if (!IsOpen() || format == nullptr)
        return;
    wchar_t message[kMessageChars];
    message[0] = L'\0';
    platform_.Format(message, kFormatChars, format, args);
    FinishMessage(message);
    EmitLine(message);
}

void DiagLog::EmitLine(const wchar_t* message) noexcept {
    if (!closed_.load(std::memory_order_acquire) && lock_) {
        LockGuard guard(*lock_);
        if (!IsOpen())
            return;  // closed while this thread waited for the lock

        LocalTime now;
        platform_.LocalNow(now);
        wchar_t line[kLineChars];
        std::size_t length = BuildLine(line, platform_.CurrentThreadId(), now, message);

        platform_.DebugOutput(line);
        // The first line of a new day goes into the new day's file.
        if (IsOtherDay(file_date_, now))
            OpenDatedLocked();
        if (file_)
            file_->WriteLine(line, length);
        if (second_echo_.load(std::memory_order_relaxed))
            platform_.DebugOutput(line);
    }
}

}  // namespace velk::log
