// The demo's child processes (the client, the scanning process): started
// with their standard streams on NUL, since a Wine child holding the
// driver's pipes would keep the run's caller waiting after the driver ends.
#pragma once

#include <windows.h>

#include <string>

#include "common_src/win32/handles.h"

namespace velk::demo {

// One argument quoted for CommandLineToArgvW (quotes and the backslashes
// before them escaped).
std::wstring QuoteArgument(const std::wstring& argument);

class ChildProcess {
public:
    ChildProcess() = default;
    // A child still running when its owner goes is ended: the demo never
    // leaves its processes behind.
    ~ChildProcess() { Kill(); }
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    // `command_line` holds the quoted program and its arguments.
    bool Start(const std::wstring& command_line, DWORD& error);
    bool Running() const;
    // True with the exit code once the child has ended within `ms`.
    bool Wait(DWORD ms, DWORD& exit_code);
    void Kill();
    HANDLE handle() const { return process_.get(); }
    DWORD id() const { return id_; }

private:
    win32::unique_handle process_;
    DWORD id_ = 0;
};

}  // namespace velk::demo
