// The filtering settings sheet: the add-in's main settings window, a modal
// property sheet with six pages (sheet_pages.h) that edit the per-user
// settings and the sender lists. Each page saves its own values on OK and
// tells the scanning process what changed.
//
// While it exists the sheet keeps a hidden marker window titled
// "{A27C5E90-4D1B-4F36-9C08-E5B1D7342A6E}", by which the scanning process
// tells that it is open. While the scanning process's own settings window
// is open, OK, Cancel and the close command do nothing, so the two never
// save over each other. Help opens the online help of the open page.
#pragma once

#include <windows.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "common_src/win32/property_sheet.h"
#include "common_src/win32/ui_context.h"
#include "common_src/win32/window.h"
#include "controls/tab_strip.h"
#include "senders/sender_list.h"

namespace velk::settings_ui {

// Opens the sheet modally, owned by ui.owner, unless the scanning process's
// settings window is open (then nothing opens). Returns when it closes.
void ShowFilteringSheet(const win32::UiContext& ui);

class CFilteringSheet : public win32::PropertySheet {
public:
    // Opens a web address; false when no browser could be started.
    using UrlOpener = std::function<bool(const std::wstring& url)>;

    // Creates the pages and the marker window.
    explicit CFilteringSheet(const win32::UiContext& ui);
    ~CFilteringSheet() override;

    // Loads both sender lists from the user folder and adds the pages, each
    // with its help flag.
    void SetUpPages();
    // Runs the sheet; PropertySheetW's answer.
    INT_PTR DoModal();

    // Where Help sends the online-help address (default: the shell).
    void SetUrlOpener(UrlOpener opener) { m_openUrl = std::move(opener); }

    // The help id of each tab, in tab order.
    static const wchar_t* HelpId(int tab) noexcept;

protected:
    void OnInitialized() override;
    bool ProcessMessage(UINT msg, WPARAM wp, LPARAM lp, LRESULT& result) override;

private:
    // Never shown; only its title counts.
    class MarkerWindow : public win32::Window {
    public:
        bool Create();

    protected:
        bool ProcessMessage(UINT, WPARAM, LPARAM, LRESULT&) override { return false; }
    };

    void ArrangeButtons();
    void FitPagesUnderTabs();
    void OpenHelp();

    win32::UiContext m_ui;  // the four paths and the texts, for the sheet's life
    senders::SenderList m_approved;
    senders::SenderList m_blocked;
    std::vector<std::unique_ptr<win32::PropertyPage>> m_pages;
    controls::TabStrip m_tabStrip;
    MarkerWindow m_marker;
    UrlOpener m_openUrl;
};

}  // namespace velk::settings_ui
