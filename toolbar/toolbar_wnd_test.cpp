// The toolbar window in this process over the client stand-in's windows: its
// band's tear-down, and the band's menus and dialogs, which run outside the
// band and survive it.
#include <gtest/gtest.h>

#include <windows.h>
#include <commctrl.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "common_src/win32/ResourceHandle.h"
#include "common_src/win32/dialog.h"
#include "common_src/win32/ui_context.h"
#include "host/addin_globals.h"
#include "host/window_identifiers.h"
#include "resources/resource_ids.h"
#include "toolbar/settings_commands.h"
#include "toolbar/toolbar_wnd.h"
#include "tools/mail_client_stub/client_window.h"

namespace {

using velk::host::Globals;
using velk::toolbar::CToolBarWnd;

// One step at a time from a thread timer, so it runs inside whichever modal
// loop is pumping when it fires.
std::function<void()> g_step;
void CALLBACK RunStep(HWND, UINT, UINT_PTR id, DWORD) {
    ::KillTimer(nullptr, id);
    std::function<void()> step = std::move(g_step);
    g_step = nullptr;
    if (step)
        step();
}
void Soon(std::function<void()> step) {
    g_step = std::move(step);
    ::SetTimer(nullptr, 0, 50, &RunStep);
}

// Pumps this thread's messages until `done`, at most `ms`.
bool Pump(const std::function<bool()>& done, DWORD ms = 5000) {
    const DWORD start = ::GetTickCount();
    while (!done()) {
        if (::GetTickCount() - start > ms)
            return false;
        ::MsgWaitForMultipleObjects(0, nullptr, FALSE, 20, QS_ALLINPUT);
        MSG msg;
        while (::PeekMessageW(&msg, nullptr, 0, 0, PM_REMOVE)) {
            ::TranslateMessage(&msg);
            ::DispatchMessageW(&msg);
        }
    }
    return true;
}

HWND PopupMenuWindow() {
    return ::FindWindowW(L"#32768", nullptr);
}

// A settings window standing in for the real ones: a modal dialog from an
// in-memory template, owned as the band's openers own theirs.
class StandInDialog : public velk::win32::Dialog {
public:
    INT_PTR Show(HWND owner) {
        DLGTEMPLATE dt{};
        dt.style = WS_POPUP | WS_CAPTION | WS_SYSMENU;
        dt.cx = 120;
        dt.cy = 60;
        const WORD* head = reinterpret_cast<const WORD*>(&dt);
        std::vector<WORD> words(head, head + sizeof(dt) / sizeof(WORD));
        words.insert(words.end(), {0, 0, 0});
        return DoModalIndirect(reinterpret_cast<const DLGTEMPLATE*>(words.data()), owner);
    }

protected:
    bool ProcessMessage(UINT msg, WPARAM wp, LPARAM, LRESULT& result) override {
        if (msg == WM_COMMAND && LOWORD(wp) == IDOK) {
            Close(IDOK);
            return true;
        }
        if (msg == WM_INITDIALOG)
            result = TRUE;
        return msg == WM_INITDIALOG;
    }
};

std::function<void(const velk::win32::UiContext&)> g_opener;
void OpenStandIn(const velk::win32::UiContext& ui) {
    if (g_opener)
        g_opener(ui);
}

class ToolBarWindowTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(mui_.Load(std::wstring(VELK_TEST_DIST) + L"\\Resource\\en-US\\"));
        Globals().resources = reinterpret_cast<HINSTANCE>(mui_.Get());
        wchar_t temp[MAX_PATH];
        ::GetTempPathW(MAX_PATH, temp);
        Globals().where = velk::settings::SettingsLocations(temp, temp);
        Globals().where.install_ini = std::wstring(temp) + L"velk_toolbar_wnd_test.ini";
        ASSERT_TRUE(velk::tools::CClientWindow::RegisterClasses());
        client_.reset(new velk::tools::CClientWindow(velk::tools::CClientWindow::Host{}));
        ASSERT_TRUE(client_->Create(true));
        ::ShowWindow(client_->hwnd(), SW_SHOWNOACTIVATE);
        wnd_ = CToolBarWnd::CreateToolBarWindow();
        ASSERT_NE(nullptr, wnd_);
        toolbar_ = wnd_->hwnd();
        ASSERT_TRUE(Pump([&] { return band() != nullptr; })) << "no band";
        velk::toolbar::SetSettingsOpenerForTest(ID_MENU_STATISTICS, &OpenStandIn);
    }
    void TearDown() override {
        velk::toolbar::SetSettingsOpenerForTest(0, nullptr);
        g_opener = nullptr;
        if (CToolBarWnd::Instance() != nullptr)
            ::SendMessageW(toolbar_, WM_CLOSE, 0, 0);
        // The worker ends once this thread has destroyed its handshake window.
        Pump([] { return false; }, 300);
        EXPECT_EQ(nullptr, CToolBarWnd::Instance());
        client_.reset();
        Globals().resources = nullptr;
    }
    HWND band() const {
        CToolBarWnd* wnd = CToolBarWnd::Instance();
        return wnd != nullptr && wnd->band() != nullptr ? wnd->band()->hwnd() : nullptr;
    }
    void TearBandDown() { ::SendMessageW(toolbar_, velk::host::kMsgTearDownBand, 0, 0); }

    ResourceHandle mui_;
    std::unique_ptr<velk::tools::CClientWindow> client_;
    CToolBarWnd* wnd_ = nullptr;
    HWND toolbar_ = nullptr;
};

