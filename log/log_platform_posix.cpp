#include "log/log_platform_posix.h"

#include <pthread.h>
#include <time.h>

#include <cstdio>
#include <cwchar>
#include <functional>
#include <mutex>

namespace velk::log {
namespace {

class PosixLogFile final : public LogFile {
public:
    explicit PosixLogFile(std::FILE* stream) noexcept : stream_(stream) {}
    ~PosixLogFile() override { std::fclose(stream_); }

    // One byte per character, as the Windows log writes a single-byte code
    // page: Latin-1 passes, anything wider becomes '?'.
    void WriteLine(const wchar_t* line, std::size_t length) noexcept override {
        char bytes[kLineChars];
        if (length > sizeof(bytes))
            length = sizeof(bytes);
        for (std::size_t i = 0; i < length; ++i) {
            unsigned long c = static_cast<unsigned long>(line[i]);
            bytes[i] = c < 0x100 ? static_cast<char>(c) : '?';
        }
        std::fwrite(bytes, 1, length, stream_);
        std::fflush(stream_);
    }

private:
    std::FILE* stream_;
};

class PosixLogLock final : public LogLock {
public:
    void Enter() noexcept override { mutex_.lock(); }
    void Leave() noexcept override { mutex_.unlock(); }

private:
    std::mutex mutex_;
};

void AppendUtf8(std::string& out, unsigned long c) {
    if (c < 0x80) {
        out += static_cast<char>(c);
    } else if (c < 0x800) {
        out += static_cast<char>(0xC0 | (c >> 6));
        out += static_cast<char>(0x80 | (c & 0x3F));
    } else if (c < 0x10000) {
        out += static_cast<char>(0xE0 | (c >> 12));
        out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (c & 0x3F));
    } else {
        out += static_cast<char>(0xF0 | (c >> 18));
        out += static_cast<char>(0x80 | ((c >> 12) & 0x3F));
        out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (c & 0x3F));
    }
}

}  // namespace

std::string ToUtf8(const std::wstring& text) {
    std::string out;
    out.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        unsigned long c = static_cast<unsigned long>(text[i]);
        if (c >= 0xD800 && c <= 0xDBFF && i + 1 < text.size()) {
            unsigned long low = static_cast<unsigned long>(text[i + 1]);
            if (low >= 0xDC00 && low <= 0xDFFF) {
                c = 0x10000 + ((c - 0xD800) << 10) + (low - 0xDC00);
                ++i;
            }
        }
        if ((c >= 0xD800 && c <= 0xDFFF) || c > 0x10FFFF)
            c = 0xFFFD;
        AppendUtf8(out, c);
    }
    return out;
}

bool PosixLogPlatform::LocalNow(LocalTime& now) noexcept {
    std::time_t t = std::time(nullptr);
    struct tm local;
    if (t == static_cast<std::time_t>(-1) || localtime_r(&t, &local) == nullptr)
        return false;
    now.year = local.tm_year + 1900;
    now.month = local.tm_mon + 1;
    now.day = local.tm_mday;
    now.hour = local.tm_hour;
    now.minute = local.tm_min;
    now.second = local.tm_sec;
    return true;
}

std::uint32_t PosixLogPlatform::CurrentThreadId() noexcept {
    return static_cast<std::uint32_t>(std::hash<pthread_t>()(pthread_self()));
}

std::unique_ptr<LogFile> PosixLogPlatform::OpenAppend(const std::wstring& path) noexcept {
    try {
        std::FILE* stream = std::fopen(ToUtf8(path).c_str(), "a");
        if (stream == nullptr)
            return nullptr;
        try {
            return std::unique_ptr<LogFile>(new PosixLogFile(stream));
        } catch (...) {
            std::fclose(stream);
            return nullptr;
        }
    } catch (...) {
        return nullptr;
    }
}

void PosixLogPlatform::Format(wchar_t* buffer, std::size_t count, const wchar_t* format,
                              std::va_list args) noexcept {
    // vswprintf takes the size with the terminator; the caller's buffer has
    // room for one more.
    std::vswprintf(buffer, count + 1, format, args);
}

std::unique_ptr<LogLock> PosixLogPlatform::CreateLock() {
    return std::make_unique<PosixLogLock>();
}

LogPlatform& SystemLogPlatform() noexcept {
    static PosixLogPlatform platform;
    return platform;
}

}  // namespace velk::log
