// The add-in's hidden top-most window: finds the client's main window, puts
// the band into its rebar and takes it out again, holds the button records
// and their bitmaps, and receives the scanning process's private messages and
// WM_COPYDATA requests (handed to the actions component it holds).
//
// Created once at start-up on the client's user-interface thread; deletes
// itself when its window is gone.
#pragma once

#include <windows.h>
#include <commctrl.h>

#include <memory>

#include "actions/msg_action_queue.h"
#include "common_src/win32/handles.h"
#include "common_src/win32/window.h"
#include "toolbar/toolbar_button_record.h"

namespace velk::toolbar {

class CToolBarBand;

// Ids of the band in the client's rebar; other add-ins and the client see it.
constexpr UINT kBandId = 3339;
constexpr int kRecordCount = 8;
// The timer retry carries these so it can be told from a first attempt.
constexpr WPARAM kRetryWParam = 11111;
constexpr LPARAM kRetryLParam = 22222;
constexpr UINT_PTR kBuildTimerId = 1;
constexpr UINT kBuildRetryMs = 1000;

class CToolBarWnd : public win32::Window {
public:
    // Registers the class, creates the window, makes the first build attempt
    // and starts the worker. Null when the window could not be created; the
    // object deletes itself when its window is destroyed.
    static CToolBarWnd* CreateToolBarWindow();

    // Idempotent: returns at once while the band is built.
    void OnBuildUserInterface(WPARAM wp, LPARAM lp);
    // The band out of the rebar and everything it owns released; harmless
    // when nothing is built.
    LRESULT OnDestroyBand();
    void SetHostWindow(HWND host) noexcept { m_hHostWnd = host; }

    bool built() const noexcept { return m_bBuilt != 0; }
    HWND rebar() const noexcept { return m_hRebar; }
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
    void OnClose();

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
};

}  // namespace velk::toolbar
