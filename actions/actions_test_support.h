// The fixture of the message-action tests under Wine: the message-store
// stand-in over a fresh mailbox, the diagnostic log opened for the test, and
// a receiving window with its queue (not started).
#pragma once

#include <windows.h>

#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "actions/actions_test_window.h"
#include "common_src/QzCommon/QzComn_test_util.h"
#include "log/diag_log.h"
#include "tools/store_stub/store_stub_control.h"

namespace velk::actions::testing {

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

// Every store object handed out must be released by the end of each test.
class StoreTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(store.Load() && SUCCEEDED(store.Register()) &&
                    SUCCEEDED(store.SetMailboxRoot(folder.path() + L"mbox")))
            << "store stand-in not available";
        store.Reset();
        window.set_queue(&queue);
        velk::log::Open(folder.path() + L"actions.log");
    }
    void TearDown() override {
        store.ReleaseHold();
        queue.Stop();
        velk::log::Close();
        EXPECT_EQ(0, store.LiveObjects()) << store.DescribeLiveObjects();
    }
    // How often the log has `needle` so far.
    int Logged(const std::string& needle) const {
        const std::string text =
            folder.ReadFile(velk::log::CurrentPath().substr(folder.path().size()));
        int n = 0;
        for (auto at = text.find(needle); at != std::string::npos; at = text.find(needle, at + 1))
            ++n;
        return n;
    }
    // Journal lines since the last Reset that start with `prefix`.
    int Calls(const std::wstring& prefix) const {
        int n = 0;
        for (const auto& line : store.JournalLines())
            n += line.rfind(prefix, 0) == 0;
        return n;
    }

    QzCommon::testing_util::TempFolder folder;
    win32::com_apartment apartment;
    tools::StoreStub store;
    ReceiverWindow window;
    CMsgActionQueue queue{window.lock()};
};

}  // namespace velk::actions::testing
