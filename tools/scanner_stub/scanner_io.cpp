#include "tools/scanner_stub/scanner_io.h"

#include <cstdio>

namespace velk::tools::scanner {

std::wstring Widen(const std::string& utf8) {
    if (utf8.empty())
        return std::wstring();
    int n =
        ::MultiByteToWideChar(CP_UTF8, 0, utf8.data(), static_cast<int>(utf8.size()), nullptr, 0);
    std::wstring out(static_cast<size_t>(n), L'\0');
    ::MultiByteToWideChar(CP_UTF8, 0, utf8.data(), static_cast<int>(utf8.size()), &out[0], n);
    return out;
}

std::string Narrow(const wchar_t* text) {
    int n = ::WideCharToMultiByte(CP_UTF8, 0, text, -1, nullptr, 0, nullptr, nullptr);
    if (n <= 1)
        return std::string();
    std::string out(static_cast<size_t>(n), '\0');
    ::WideCharToMultiByte(CP_UTF8, 0, text, -1, &out[0], n, nullptr, nullptr);
    out.pop_back();  // the NUL
    return out;
}

bool LineFile::Open(const std::string& path) {
    file_.reset(::CreateFileW(Widen(path).c_str(), FILE_APPEND_DATA,
                              FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                              OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
    return is_open();
}

void LineFile::Write(const std::string& line) {
    if (!file_)
        return;
    std::string text = line + "\r\n";
    DWORD done = 0;
    ::WriteFile(file_.get(), text.data(), static_cast<DWORD>(text.size()), &done, nullptr);
}

void Report::Line(const std::string& line) {
    std::fputs(line.c_str(), stdout);
    std::fputc('\n', stdout);
    std::fflush(stdout);
    file_.Write(line);
}

}  // namespace velk::tools::scanner
