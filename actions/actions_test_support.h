// Shared pieces of the message-action tests under Wine: a capture of the
// diagnostic log and the message-store stand-in set up for one test.
#pragma once

#include <windows.h>

#include <gtest/gtest.h>

#include <fstream>
#include <functional>
#include <sstream>
#include <string>

#include "actions/actions_test_window.h"
#include "log/diag_log.h"
#include "tools/store_stub/store_stub_control.h"

namespace velk::actions::testing {

inline std::wstring TempPath(const std::wstring& name) {
    static int serial = 0;
    wchar_t dir[MAX_PATH];
    ::GetTempPathW(MAX_PATH, dir);
    return dir + name + L"_" + std::to_wstring(::GetTickCount()) + L"_" + std::to_wstring(++serial);
}

inline std::string Narrow(const std::wstring& w) {
    return std::string(w.begin(), w.end());
}

// The process log, opened into a fresh file for one test and read back.
class LogCapture {
public:
    LogCapture() { velk::log::Open(TempPath(L"velk_actions") + L".log"); }
    ~LogCapture() { velk::log::Close(); }
    int Count(const std::string& needle) const {
        std::ifstream in(velk::log::CurrentPath().c_str(), std::ios::binary);
        std::stringstream all;
        all << in.rdbuf();
        const std::string text = all.str();
        int n = 0;
        for (auto at = text.find(needle); at != std::string::npos; at = text.find(needle, at + 1))
            ++n;
        return n;
    }
    bool Has(const std::string& needle) const { return Count(needle) > 0; }
};

// The store stand-in, registered in this prefix, over a fresh mailbox.
class StoreFixture {
public:
    bool Setup() {
        return store_.Load() && SUCCEEDED(store_.Register()) &&
               SUCCEEDED(store_.SetMailboxRoot(TempPath(L"velk_actions_mbox"))) &&
               (store_.Reset(), true);
    }
    tools::StoreStub* operator->() { return &store_; }
    // Journal lines since the last Reset that start with `prefix`.
    int Calls(const std::wstring& prefix) const {
        int n = 0;
        for (const auto& line : store_.JournalLines())
            n += line.rfind(prefix, 0) == 0;
        return n;
    }

private:
    tools::StoreStub store_;
};

// Polls `done` for up to `ms` milliseconds, pumping this thread's messages.
inline bool WaitFor(const std::function<bool()>& done, DWORD ms = 10000) {
    for (const DWORD start = ::GetTickCount(); !done(); ::Sleep(5)) {
        if (::GetTickCount() - start > ms)
            return false;
        MSG msg;
        while (::PeekMessageW(&msg, nullptr, 0, 0, PM_REMOVE))
            ::DispatchMessageW(&msg);
    }
    return true;
}

inline std::string Eml(const std::string& extraHeaders = "") {
    return "From: sender@example.com\r\nSubject: hello\r\n" + extraHeaders + "\r\nbody text\r\n";
}

}  // namespace velk::actions::testing
