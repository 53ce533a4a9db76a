// The dialog that sits in the client's rebar: makes a button of each record,
// lays them out with an overflow button when the band is too narrow, owns
// the logo menu and turns every click into a message to the scanning process
// or into one of the add-in's own commands.
#pragma once

#include <windows.h>

#include <map>
#include <memory>
#include <vector>

#include "common_src/win32/dialog.h"
#include "common_src/win32/handles.h"
#include "toolbar/toolbar_button.h"
#include "toolbar/toolbar_button_record.h"
#include "toolbar/toolbar_button_tooltip.h"
#include "toolbar/toolbar_theme.h"

namespace velk::toolbar {

// Positions of the records the band handles by position.
constexpr int kReportSpamIndex = 6;
constexpr int kReportFpIndex = 7;
// Space kept free at the right end for the overflow button.
constexpr int kOverflowReserve = 20;

class CToolBarBand : public win32::Dialog {
public:
    // `records` (count of them) belong to the toolbar window and outlive the
    // band; so does `arrow`.
    CToolBarBand(const ToolBarButtonRecord* records, int count, bool wmail, HBITMAP arrow);
    ~CToolBarBand() override;

    // The band window from dialog 6006 of the language module.
    bool Create(HWND parent);

    // Buttons 2 onward follow the flag; the logo and the menu button stay usable.
    void EnableButtons(bool enable);
    bool enabled() const noexcept { return m_bEnabled; }

    // Report FP in Report Spam's place (true) or Report Spam back (false).
    void SwitchReportButton(bool show_fp);

    int min_cy() const noexcept { return m_nMinCY; }
    HMENU logo_menu() const noexcept { return m_menu.get(); }

    // What the first pop-up of the logo menu takes out of it (once).
    void TrimLogoMenuOnFirstPopup();
    // The overflow menu for the buttons hidden right now; the caller owns it.
    win32::unique_hmenu BuildOverflowMenu() const;
    HWND button_window(int index) const;
    HWND overflow_window() const { return m_overflow ? m_overflow->hwnd() : nullptr; }

protected:
    bool ProcessMessage(UINT msg, WPARAM wp, LPARAM lp, LRESULT& result) override;

private:
    using Handler = void (CToolBarBand::*)();

    void OnInitDialog();
    void OnSize(int cx, int cy);
    bool OnCommand(WPARAM wp, LPARAM lp);
    void OnNotify(const NMHDR* header);

    void OnMenuButton();
    void OnLogo();
    void PostToCompanion(UINT message) const;
    void OnDisableToolbar();
    void OnEnableToolbar();
    void OnHelp();
    void OnStatistics();
    void OnOverflowMenu();
    void OnDialogLater() {}
    void EnableOne(int index, bool enable);

    // A fresh copy of logo sub-menu 0 or 1 (for the overflow menu).
    HMENU CopySubMenu(int which) const;

    win32::unique_hbrush m_brush;
    std::map<WORD, Handler> m_commands;
    std::map<HWND, int> m_buttonIndex;
    bool m_bEnabled = true;
    const ToolBarButtonRecord* m_records;
    int m_nCount;
    BOOL m_bReportFP = FALSE;
    int m_nMinCY = 0;
    ToolBarTheme m_theme;
    std::vector<std::unique_ptr<CToolBarButton>> m_buttons;
    std::vector<std::unique_ptr<CToolBarButtonToolTip>> m_tooltips;
    win32::unique_hmenu m_menu;
    bool m_menuTrimmed = false;
    std::unique_ptr<CToolBarButton> m_overflow;
};

}  // namespace velk::toolbar
