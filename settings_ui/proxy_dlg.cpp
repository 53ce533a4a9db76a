#include "settings_ui/proxy_dlg.h"

#include <commctrl.h>

#include "log/diag_log.h"
#include "settings/ini_profile.h"
#include "settings/settings_access.h"
#include "settings_ui/dialog_ids.h"
#include "settings_ui/dialog_rules.h"
#include "settings_ui/dialog_util.h"
#include "settings_ui/password_codec.h"

namespace velk::settings_ui {
namespace {

const win32::ControlText kTexts[] = {
    {0, L"IDS_PROXY_CAPTION"},
    {IDC_PROXY_ENABLE, L"IDS_PROXY_ENABLE"},
    {IDC_PROXY_HOST_LABEL, L"IDS_PROXY_HOST_LABEL"},
    {IDC_PROXY_PORT_LABEL, L"IDS_PROXY_PORT_LABEL"},
    {IDC_PROXY_USER_LABEL, L"IDS_PROXY_USER_LABEL"},
    {IDC_PROXY_PASSWORD_LABEL, L"IDS_PROXY_PASSWORD_LABEL"},
    {IDOK, L"IDS_DLG_OK"},
    {IDCANCEL, L"IDS_DLG_CANCEL"},
};

}  // namespace

CProxySettingDlg::CProxySettingDlg(const win32::UiContext& ui) : m_ui(ui) {}

INT_PTR CProxySettingDlg::Run(HWND owner) {
    return DoModal(m_ui.resources, IDD_PROXY_SETTINGS, owner);
}

void CProxySettingDlg::OnInitDialog() {
    win32::ApplyTexts(hwnd(), m_ui, kTexts);
    settings::IniProfile profile(m_ui.where);
    using settings::Key;
    m_bEnableProxy = settings::ReadYesNo(profile, Key::EnableProxy);
    m_strHost = settings::ReadText(profile, Key::HTTPProxy);
    m_strUserName = settings::ReadText(profile, Key::ProxyUserName);
    m_nPort = settings::ReadInt(profile, Key::HTTPPort);
    if (!IsPortInRange(m_nPort)) {
        VELK_LOG(L"!!! proxy port %d is out of range, %d is used", m_nPort, kDefaultProxyPort);
        m_nPort = kDefaultProxyPort;
        // Written back at once: the scanning process reads the same key.
        settings::WriteInt(profile, Key::HTTPPort, m_nPort);
    }
    DecodePassword(settings::ReadText(profile, Key::ProxyPassword), m_strPassword);

    m_edtPort.Attach(::GetDlgItem(hwnd(), IDC_PROXY_PORT));
    ::SendDlgItemMessageW(hwnd(), IDC_PROXY_PORT, EM_LIMITTEXT, 5, 0);
    ::SendDlgItemMessageW(hwnd(), IDC_PROXY_PORT_SPIN, UDM_SETRANGE32, 1, 65535);
    ::SendDlgItemMessageW(hwnd(), IDC_PROXY_PASSWORD, EM_LIMITTEXT, kMaxProxyPasswordChars, 0);
    SetChecked(hwnd(), IDC_PROXY_ENABLE, m_bEnableProxy);
    SetItemText(hwnd(), IDC_PROXY_HOST, m_strHost);
    SetItemText(hwnd(), IDC_PROXY_PORT, std::to_wstring(m_nPort));
    SetItemText(hwnd(), IDC_PROXY_USER, m_strUserName);
    SetItemText(hwnd(), IDC_PROXY_PASSWORD, m_strPassword);
    EnableProxyItems();
    win32::CenterOnOwner(hwnd());
}

void CProxySettingDlg::EnableProxyItems() {
    EnableItems(hwnd(),
                {IDC_PROXY_HOST_LABEL, IDC_PROXY_HOST, IDC_PROXY_PORT_LABEL, IDC_PROXY_PORT,
                 IDC_PROXY_PORT_SPIN, IDC_PROXY_USER_LABEL, IDC_PROXY_USER,
                 IDC_PROXY_PASSWORD_LABEL, IDC_PROXY_PASSWORD},
                IsChecked(hwnd(), IDC_PROXY_ENABLE));
}

bool CProxySettingDlg::OnOK() {
    m_bEnableProxy = IsChecked(hwnd(), IDC_PROXY_ENABLE);
    m_strHost = ItemText(hwnd(), IDC_PROXY_HOST);
    const std::wstring port = ItemText(hwnd(), IDC_PROXY_PORT);
    // With the proxy off its fields are greyed out: a blank or odd entry
    // there must not keep the user from closing the dialog.
    if (m_bEnableProxy) {
        if (!IsAcceptedProxyHost(m_strHost)) {
            // In English the warnings read exactly as those of the scanning
            // process's own proxy settings, which users already know.
            win32::ShowMessage(hwnd(), m_ui, L"IDS_PROXY_HOST_WARNING",
                               L"IDS_PROXY_WARNING_CAPTION", MB_OK | MB_ICONWARNING);
            FocusItem(hwnd(), IDC_PROXY_HOST);
            return false;
        }
        if (!PassesPortCheck(port)) {
            win32::ShowMessage(hwnd(), m_ui, L"IDS_PROXY_PORT_WARNING",
                               L"IDS_PROXY_WARNING_CAPTION", MB_OK | MB_ICONWARNING);
            FocusItem(hwnd(), IDC_PROXY_PORT);
            return false;
        }
    }
    m_strUserName = ItemText(hwnd(), IDC_PROXY_USER);
    m_strPassword = ItemText(hwnd(), IDC_PROXY_PASSWORD);

    settings::IniProfile profile(m_ui.where);
    using settings::Key;
    settings::WriteYesNo(profile, Key::EnableProxy, m_bEnableProxy);
    settings::WriteText(profile, Key::HTTPProxy, m_strHost);
    settings::WriteText(profile, Key::ProxyUserName, m_strUserName);
    settings::WriteText(profile, Key::HTTPPort, port.substr(0, settings::kValueBufferChars - 1));
    std::wstring stored;
    if (EncodePassword(m_strPassword, stored))
        settings::WriteText(profile, Key::ProxyPassword, stored);
    else
        VELK_LOG(L"!!! the proxy password is left as it was stored");
    return true;
}

bool CProxySettingDlg::ProcessMessage(UINT msg, WPARAM wp, LPARAM lp, LRESULT& result) {
    switch (msg) {
        case WM_INITDIALOG:
            OnInitDialog();
            result = TRUE;
            return true;
        case WM_COMMAND:
            if (HIWORD(wp) != BN_CLICKED)
                return false;
            switch (LOWORD(wp)) {
                case IDOK:
                    if (OnOK())
                        Close(IDOK);
                    return true;
                case IDCANCEL:
                    Close(IDCANCEL);
                    return true;
                case IDC_PROXY_ENABLE:
                    EnableProxyItems();
                    return true;
                default:
                    return false;
            }
        default:
            return false;
    }
}

}  // namespace velk::settings_ui
