// Small Win32 helpers of the scanning-process stand-in: text conversion,
// an append-only line file, and the report every command writes to.
#pragma once

#include <windows.h>

#include "common_src/win32/handles.h"

#include <string>

namespace velk::tools::scanner {

std::wstring Widen(const std::string& utf8);
std::string Narrow(const wchar_t* text);

// Lines appended and flushed one by one, so a test may read the file while
// the stand-in still runs. Shared for reading and writing.
class LineFile {
public:
    LineFile() = default;
    bool Open(const std::string& path);
    bool is_open() const { return static_cast<bool>(file_); }
    void Write(const std::string& line);

private:
    velk::win32::unique_file file_;
};

// Report lines go to stdout and, when asked for, to a file.
class Report {
public:
    bool Open(const std::string& path) { return path.empty() || file_.Open(path); }
    void Line(const std::string& line);

private:
    LineFile file_;
};

}  // namespace velk::tools::scanner
