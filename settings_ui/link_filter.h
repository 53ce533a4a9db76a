// The second page of the filtering settings sheet: the link filter. The
// page (template 6108) hosts the settings panel (CLinkFilterPanel, template
// 6109); on OK it asks the panel to save, when anything changed, and posts
// message 1037 to the scanning process.
#pragma once

#include <windows.h>

#include <memory>
#include <string>

#include "common_src/win32/handles.h"
#include "common_src/win32/property_sheet.h"
#include "common_src/win32/ui_context.h"
#include "settings_ui/link_filter_panel.h"

namespace velk::settings_ui {

// The scanning process rereads [LinkFilter] on this (WM_USER + 13).
constexpr UINT kMsgLinkFilterSaved = WM_USER + 13;

class CLinkFilter : public win32::PropertyPage {
public:
    explicit CLinkFilter(const win32::UiContext& ui);
    ~CLinkFilter() override;

protected:
    bool ProcessMessage(UINT msg, WPARAM wp, LPARAM lp, LRESULT& result) override;
    bool OnApply() override;

private:
    void OnInitDialog();

    const win32::UiContext& m_ui;
    std::wstring m_strTitle;
    win32::unique_hbrush m_hbrWhite;
    std::unique_ptr<CLinkFilterPanel> m_pPanel;
};

}  // namespace velk::settings_ui
