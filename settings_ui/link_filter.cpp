#include "settings_ui/link_filter.h"

#include "common_src/win32/companion.h"
#include "settings_ui/sheet_common.h"
#include "settings_ui/sheet_ids.h"

namespace velk::settings_ui {

CLinkFilter::CLinkFilter(const win32::UiContext& ui)
    : PropertyPage(ui.resources, IDD_LINK_FILTER_PAGE),
      m_ui(ui),
      m_strTitle(SheetText(ui, L"IDS_SHEET_TAB_LINK_FILTER")),
      m_pPanel(std::make_unique<CLinkFilterPanel>(ui)) {
    if (!m_strTitle.empty()) {
        description().dwFlags |= PSP_USETITLE;
        description().pszTitle = m_strTitle.c_str();
    }
}

// The panel goes before the brush it borrows.
CLinkFilter::~CLinkFilter() {
    m_pPanel.reset();
}

void CLinkFilter::OnInitDialog() {
    m_hbrWhite.reset(::CreateSolidBrush(RGB(255, 255, 255)));
    if (!m_pPanel->Create(hwnd(), m_hbrWhite.get()))
        return;
    RECT client{};
    ::GetClientRect(hwnd(), &client);
    ::SetWindowPos(m_pPanel->hwnd(), nullptr, 5, 0, client.right - 10, client.bottom - 10,
                   SWP_NOZORDER | SWP_NOACTIVATE | SWP_SHOWWINDOW);
}

bool CLinkFilter::OnApply() {
    if (!m_pPanel->Changed())
        return true;
    // A failed write is logged by the panel; the sheet still closes.
    m_pPanel->Save();
    win32::companion::Post(kMsgLinkFilterSaved);
    return true;
}

bool CLinkFilter::ProcessMessage(UINT msg, WPARAM wp, LPARAM lp, LRESULT& result) {
    if (msg == WM_INITDIALOG) {
        OnInitDialog();
        result = TRUE;
        return true;
    }
    return PaintWhite(msg, wp, m_hbrWhite.get(), result);
}

}  // namespace velk::settings_ui
