// Shared pieces of the message-action tests under Wine: a capture of the
// diagnostic log, the message-store stand-in over a fresh mailbox, and a
// fixture with a receiving window and its queue.
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

// The process log, opened into a fresh file for one test and read back.
struct LogCapture {
    LogCapture() { velk::log::Open(TempPath(L"velk_actions") + L".log"); }
    ~LogCapture() { velk::log::Close(); }
    int Count(const std::string& needle) const {
        std::stringstream all;
        all << std::ifstream(velk::log::CurrentPath().c_str(), std::ios::binary).rdbuf();
        const std::string text = all.str();
        int n = 0;
        for (auto at = text.find(needle); at != std::string::npos; at = text.find(needle, at + 1))
            ++n;
        return n;
    }
    bool Has(const std::string& needle) const { return Count(needle) > 0; }
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

// The store stand-in registered in this prefix over a fresh mailbox, the
// log, and a receiving window whose queue is not started. Every store
// object handed out must be released by the end of each test.
class StoreTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(store.Load() && SUCCEEDED(store.Register()) &&
                    SUCCEEDED(store.SetMailboxRoot(TempPath(L"velk_actions_mbox"))))
            << "store stand-in not available";
        store.Reset();
        window.set_queue(&queue);
    }
    void TearDown() override {
        store.ReleaseHold();
        queue.Stop();
        store.ClearFaults();
        EXPECT_EQ(0, store.LiveObjects()) << store.DescribeLiveObjects();
    }
    // Journal lines since the last Reset that start with `prefix`.
    int Calls(const std::wstring& prefix) const {
        int n = 0;
        for (const auto& line : store.JournalLines())
            n += line.rfind(prefix, 0) == 0;
        return n;
    }

    win32::com_apartment apartment;
    LogCapture log;
    tools::StoreStub store;
    ReceiverWindow window;
    CMsgActionQueue queue{window.lock()};
};

}  // namespace velk::actions::testing
