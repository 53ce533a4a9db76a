// The dialog that sits in the client's rebar: makes a button of each record,
// lays them out with an overflow button when the band is too narrow, owns
// the logo menu and turns every click into a message to the scanning process
// or into one of the add-in's own commands.
//
// The band never runs a modal loop itself: the scanning process, the export
// DestroyToolBar or the client's close may delete it while a menu or dialog
// runs. It asks the window that outlives it (IModalHost) to run the loop
// after the band's own handler has returned; that window hands a chosen
// command back only when this band still exists.
#pragma once

#include <windows.h>

#include <functional>
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

enum class ModalKind { kLogoMenu, kOverflowMenu, kSettingsWindow };

// Runs the band's menus and dialogs outside the band (see above).
class IModalHost {
public:
    // Returns at once; the loop runs once the caller's handler has returned.
    // `command` names the settings window (kSettingsWindow).
    virtual void RequestModal(ModalKind kind, WORD command) = 0;

protected:
    ~IModalHost() = default;
};

class CToolBarBand : public win32::Dialog {
public:
    // `records` (count of them) belong to the toolbar window and outlive the
    // band; so do `arrow` and `host` (null: no menus or dialogs).
    CToolBarBand(const ToolBarButtonRecord* records, int count, bool wmail, HBITMAP arrow,
                 IModalHost* host = nullptr);
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
    // The logo menu's sub-menu for the buttons' state (enabled: 0).
    int logo_submenu() const noexcept;

    // What the first pop-up of the logo menu takes out of it (once).
    void TrimLogoMenuOnFirstPopup();
    // The logo menu, trimmed, lent to whoever pops it up; it comes back with
    // ReturnLogoMenu if the band still exists afterwards.
    win32::unique_hmenu LendLogoMenu();
    void ReturnLogoMenu(win32::unique_hmenu menu) noexcept { m_menu = std::move(menu); }
    // Called when the band's window is destroyed by someone else (the client
    // destroying its windows), never by the band's own deletion.
    void SetLostHandler(std::function<void()> lost) { m_onLost = std::move(lost); }
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
    void OnOverflowMenu();
    void OnSettingsCommand(WORD command);
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
    IModalHost* m_host;
    std::function<void()> m_onLost;
};

}  // namespace velk::toolbar
