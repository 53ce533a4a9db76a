// Opens the diagnostic log into a fresh file for one test and reads it back,
// so tests can check the exact lines other programs and people rely on.
#pragma once

#include <windows.h>

#include <fstream>
#include <sstream>
#include <string>

#include "log/diag_log.h"

namespace velk::testing {

class LogCapture {
public:
    LogCapture() {
        wchar_t dir[MAX_PATH];
        ::GetTempPathW(MAX_PATH, dir);
        static int serial = 0;
        velk::log::Open(std::wstring(dir) + L"velk_capture_" +
                        std::to_wstring(::GetCurrentProcessId()) + L"_" +
                        std::to_wstring(++serial) + L".log");
        path_ = velk::log::CurrentPath();
    }
    ~LogCapture() {
        velk::log::Close();
        ::DeleteFileW(path_.c_str());
    }
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    // The log writes ANSI text, one flushed line per call.
    std::string Text() const {
        std::ifstream in(path_.c_str(), std::ios::binary);
        std::ostringstream all;
        all << in.rdbuf();
        return all.str();
    }
    bool Contains(const std::string& fragment) const {
        return Text().find(fragment) != std::string::npos;
    }

private:
    std::wstring path_;
};

}  // namespace velk::testing
