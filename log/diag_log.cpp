#include "log/diag_log.h"

#include <atomic>
#include <cstdarg>

#include "log/log_core.h"

namespace velk::log {
namespace {

// Constant-initialised, so code running before or after the log's own
// lifetime (static constructors and destructors) reads "closed" safely.
std::atomic<DiagLog*> g_log{nullptr};

// Created on first Open and never destroyed: other threads and late static
// destructors may still log while the module unloads.
DiagLog& ProcessLog() noexcept {
    static DiagLog* log = new DiagLog(SystemLogPlatform());
    g_log.store(log, std::memory_order_release);
    return *log;
}

}  // namespace

bool IsOpen() noexcept {
    DiagLog* log = g_log.load(std::memory_order_acquire);
    return log != nullptr && log->IsOpen();
}

void Open(const std::wstring& base_path) {
    ProcessLog().Open(base_path);
}

void Close() noexcept {
    if (DiagLog* log = g_log.load(std::memory_order_acquire))
        log->Close();
}

void SetSecondEcho(bool on) noexcept {
    ProcessLog().SetSecondEcho(on);
}

std::wstring CurrentPath() {
    DiagLog* log = g_log.load(std::memory_order_acquire);
    return log != nullptr ? log->CurrentPath() : std::wstring();
}

void Write(const wchar_t* format, ...) noexcept {
    DiagLog* log = g_log.load(std::memory_order_acquire);
    if (log == nullptr)
        return;
    std::va_list args;
    va_start(args, format);
    log->WriteV(format, args);
    va_end(args);
}

void AssertReport(const wchar_t* source, unsigned line, const wchar_t* function,
                  const wchar_t* message) noexcept {
    // "%ls" is a wide string under both the Windows CRT and POSIX printf.
    Write(L"@@@ Assertion failed : %ls(%u) %ls : %ls", source ? source : L"?", line,
          function ? function : L"?", message ? message : L"");
}

}  // namespace velk::log
