// The native adapter of the diagnostic log, so platform-free code logs in
// native tests too. Exposed for tests that override one piece.
#pragma once

#include "log/log_platform.h"

namespace velk::log {

class PosixLogPlatform : public LogPlatform {
public:
    bool LocalNow(LocalTime& now) noexcept override;
    std::uint32_t CurrentThreadId() noexcept override;
    // The path is written to the file system in UTF-8.
    std::unique_ptr<LogFile> OpenAppend(const std::wstring& path) noexcept override;
    // There is no debugger channel natively; lines go nowhere.
    void DebugOutput(const wchar_t* line) noexcept override {}
    void Format(wchar_t* buffer, std::size_t count, const wchar_t* format,
                std::va_list args) noexcept override;
    std::unique_ptr<LogLock> CreateLock() override;
};

// UTF-16/UTF-32 wide text to UTF-8 (unpaired surrogates become U+FFFD).
std::string ToUtf8(const std::wstring& text);

}  // namespace velk::log
