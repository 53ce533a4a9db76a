#include "settings_ui/default_level.h"

#include <commctrl.h>

#include "settings_ui/sheet_common.h"
#include "settings_ui/sheet_ids.h"

namespace velk::settings_ui {
namespace {

const win32::ControlText kTexts[] = {
    {IDC_DEFAULT_GROUP, L"IDS_DETECTION_GROUP"},
    {IDC_DEFAULT_CORP_NOTE, L"IDS_DETECTION_CORP_NOTE"},
    {IDC_DEFAULT_CUSTOM_NOTE, L"IDS_DETECTION_CUSTOM_NOTE"},
    {IDC_DEFAULT_CUSTOMIZE, L"IDS_DETECTION_CUSTOM_BUTTON"},
    {IDC_DEFAULT_SERENEL_NOTE, L"IDS_DETECTION_SERENEL_NOTE"},
    {IDC_DEFAULT_SERENEL, L"IDS_DETECTION_SERENEL_BUTTON"},
    {IDC_DEFAULT_CLOUD, L"IDC_CHECK_ENABLE_IN_THE_CLOUD"},
};

const wchar_t* const kDescriptions[] = {L"IDS_DETECTION_HIGH_DESC", L"IDS_DETECTION_MEDIUM_DESC",
                                        L"IDS_DETECTION_LOW_DESC"};

}  // namespace

CDefaultLevel::CDefaultLevel(const win32::UiContext& ui, LevelPanelListener& listener)
    : m_ui(ui), m_listener(listener) {}

bool CDefaultLevel::Create(HWND page, HBRUSH white, HBITMAP thumbs) {
    m_hbrWhite = white;
    m_thumbs = thumbs;
    return CreateModeless(m_ui.resources, IDD_DEFAULT_LEVEL, page) != nullptr;
}

void CDefaultLevel::SetValues(int stop, bool cloud) {
    m_slider.SetPosition(stop);
    SetCloud(cloud);
    ShowLevel();
}

bool CDefaultLevel::cloud() const {
    return hwnd() != nullptr && IsChecked(hwnd(), IDC_DEFAULT_CLOUD);
}

void CDefaultLevel::SetCloud(bool on) {
    if (hwnd() != nullptr)
        SetChecked(hwnd(), IDC_DEFAULT_CLOUD, on);
}

void CDefaultLevel::OnInitDialog() {
    win32::ApplyTexts(hwnd(), m_ui, kTexts);
    // The recommendation names the company: the installation's CorpName,
    // else the localised one. Also when the text came from the template.
    const std::wstring note = ItemText(hwnd(), IDC_DEFAULT_CORP_NOTE);
    if (note.find(win32::kCorpNameToken) != std::wstring::npos) {
        ::SetDlgItemTextW(hwnd(), IDC_DEFAULT_CORP_NOTE,
                          win32::ReplacePlaceholders(note, m_ui.placeholders()).c_str());
    }
    SetUpLevelSlider(m_slider, hwnd(), IDC_DEFAULT_SLIDER, m_ui, m_thumbs, true);
    m_titleFont.reset(win32::CreateDialogFont(hwnd(), L"", 0, FW_BOLD));
    if (m_titleFont) {
        ::SendDlgItemMessageW(hwnd(), IDC_DEFAULT_LEVEL_TITLE, WM_SETFONT,
                              reinterpret_cast<WPARAM>(m_titleFont.get()), FALSE);
    }
    ShowLevel();
}

void CDefaultLevel::ShowLevel() {
    if (hwnd() == nullptr || m_slider.position() == m_nShownStop)
        return;
    m_nShownStop = m_slider.position();
    ::SetDlgItemTextW(hwnd(), IDC_DEFAULT_LEVEL_TITLE, LevelNames(m_ui)[m_nShownStop].c_str());
    ::SetDlgItemTextW(hwnd(), IDC_DEFAULT_LEVEL_DESC,
                      SheetText(m_ui, kDescriptions[m_nShownStop]).c_str());
}

bool CDefaultLevel::ProcessMessage(UINT msg, WPARAM wp, LPARAM lp, LRESULT& result) {
    switch (msg) {
        case WM_INITDIALOG:
            OnInitDialog();
            result = FALSE;
            return true;
        case WM_VSCROLL:
        case WM_HSCROLL:
            if (reinterpret_cast<HWND>(lp) == m_slider.hwnd() &&
                m_slider.position() != m_nShownStop) {
                ShowLevel();
                m_listener.OnPanelChanged();
            }
            result = 0;
            return true;
        case WM_COMMAND:
            if (HIWORD(wp) != BN_CLICKED)
                return false;
            switch (LOWORD(wp)) {
                case IDC_DEFAULT_CUSTOMIZE:
                    m_listener.OnCustomLevelRequested();
                    break;
                case IDC_DEFAULT_SERENEL:
                    m_listener.OnSerenelRequested();
                    break;
                case IDC_DEFAULT_CLOUD:
                    m_listener.OnCloudClicked(cloud());
                    m_listener.OnPanelChanged();
                    break;
                default:
                    return false;
            }
            result = 0;
            return true;
        default:
            return PaintWhite(msg, wp, m_hbrWhite, result);
    }
}

}  // namespace velk::settings_ui
