// The add-in's hidden top-most window: finds the client's main window, puts
// the band into its rebar and takes it out again, holds the button records
// and their bitmaps, receives the scanning process's private messages and
// WM_COPYDATA requests (handed to the actions component it holds), and runs
// the band's menus and dialogs, which outlive the band.
//
// Its life: created at the library's load, doing nothing heavy there (the
// loader lock is held); the worker and the first band build follow from its
// own posted message once the load has returned. WM_CLOSE is the add-in's
// leaving, whoever asks (the client's window going, the scanning process,
// the unload): the band and the hook go, the worker finishes the request it
// is on and stops, and the window goes. A leave asked while a menu or dialog
// of ours runs waits until it has returned.
//
// Created once on the client's user-interface thread; deletes itself when
// its window is gone.
#pragma once

#include <windows.h>
#include <commctrl.h>

#include <memory>
#include <vector>

#include "actions/msg_action_queue.h"
#include "common_src/win32/handles.h"
#include "common_src/win32/window.h"
#include "toolbar/toolbar_band.h"
#include "toolbar/toolbar_button_record.h"

namespace velk::toolbar {

// Ids of the band in the client's rebar; other add-ins and the client see it.
constexpr UINT kBandId = 3339;
constexpr int kRecordCount = 8;
// The timer retry carries these so it can be told from a first attempt.
constexpr WPARAM kRetryWParam = 11111;
constexpr LPARAM kRetryLParam = 22222;
constexpr UINT_PTR kBuildTimerId = 1;
constexpr UINT kBuildRetryMs = 1000;
// Private messages of this window to itself.
constexpr UINT kMsgStart = WM_APP + 1;     // start the worker, first build
constexpr UINT kMsgRunModal = WM_APP + 2;  // run the band's pending menu or dialog
constexpr UINT kMsgBandLost = WM_APP + 3;  // the band's window went from under us

class CToolBarWnd : public win32::Window, private IModalHost {
public:
    // Registers the classes and creates the window, which starts the worker
    // and makes the first build attempt from its own message once the caller
    // (DllMain) has returned. Null when the window could not be created; the
    // object deletes itself when its window is destroyed.
    static CToolBarWnd* CreateToolBarWindow();
    // The one toolbar window of this add-in, or null.
    static CToolBarWnd* Instance() noexcept;

    // Idempotent: returns at once while the band is built.
    void OnBuildUserInterface(WPARAM wp, LPARAM lp);
    // The band out of the rebar and everything it owns released; harmless
    // when nothing is built.
    LRESULT OnDestroyBand();
    void SetHostWindow(HWND host) noexcept { m_hHostWnd = host; }

    bool built() const noexcept { return m_bBuilt != 0; }
    HWND rebar() const noexcept { return m_hRebar; }
    CToolBarBand* band() const noexcept { return m_band.get(); }
    actions::CMsgActionQueue& actions() noexcept { return *m_actions; }

    static bool RegisterToolBarClass();
    static void UnregisterToolBarClass() noexcept;

protected:
    bool ProcessMessage(UINT msg, WPARAM wp, LPARAM lp, LRESULT& result) override;
    void OnFinalMessage(HWND hwnd) override;

public:
    ~CToolBarWnd() override;

private:
    CToolBarWnd();

    void FillRecords(bool show_report_buttons);
    bool InsertBand();
    void OnStart();
    // False while a menu or dialog of ours runs: the leave is then done
    // once it has returned.
    bool Leave();
    void RequestModal(ModalKind kind, WORD command) override;
    void RunModal();
    UINT TrackMenu(HMENU menu, HWND under);
    void RunSettingsWindow(WORD command);
    bool BandAlive(unsigned generation) const noexcept;
    void ReleaseBitmaps();

    win32::critical_section m_cs;  // held across each WM_COPYDATA receipt
    std::unique_ptr<actions::CMsgActionQueue> m_actions;
    HWND m_hHostWnd = nullptr;
    BOOL m_bBuilt = FALSE;
    HWND m_hRebar = nullptr;
    BOOL m_bRebarAttached = FALSE;
    REBARBANDINFOW m_rbbi{};
    int m_nBandIndex = -1;
    ToolBarButtonRecord m_records[kRecordCount];
    win32::unique_hbitmap m_bitmaps[kRecordCount];
    win32::unique_hbitmap m_bitmapsDisabled[kRecordCount];
    win32::unique_hbitmap m_background;  // the menu button's arrow, loaded once
    std::unique_ptr<CToolBarBand> m_band;
    bool m_wmail = false;

    // Grows each time a band goes: a menu or dialog started for a band hands
    // its result back only when the count is still the same.
    unsigned m_bandGeneration = 0;
    int m_modalDepth = 0;
    bool m_menuRunning = false;
    bool m_leavePending = false;
    ModalKind m_pendingKind = ModalKind::kLogoMenu;
    WORD m_pendingCommand = 0;
    bool m_modalPending = false;
    // Bitmaps of a band torn down while a menu that shows them ran.
    std::vector<win32::unique_hbitmap> m_retiredBitmaps;
};

}  // namespace velk::toolbar
