// The advanced page of the filtering settings sheet: the purge period and
// the three options of [General] (PurgeDays, AutoMoved, DeleteDeleted,
// NotifyIcon), and the button that asks the scanning process to purge now.
#pragma once

#include <windows.h>

#include <string>

#include "common_src/win32/handles.h"
#include "common_src/win32/property_sheet.h"
#include "common_src/win32/ui_context.h"
#include "controls/digit_edit.h"
#include "controls/ext_static.h"

namespace velk::settings_ui {

class CAdvancedPage : public win32::PropertyPage {
public:
    // `ui` must outlive the page.
    explicit CAdvancedPage(const win32::UiContext& ui);

protected:
    bool ProcessMessage(UINT msg, WPARAM wp, LPARAM lp, LRESULT& result) override;
    bool OnApply() override;

private:
    void OnInitDialog();
    void OnCommand(int id, int code);
    void MarkChanged();
    void UpdatePurgeControls();
    void AddDeleteNowTooltip();

    const win32::UiContext& m_ui;
    std::wstring m_strTitle;  // the tab's text, alive while the sheet runs
    win32::unique_hbrush m_brWhite;
    controls::DigitEdit m_edtPurgeDays;
    controls::ExtStatic m_stHeading;
    controls::ExtStatic m_stNotifyHeading;
    HWND m_hwndToolTip = nullptr;  // owned by the page's window
    bool m_bDeleteDeleted = false;
    bool m_bNotifyIcon = false;
    bool m_bAutoMoved = false;
    unsigned m_nPurgeDays = 0;
    bool m_bDirty = false;
    bool m_bNotifyIconChanged = false;
    bool m_bInitializing = false;  // our own text changes are not the user's
};

}  // namespace velk::settings_ui
