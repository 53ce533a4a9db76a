#include "settings_ui/crx_dlg.h"

#include "common_src/win32/companion.h"
#include "settings/ini_profile.h"
#include "settings/settings_access.h"
#include "settings_ui/dialog_ids.h"
#include "settings_ui/dialog_util.h"

namespace velk::settings_ui {
namespace {

const win32::ControlText kTexts[] = {
    {0, L"IDS_CRX_CAPTION"},
    {IDC_CRX_INTRO, L"IDS_CRX_INTRO"},
    {IDC_CRX_YES, L"IDS_CRX_YES"},
    {IDC_CRX_YES_DESC, L"IDC_STATIC_YES_DESC"},
    {IDC_CRX_NO, L"IDS_CRX_NO"},
    {IDC_CRX_NO_DESC, L"IDS_CRX_NO_DESC"},
    {IDC_CRX_LINK_NOTE, L"IDS_CRX_LINK_NOTE"},
    {IDOK, L"IDS_DLG_OK"},
    {IDCANCEL, L"IDS_DLG_CANCEL"},
};

}  // namespace

CCRXDlg::CCRXDlg(const win32::UiContext& ui) : m_ui(ui) {}

INT_PTR CCRXDlg::Run() {
    return DoModal(m_ui.resources, IDD_CLOUD_FEEDBACK, OwnerOf(m_ui));
}

void CCRXDlg::OnInitDialog() {
    win32::ApplyTexts(hwnd(), m_ui, kTexts);
    settings::IniProfile profile(m_ui.where);
    using settings::Key;
    m_nChoice = settings::ReadInt(profile, Key::EnableCRX) != 0 ? 0 : 1;
    ::CheckRadioButton(hwnd(), IDC_CRX_YES, IDC_CRX_NO, m_nChoice == 0 ? IDC_CRX_YES : IDC_CRX_NO);

    m_fontChoice.reset(
        CreateTextFont(hwnd(), m_ui, L"IDS_CRX_YES_FONT", L"IDS_STATISTIC_DLG_FONT_SIZE", FW_BOLD));
    if (m_fontChoice) {
        for (int id : {IDC_CRX_YES, IDC_CRX_NO})
            ::SendDlgItemMessageW(hwnd(), id, WM_SETFONT, reinterpret_cast<WPARAM>(m_fontChoice.get()), TRUE);
    }

    std::wstring link = settings::ReadText(profile, Key::CRXLink);
    if (link.empty())
        link = m_ui.Text(L"IDS_CRX_LINK");
    SetItemText(hwnd(), IDC_CRX_LINK, link);
    if (m_stLink.Attach(::GetDlgItem(hwnd(), IDC_CRX_LINK))) {
        m_stLink.SetLink();  // opens its own text
        m_stLink.SizeToText();
    }
    win32::CenterOnOwner(hwnd());
}

void CCRXDlg::OnOK() {
    // While the scanning process's own settings window is open it owns these
    // settings; OK waits until it is closed.
    if (win32::companion::CompanionSettingsOpen())
        return;
    m_nChoice = IsChecked(hwnd(), IDC_CRX_YES) ? 0 : 1;
    settings::IniProfile profile(m_ui.where);
    settings::WriteInt(profile, settings::Key::EnableCRX, m_nChoice == 0 ? 1 : 0);
    Close(IDOK);
}

bool CCRXDlg::ProcessMessage(UINT msg, WPARAM wp, LPARAM lp, LRESULT& result) {
    switch (msg) {
        case WM_INITDIALOG:
            OnInitDialog();
            result = TRUE;
            return true;
        case WM_COMMAND:
            if (HIWORD(wp) != BN_CLICKED)
                return false;
            if (LOWORD(wp) == IDOK) {
                OnOK();
                return true;
            }
            if (LOWORD(wp) == IDCANCEL) {
                Close(IDCANCEL);
                return true;
            }
            return false;
        default:
            return false;
    }
}

}  // namespace velk::settings_ui