TEST_F(ToolBarWindowTest, TearDownDeletesOnlyItsOwnBandWhateverBecameOfTheRebar) {
    HWND rebar = wnd_->rebar();
    // A band of the client's after ours, then ours taken out by someone else:
    // the index once stored for ours now names the client's band.
    REBARBANDINFOW info{};
    info.cbSize = sizeof(info);
    info.fMask = RBBIM_ID;
    info.wID = 77;
    ::SendMessageW(rebar, RB_INSERTBANDW, static_cast<WPARAM>(-1), reinterpret_cast<LPARAM>(&info));
    ::SendMessageW(rebar, RB_DELETEBAND, ::SendMessageW(rebar, RB_IDTOINDEX, 3339, 0), 0);
    const LRESULT bands = ::SendMessageW(rebar, RB_GETBANDCOUNT, 0, 0);
    TearBandDown();
    EXPECT_EQ(bands, ::SendMessageW(rebar, RB_GETBANDCOUNT, 0, 0));
    EXPECT_NE(-1, ::SendMessageW(rebar, RB_IDTOINDEX, 77, 0));
}

TEST_F(ToolBarWindowTest, LogoMenuHandsItsChoiceToItsBandAndGoesWithTheBand) {
    // A choice reaches the band, which has its window opened, owned by the
    // client's window.
    HWND owner = nullptr;
    g_opener = [&](const velk::win32::UiContext& ui) { owner = ui.owner; };
    ::SendMessageW(band(), WM_COMMAND, ID_TB_MENU_BUTTON, 0);
    Soon([&] {
        ASSERT_NE(nullptr, PopupMenuWindow());
        // Filtering settings, statistics: the second entry.
        for (WPARAM key : {VK_DOWN, VK_DOWN, VK_RETURN})
            ::PostMessageW(client_->hwnd(), WM_KEYDOWN, key, 0);
    });
    ASSERT_TRUE(Pump([&] { return owner != nullptr; })) << "the choice never arrived";
    EXPECT_EQ(client_->hwnd(), owner);

    // Torn down while its menu is open: the menu closes, nothing of the band
    // is touched afterwards, and a new band has a menu of its own.
    bool menu_open = false;
    ::SendMessageW(band(), WM_COMMAND, ID_TB_MENU_BUTTON, 0);
    Soon([&] {
        menu_open = PopupMenuWindow() != nullptr;
        TearBandDown();
    });
    ASSERT_TRUE(Pump([&] { return menu_open && PopupMenuWindow() == nullptr; }));
    EXPECT_EQ(nullptr, band());
    wnd_->OnBuildUserInterface(0, 0);
    ASSERT_NE(nullptr, band());
    menu_open = false;
    ::SendMessageW(band(), WM_COMMAND, ID_TB_MENU_BUTTON, 0);
    Soon([&] {
        menu_open = PopupMenuWindow() != nullptr;
        ::PostMessageW(client_->hwnd(), WM_KEYDOWN, VK_ESCAPE, 0);
    });
    EXPECT_TRUE(Pump([&] { return menu_open && PopupMenuWindow() == nullptr; }));
}

TEST_F(ToolBarWindowTest, SettingsWindowStaysUsableThroughTheBandsEndAndTheLeaveWaitsForIt) {
    HWND dialog = nullptr;
    bool usable = false, toolbar_waited = false;
    g_opener = [&](const velk::win32::UiContext& ui) {
        StandInDialog stand_in;
        Soon([&] {
            dialog = ::GetActiveWindow();
            TearBandDown();
            // The client closes the add-in meanwhile: it waits for the dialog.
            ::PostMessageW(toolbar_, WM_CLOSE, 0, 0);
            Soon([&] {
                usable = ::IsWindow(dialog) && ::IsWindowEnabled(dialog);
                toolbar_waited = ::IsWindow(toolbar_) != FALSE;
                ::SendMessageW(dialog, WM_COMMAND, IDOK, 0);
            });
        });
        EXPECT_EQ(IDOK, stand_in.Show(ui.owner));
    };
    ::SendMessageW(band(), WM_COMMAND, ID_MENU_STATISTICS, 0);
    ASSERT_TRUE(Pump([&] { return CToolBarWnd::Instance() == nullptr; }));
    EXPECT_NE(nullptr, dialog);
    EXPECT_TRUE(usable);
    EXPECT_TRUE(toolbar_waited);
}

}  // namespace
