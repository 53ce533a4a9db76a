// The diagnostic log on Windows: local time, the thread id, _wfopen in text
// mode, the ANSI code page and the debugger output.
#include <windows.h>

#include <cstdio>
#include <cwchar>

#include "common_src/win32/handles.h"
#include "log/log_platform.h"
#include "log/log_platform_win.h"

namespace velk::log {
namespace {

class WinLogFile final : public LogFile {
public:
    explicit WinLogFile(std::FILE* stream) noexcept : stream_(stream) {}
    ~WinLogFile() override { std::fclose(stream_); }

    void WriteLine(const wchar_t* line, std::size_t length) noexcept override {
        // Lines are at most kMaxLineChars characters; a double-byte code page
        // needs at most two bytes for each.
        char ansi[2 * kLineChars];
        int converted = ::WideCharToMultiByte(CP_ACP, 0, line, static_cast<int>(length), ansi,
                                              static_cast<int>(sizeof(ansi)), nullptr, nullptr);
        if (converted <= 0)
            return;
        // As many bytes as the line has UTF-16 characters: the same text in a
        // single-byte code page. Never more than were converted, so a line
        // that shrank (a surrogate pair became one '?') writes no garbage.
        std::size_t bytes = length < static_cast<std::size_t>(converted)
                                ? length
                                : static_cast<std::size_t>(converted);
        std::fwrite(ansi, 1, bytes, stream_);
        std::fflush(stream_);
    }

private:
    std::FILE* stream_;
};

class WinLogLock final : public LogLock {
public:
    void Enter() noexcept override { ::EnterCriticalSection(cs_.native()); }
    void Leave() noexcept override { ::LeaveCriticalSection(cs_.native()); }

private:
    win32::critical_section cs_;
};

}  // namespace

bool WinLogPlatform::LocalNow(LocalTime& now) noexcept {
    SYSTEMTIME st;
    ::GetLocalTime(&st);
    now.year = st.wYear;
    now.month = st.wMonth;
    now.day = st.wDay;
    now.hour = st.wHour;
    now.minute = st.wMinute;
    now.second = st.wSecond;
    return true;
}

std::uint32_t WinLogPlatform::CurrentThreadId() noexcept {
    return ::GetCurrentThreadId();
}

std::unique_ptr<LogFile> WinLogPlatform::OpenAppend(const std::wstring& path) noexcept {
    std::FILE* stream = ::_wfopen(path.c_str(), L"a");
    if (stream == nullptr)
        return nullptr;
    // new may throw; the stream must not leak then.
    try {
        return std::unique_ptr<LogFile>(new WinLogFile(stream));
    } catch (...) {
        std::fclose(stream);
        return nullptr;
    }
}

void WinLogPlatform::DebugOutput(const wchar_t* line) noexcept {
    ::OutputDebugStringW(line);
}

void WinLogPlatform::Format(wchar_t* buffer, std::size_t count, const wchar_t* format,
                            std::va_list args) noexcept {
    // The CRT's own _vsnwprintf, not MinGW's C99 printf: "%s" is a wide
    // string in every format of the Windows-only code.
    ::_vsnwprintf(buffer, count, format, args);
}

std::unique_ptr<LogLock> WinLogPlatform::CreateLock() {
    return std::make_unique<WinLogLock>();
}

LogPlatform& SystemLogPlatform() noexcept {
    static WinLogPlatform platform;
    return platform;
}

}  // namespace velk::log
