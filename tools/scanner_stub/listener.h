// The scanning process's window: titled as the add-in expects, it records
// every private message and WM_COPYDATA it receives, one line each.
//
// Later this window plays the scanning process for the toolbar's tests
// (answering the messages it records); the recording stays the same, a
// reply table would hook in at OnPrivateMessage.
#pragma once

#include <windows.h>

#include "tools/scanner_stub/scanner_command.h"
#include "tools/scanner_stub/scanner_io.h"

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

private:
    static LRESULT CALLBACK WindowProc(HWND hwnd, UINT msg, WPARAM wparam, LPARAM lparam);
    LRESULT ProcessMessage(UINT msg, WPARAM wparam, LPARAM lparam);
    void OnPrivateMessage(bool sent, UINT msg, WPARAM wparam, LPARAM lparam);

    const Command& command_;
    std::function<void(HWND)> after_start_;
    LineFile log_;
    HWND hwnd_ = nullptr;
    // Set by the loop just before it dispatches a message posted to us, so
    // the window procedure can tell posted from sent.
    bool dispatching_posted_ = false;
};

}  // namespace velk::tools::scanner
