// The scanning process's window: titled as the add-in expects, it records
// every private message and WM_COPYDATA it receives, one line each.
//
// With a settings file it also keeps the statistics counters as the real
// scanning process does: loaded from the file at start (RunningSince set to
// now when it has none), counted by the session and the user's reports,
// written back when the add-in asks for a flush (WM_USER+21), zeroed with a
// new RunningSince and written on a reset (WM_USER+26).
#pragma once

#include <windows.h>

#include "tools/scanner_stub/scanner_command.h"
#include "tools/scanner_stub/scanner_io.h"
#include "tools/scanner_stub/scanner_statistics.h"

#include <functional>

namespace velk::tools::scanner {

class Listener {
public:
    // `after_start` runs once from the message loop when the window exists
    // (a script to play); it may send messages and is re-entered by those
    // the add-in sends back.
    Listener(const Command& command, std::function<void(HWND)> after_start);
    ~Listener();
    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;

    // Creates the window and pumps until WM_CLOSE; returns the exit code.
    int Run();

    // A request the session has sent.
    void CountRequest(const Command& request) { counters_.CountRequest(request); }

private:
    static LRESULT CALLBACK WindowProc(HWND hwnd, UINT msg, WPARAM wparam, LPARAM lparam);
    LRESULT ProcessMessage(UINT msg, WPARAM wparam, LPARAM lparam);
    void OnPrivateMessage(bool sent, UINT msg, WPARAM wparam, LPARAM lparam);
    void LoadCounters();
    void WriteCounters();

    const Command& command_;
    std::function<void(HWND)> after_start_;
    LineFile log_;
    StatisticsCounters counters_;
    HWND hwnd_ = nullptr;
    // Set by the loop just before it dispatches a message posted to us, so
    // the window procedure can tell posted from sent.
    bool dispatching_posted_ = false;
};

}  // namespace velk::tools::scanner
