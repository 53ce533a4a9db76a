// A LogPlatform for tests: a settable clock and thread id, an in-memory file
// system whose opens can be made to fail, and a record of debugger output.
// Formatting is the real adapter's, so formats behave as in production.
#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

#include "log/log_platform.h"

namespace velk::log::testing {

class FakeLogPlatform : public LogPlatform {
public:
    LocalTime now{2009, 5, 3, 10, 11, 12};
    bool clock_works = true;
    std::uint32_t thread_id = 0x00010002;

    std::map<std::wstring, std::wstring> files;  // path -> everything written
    std::set<std::wstring> unopenable;           // opens of these paths fail
    std::vector<std::wstring> open_attempts;
    std::vector<std::wstring> debugger;
    int format_calls = 0;
    int lock_depth = 0;
    int max_lock_depth = 0;
    int locks_created = 0;
    // Set when a line reached a file or the debugger outside the lock.
    bool unlocked_output = false;

    bool LocalNow(LocalTime& out) noexcept override {
        if (clock_works)
            out = now;
        return clock_works;
    }
    std::uint32_t CurrentThreadId() noexcept override { return thread_id; }

    std::unique_ptr<LogFile> OpenAppend(const std::wstring& path) noexcept override {
        open_attempts.push_back(path);
        if (unopenable.count(path) != 0)
            return nullptr;
        files[path];  // an opened file exists, even if nothing is written
        return std::make_unique<File>(*this, path);
    }

    void DebugOutput(const wchar_t* line) noexcept override {
        if (lock_depth != 1)
            unlocked_output = true;
        debugger.push_back(line);
    }

    void Format(wchar_t* buffer, std::size_t count, const wchar_t* format,
                std::va_list args) noexcept override {
        ++format_calls;
        SystemLogPlatform().Format(buffer, count, format, args);
    }

    std::unique_ptr<LogLock> CreateLock() override {
        ++locks_created;
        return std::make_unique<Lock>(*this);
    }

private:
    class File : public LogFile {
    public:
        File(FakeLogPlatform& owner, std::wstring path) : owner_(owner), path_(std::move(path)) {}
        void WriteLine(const wchar_t* line, std::size_t length) noexcept override {
            if (owner_.lock_depth != 1)
                owner_.unlocked_output = true;
            owner_.files[path_].append(line, length);
        }

    private:
        FakeLogPlatform& owner_;
        std::wstring path_;
    };

    class Lock : public LogLock {
    public:
        explicit Lock(FakeLogPlatform& owner) : owner_(owner) {}
        void Enter() noexcept override {
            if (++owner_.lock_depth > owner_.max_lock_depth)
                owner_.max_lock_depth = owner_.lock_depth;
        }
        void Leave() noexcept override { --owner_.lock_depth; }

    private:
        FakeLogPlatform& owner_;
    };
};

}  // namespace velk::log::testing
