#include "settings_ui/serenel_level.h"

#include "settings_ui/sheet_common.h"
#include "settings_ui/sheet_ids.h"

namespace velk::settings_ui {
namespace {

const win32::ControlText kTexts[] = {
    {0, L"IDS_SERENEL_CAPTION"},
    {IDC_SERENEL_INTRO, L"IDS_SERENEL_INTRO"},
    {IDC_SERENEL_ENABLE, L"IDS_SERENEL_ENABLE"},
    {IDC_SERENEL_GROUP, L"IDS_SERENEL_GROUP"},
};

const wchar_t* const kDescriptions[] = {L"IDS_SERENEL_HIGH_DESC", L"IDS_SERENEL_MEDIUM_DESC",
                                        L"IDS_SERENEL_LOW_DESC"};

}  // namespace

INT_PTR CSerenelLevel::Run(HWND owner) {
    return DoModal(m_ui.resources, IDD_SERENEL_LEVEL, owner);
}

void CSerenelLevel::OnInitDialog() {
    win32::ApplyTexts(hwnd(), m_ui, kTexts);
    SetUpLevelSlider(m_slider, hwnd(), IDC_SERENEL_SLIDER, m_ui, m_thumbs, true);
    m_slider.SetPosition(m_values.stop);
    SetChecked(hwnd(), IDC_SERENEL_ENABLE, m_values.enabled);
    m_titleFont.reset(win32::CreateDialogFont(hwnd(), L"", 0, FW_BOLD));
    if (m_titleFont) {
        ::SendDlgItemMessageW(hwnd(), IDC_SERENEL_LEVEL_TITLE, WM_SETFONT,
                              reinterpret_cast<WPARAM>(m_titleFont.get()), FALSE);
    }
    ShowLevel();
    EnableLevel();
    win32::CenterOnOwner(hwnd());
}

void CSerenelLevel::ShowLevel() {
    const int stop = m_slider.position();
    ::SetDlgItemTextW(hwnd(), IDC_SERENEL_LEVEL_TITLE, LevelNames(m_ui)[stop].c_str());
    ::SetDlgItemTextW(hwnd(), IDC_SERENEL_LEVEL_DESC, SheetText(m_ui, kDescriptions[stop]).c_str());
}

// The level means nothing while Serenel is off: it stays visible, greyed.
void CSerenelLevel::EnableLevel() {
    const BOOL on = IsChecked(hwnd(), IDC_SERENEL_ENABLE) ? TRUE : FALSE;
    for (int id :
         {IDC_SERENEL_GROUP, IDC_SERENEL_SLIDER, IDC_SERENEL_LEVEL_TITLE, IDC_SERENEL_LEVEL_DESC}) {
        ::EnableWindow(::GetDlgItem(hwnd(), id), on);
    }
}

bool CSerenelLevel::ProcessMessage(UINT msg, WPARAM wp, LPARAM lp, LRESULT& result) {
    switch (msg) {
        case WM_INITDIALOG:
            OnInitDialog();
            result = TRUE;
            return true;
        case WM_VSCROLL:
        case WM_HSCROLL:
            if (reinterpret_cast<HWND>(lp) == m_slider.hwnd())
                ShowLevel();
            result = 0;
            return true;
        case WM_COMMAND:
            switch (LOWORD(wp)) {
                case IDC_SERENEL_ENABLE:
                    EnableLevel();
                    break;
                case IDOK:
                    m_values.enabled = IsChecked(hwnd(), IDC_SERENEL_ENABLE);
                    m_values.stop = m_slider.position();
                    Close(IDOK);
                    break;
                case IDCANCEL:
                    Close(IDCANCEL);
                    break;
                default:
                    return false;
            }
            result = 0;
            return true;
        default:
            return false;
    }
}

}  // namespace velk::settings_ui
