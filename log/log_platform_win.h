// The Windows adapter of the diagnostic log, exposed so tests can override
// one piece (the clock, say) and keep the real files and conversion.
#pragma once

#include "log/log_platform.h"

namespace velk::log {

class WinLogPlatform : public LogPlatform {
public:
    bool LocalNow(LocalTime& now) noexcept override;
    std::uint32_t CurrentThreadId() noexcept override;
    std::unique_ptr<LogFile> OpenAppend(const std::wstring& path) noexcept override;
    void DebugOutput(const wchar_t* line) noexcept override;
    void Format(wchar_t* buffer, std::size_t count, const wchar_t* format,
                std::va_list args) noexcept override;
    std::unique_ptr<LogLock> CreateLock() override;
};

}  // namespace velk::log
