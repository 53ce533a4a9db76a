// Property pages and sheets without thunks (WTL's CPropertySheetImpl shape).
//
// A page finds its object in PROPSHEETPAGEW::lParam on WM_INITDIALOG and keeps
// it in DWLP_USER, like Dialog. A sheet learns its window in the
// PSCB_INITIALIZED callback, which carries no context: the object travels in
// a thread_local slot filled just before PropertySheetW, and the sheet's own
// window is then subclassed with it (SubclassedWindow), so the sheet can
// swallow OK, Cancel and SC_CLOSE, move its buttons, hide Apply and take over
// its tab strip.
#pragma once

#include <windows.h>
#include <commctrl.h>
#include <prsht.h>

#include <string>
#include <vector>

#include "common_src/win32/subclassed_window.h"

namespace velk::win32 {

class PropertyPage {
public:
    // A page on template `template_id` of `resources` (the language module).
    PropertyPage(HINSTANCE resources, int template_id) noexcept;
    // A page on an in-memory template (tests, the control gallery); the
    // template must outlive the sheet run.
    explicit PropertyPage(const DLGTEMPLATE* dialog_template) noexcept;
    virtual ~PropertyPage() = default;

    PropertyPage(const PropertyPage&) = delete;
    PropertyPage& operator=(const PropertyPage&) = delete;

    HWND hwnd() const noexcept { return hwnd_; }
    HWND sheet() const noexcept { return hwnd_ != nullptr ? ::GetParent(hwnd_) : nullptr; }
    // Whether the page was created in the last run (the sheet creates a
    // page when it is first shown and sends PSN_APPLY only to those).
    bool shown() const noexcept { return shown_; }

    // What the sheet is given; a sheet adds flags (PSP_HASHELP) before it
    // runs.
    PROPSHEETPAGEW& description() noexcept { return psp_; }

    // Tells the sheet this page has unsaved changes (or none any more).
    void SetModified(bool changed) noexcept;

    static PropertyPage* FromHandle(HWND hwnd) noexcept;

protected:
    // Same contract as Dialog::ProcessMessage; what it leaves alone of the
    // sheet's notifications goes to the On* calls below, and notifications
    // of the page's controls are reflected to their objects.
    virtual bool ProcessMessage(UINT msg, WPARAM wp, LPARAM lp, LRESULT& result) {
        return false;
    }
    // OK: save. False keeps the sheet open on this page.
    virtual bool OnApply() { return true; }
    // Leaving the page (another tab, or OK): false keeps the user here.
    virtual bool OnKillActive() { return true; }
    virtual void OnSetActive() {}
    // Cancel.
    virtual void OnReset() {}
    // The sheet's Help button while this page is active.
    virtual void OnHelp() {}
    virtual void OnFinalMessage(HWND hwnd) {}

private:
    friend class PropertySheet;
    static INT_PTR CALLBACK StaticProc(HWND hwnd, UINT msg, WPARAM wp, LPARAM lp);
    bool OnSheetNotify(const NMHDR& header, LRESULT& result);

    PROPSHEETPAGEW psp_{};
    HWND hwnd_ = nullptr;
    bool shown_ = false;
};

class PropertySheet : public SubclassedWindow {
public:
    PropertySheet() = default;
    ~PropertySheet() override = default;

    // Pages are borrowed and shown in the order added.
    void AddPage(PropertyPage& page) { pages_.push_back(&page); }
    const std::vector<PropertyPage*>& pages() const noexcept { return pages_; }

    // Runs the sheet modally. `flags` are PSH_* flags added to the ones the
    // framework needs. Returns PropertySheetW's answer: a positive value
    // after OK, 0 after Cancel, -1 when the sheet could not be created.
    INT_PTR DoModal(HWND owner, const std::wstring& caption, DWORD flags = 0,
                    HINSTANCE instance = nullptr);

    HWND tab_control() const noexcept;
    // The index of the page shown now, -1 when not running.
    int active_index() const noexcept;

protected:
    // The sheet's window exists and is subclassed; the first page is in it.
    virtual void OnInitialized() {}
    bool ProcessMessage(UINT msg, WPARAM wp, LPARAM lp, LRESULT& result) override {
        return false;
    }

private:
    static int CALLBACK SheetCallback(HWND hwnd, UINT msg, LPARAM lp);

    std::vector<PropertyPage*> pages_;
};

}  // namespace velk::win32
