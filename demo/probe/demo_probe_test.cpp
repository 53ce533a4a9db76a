// The probe inside a client of the test's own making: a top-level window,
// as the client stand-in has.
#include <gtest/gtest.h>
#include <windows.h>
#include <commctrl.h>

#include <string>

#include "actions/QzStoreInterfaces.h"
#include "common_src/QzCommon/QzComn_test_util.h"
#include "common_src/win32/handles.h"
#include "demo/probe/probe_protocol.h"
#include "tools/store_stub/store_stub_control.h"

namespace velk::demo {
namespace {

using SetOEBrowserWndFn = void(WINAPI*)(HWND);

class DemoProbe : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(store_.Load());
        ASSERT_EQ(S_OK, store_.Register());
        browser_.reset(::CreateWindowExW(0, WC_STATICW, L"Mail", WS_OVERLAPPEDWINDOW, 0, 0, 300,
                                         200, nullptr, nullptr, nullptr, nullptr));
        probe_.reset(::LoadLibraryW(VELK_DEMO_PROBE_DLL));
        ASSERT_TRUE(probe_);
        set_browser_ = reinterpret_cast<SetOEBrowserWndFn>(
            reinterpret_cast<void*>(::GetProcAddress(probe_.get(), "SetOEBrowserWnd")));
        ASSERT_NE(nullptr, set_browser_);
        ASSERT_NE(nullptr, ::GetProcAddress(probe_.get(), "DestroyToolBar"));
    }
    void TearDown() override {
        browser_.reset();
        ::SetEnvironmentVariableW(kProbeMailboxVariable, nullptr);
        ::SetEnvironmentVariableW(kProbeJournalVariable, nullptr);
        store_.UseMemoryStore();
    }

    HWND ProbeWindow() { return ::FindWindowW(kProbeWindowClass, nullptr); }

    tools::StoreStub store_;
    QzCommon::testing_util::TempFolder dir_;
    const std::wstring journal_ = dir_.path() + L"journal.txt";
    win32::unique_hwnd browser_;
    win32::unique_hmodule probe_;
    SetOEBrowserWndFn set_browser_ = nullptr;
};

TEST_F(DemoProbe, TheStoreUsesTheMailboxAndItsJournalReachesTheFile) {
    const std::wstring root = dir_.path() + L"store";
    ::SetEnvironmentVariableW(kProbeMailboxVariable, root.c_str());
    ::SetEnvironmentVariableW(kProbeJournalVariable, journal_.c_str());
    set_browser_(browser_.get());
    HWND probe = ProbeWindow();
    ASSERT_NE(nullptr, probe);
    EXPECT_EQ(browser_.get(), ::GetWindow(probe, GW_OWNER));

    // The store the add-in would create now works on the demo's mailbox.
    ASSERT_EQ(S_OK, store_.PutMessage(1, 1,
                                      "Message-ID: <p@x>\r\nFrom: A <a@example.org>\r\n"
                                      "Subject: =?UTF-8?Q?gr=C3=BC=C3=9Fe?=\r\n"
                                      "Date: Tue, 11 Jun 2024 09:14:02 +0200\r\n\r\nbody\r\n"));
    EXPECT_TRUE(dir_.Exists(L"store\\1\\1.eml"));
    {
        win32::com_apartment com;
        win32::com_ptr<IQzFolderMgr> manager;
        ASSERT_EQ(S_OK, ::CoCreateInstance(CLSID_QzStoreAccess, nullptr, CLSCTX_ALL,
                                           IID_IQzFolderMgr, manager.put_void()));
        win32::com_ptr<IQzFolder> folder;
        ASSERT_EQ(S_OK, manager->GetFolder(1, folder.put()));
    }
    ASSERT_EQ(1, ::SendMessageW(probe, kProbeSaveJournal, 0, 0));
    const std::string journal = dir_.ReadFile(L"journal.txt");
    EXPECT_NE(std::string::npos, journal.find("GetFolder(1) @- -> 0x00000000\n")) << journal;

    // The probe leaves with the client's window, saving the journal last.
    store_.Reset();
    browser_.reset();
    EXPECT_EQ(nullptr, ProbeWindow());
    EXPECT_EQ("", dir_.ReadFile(L"journal.txt"));
}

}  // namespace
}  // namespace velk::demo
