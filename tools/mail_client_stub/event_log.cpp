#include "tools/mail_client_stub/event_log.h"

#include <windows.h>

#include <cstdarg>
#include <cwchar>

namespace velk::tools {

EventLog::EventLog() noexcept {
    LARGE_INTEGER f{}, t{};
    ::QueryPerformanceFrequency(&f);
    ::QueryPerformanceCounter(&t);
    frequency_ = f.QuadPart > 0 ? f.QuadPart : 1;
    start_ = t.QuadPart;
}

EventLog::~EventLog() {
    if (file_ != nullptr)
        std::fclose(file_);
}

bool EventLog::Open(const std::wstring& path) {
    if (file_ != nullptr)
        std::fclose(file_);
    file_ = ::_wfopen(path.c_str(), L"ab");
    return file_ != nullptr;
}

double EventLog::Now() const {
    LARGE_INTEGER t{};
    ::QueryPerformanceCounter(&t);
    return static_cast<double>(t.QuadPart - start_) * 1000.0 / static_cast<double>(frequency_);
}

void EventLog::Write(const wchar_t* format, ...) {
    if (file_ == nullptr)
        return;
    wchar_t text[1024];
    std::va_list args;
    va_start(args, format);
    ::_vsnwprintf(text, 1023, format, args);
    va_end(args);
    text[1023] = L'\0';
    wchar_t line[1100];
    ::_snwprintf(line, 1099, L"%.1f %s\n", Now(), text);
    line[1099] = L'\0';
    char utf8[3300];
    int n = ::WideCharToMultiByte(CP_UTF8, 0, line, -1, utf8, sizeof(utf8), nullptr, nullptr);
    if (n > 1) {
        std::fwrite(utf8, 1, static_cast<size_t>(n - 1), file_);
        std::fflush(file_);
    }
}

}  // namespace velk::tools
