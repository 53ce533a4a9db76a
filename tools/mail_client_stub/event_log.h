// The stand-in's record of what happened, for tests and the demo: one line
// per event, "<ms since start> <event>", flushed at once so another process
// may read it while the client runs.
#pragma once

#include <cstdio>
#include <string>

namespace velk::tools {

class EventLog {
public:
    EventLog() noexcept;
    ~EventLog();
    EventLog(const EventLog&) = delete;
    EventLog& operator=(const EventLog&) = delete;

    // Appends to `path` (UTF-8). Without a file, events are dropped.
    bool Open(const std::wstring& path);
    void Write(const wchar_t* format, ...);

    // Milliseconds since this object was made (the start of the process).
    double Now() const;

private:
    std::FILE* file_ = nullptr;
    long long start_ = 0;
    long long frequency_ = 1;
};

}  // namespace velk::tools
