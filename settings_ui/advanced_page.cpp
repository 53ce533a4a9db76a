#include "settings_ui/advanced_page.h"

#include <commctrl.h>

#include <string>

#include "common_src/win32/companion.h"
#include "common_src/win32/reflection.h"
#include "settings/ini_profile.h"
#include "settings/settings_access.h"
#include "settings_ui/dialog_ids.h"
#include "settings_ui/dialog_rules.h"
#include "settings_ui/dialog_util.h"

namespace velk::settings_ui {
namespace {

// To the scanning process.
constexpr UINT kMsgDeleteNow = WM_USER + 11;         // 1035, posted: purge the spam folder now
constexpr UINT kMsgNotifyIconChanged = WM_USER + 20;  // 1044, sent: NotifyIcon was rewritten

constexpr COLORREF kWhite = RGB(255, 255, 255);

const win32::ControlText kTexts[] = {
    {IDC_ADV_HEADING, L"IDS_ADV_QUARANTINE_HEADING"},
    {IDC_ADV_AUTO_MOVED, L"IDS_ADV_AUTO_MOVED"},
    {IDC_ADV_PURGE_BEFORE, L"IDS_ADV_PURGE_BEFORE"},
    {IDC_ADV_PURGE_AFTER, L"IDS_ADV_PURGE_AFTER"},
    {IDC_ADV_DELETE_DELETED, L"IDS_ADV_DELETE_DELETED"},
    {IDC_ADV_DELETE_NOW, L"IDS_ADV_DELETE_NOW"},
    {IDC_ADV_DELETE_NOW_NOTE, L"IDS_ADV_DELETE_NOW_NOTE"},
    {IDC_ADV_NOTIFY_HEADING, L"IDS_ADV_NOTIFY_HEADING"},
    {IDC_ADV_NOTIFY_ICON, L"IDS_ADV_NOTIFY_ICON"},
};

}  // namespace

CAdvancedPage::CAdvancedPage(const win32::UiContext& ui)
    : PropertyPage(ui.resources, IDD_ADVANCED_PAGE), m_ui(ui) {
    m_strTitle = ui.Text(L"IDS_ADV_PAGE_TITLE");
    if (!m_strTitle.empty()) {
        description().dwFlags |= PSP_USETITLE;
        description().pszTitle = m_strTitle.c_str();
    }
}

void CAdvancedPage::OnInitDialog() {
    m_bInitializing = true;
    m_brWhite.reset(::CreateSolidBrush(kWhite));
    win32::ApplyTexts(hwnd(), m_ui, kTexts);

    settings::IniProfile profile(m_ui.where);
    using settings::Key;
    m_nPurgeDays = PurgeDaysOf(settings::ReadText(profile, Key::PurgeDays));
    // Deliberately asymmetric: an unexpected value turns the first two on
    // and the third off.
    m_bDeleteDeleted = settings::ReadText(profile, Key::DeleteDeleted) != L"0";
    m_bNotifyIcon = settings::ReadText(profile, Key::NotifyIcon) != L"0";
    m_bAutoMoved = settings::ReadText(profile, Key::AutoMoved) == L"1";

    m_edtPurgeDays.Attach(::GetDlgItem(hwnd(), IDC_ADV_PURGE_DAYS));
    ::SendDlgItemMessageW(hwnd(), IDC_ADV_PURGE_DAYS, EM_LIMITTEXT, 3, 0);
    ::SendDlgItemMessageW(hwnd(), IDC_ADV_PURGE_SPIN, UDM_SETRANGE32, 1, kMaxPurgeDays);
    SetItemText(hwnd(), IDC_ADV_PURGE_DAYS, std::to_wstring(m_nPurgeDays));
    SetChecked(hwnd(), IDC_ADV_DELETE_DELETED, m_bDeleteDeleted);
    SetChecked(hwnd(), IDC_ADV_NOTIFY_ICON, m_bNotifyIcon);
    SetChecked(hwnd(), IDC_ADV_AUTO_MOVED, m_bAutoMoved);
    UpdatePurgeControls();

    for (auto* heading : {&m_stHeading, &m_stNotifyHeading}) {
        heading->Attach(::GetDlgItem(hwnd(), heading == &m_stHeading ? IDC_ADV_HEADING
                                                                       : IDC_ADV_NOTIFY_HEADING));
        heading->SetFont(win32::unique_hfont(CreateTextFont(
            hwnd(), m_ui, L"IDS_VELK_SYSTEM_FONT", L"IDS_INTERMEDIATE_FONT_SIZE", FW_BOLD)));
        heading->SetTransparent();
    }
    AddDeleteNowTooltip();
    m_bInitializing = false;
}

void CAdvancedPage::AddDeleteNowTooltip() {
    const std::wstring tip = m_ui.Text(L"IDS_TOOLTIP_DELETENOW");
    HWND button = ::GetDlgItem(hwnd(), IDC_ADV_DELETE_NOW);
    if (tip.empty() || button == nullptr)
        return;
    // Owned by the page, so it goes with it.
    m_hwndToolTip = ::CreateWindowExW(0, TOOLTIPS_CLASSW, nullptr, WS_POPUP | TTS_ALWAYSTIP, 0, 0,
                                      0, 0, hwnd(), nullptr, nullptr, nullptr);
    if (m_hwndToolTip == nullptr)
        return;
    TOOLINFOW info{};
    info.cbSize = TTTOOLINFOW_V1_SIZE;
    info.uFlags = TTF_IDISHWND | TTF_SUBCLASS;
    info.hwnd = hwnd();
    info.uId = reinterpret_cast<UINT_PTR>(button);
    info.lpszText = const_cast<wchar_t*>(tip.c_str());  // copied by the control
    ::SendMessageW(m_hwndToolTip, TTM_ADDTOOLW, 0, reinterpret_cast<LPARAM>(&info));
    ::SendMessageW(m_hwndToolTip, TTM_SETMAXTIPWIDTH, 0, 300);
}

void CAdvancedPage::UpdatePurgeControls() {
    EnableItems(hwnd(), {IDC_ADV_PURGE_BEFORE, IDC_ADV_PURGE_DAYS, IDC_ADV_PURGE_SPIN, IDC_ADV_PURGE_AFTER},
                IsChecked(hwnd(), IDC_ADV_AUTO_MOVED));
}

void CAdvancedPage::MarkChanged() {
    SetModified(true);
    m_bDirty = true;
}

void CAdvancedPage::OnCommand(int id, int code) {
    switch (id) {
        case IDC_ADV_DELETE_DELETED:
            if (code == BN_CLICKED)
                MarkChanged();
            break;
        case IDC_ADV_PURGE_DAYS:
            if (code == EN_CHANGE && !m_bInitializing)
                MarkChanged();
            break;
        case IDC_ADV_NOTIFY_ICON:
            if (code == BN_CLICKED) {
                MarkChanged();
                m_bNotifyIconChanged = true;
            }
            break;
        case IDC_ADV_AUTO_MOVED:
            if (code == BN_CLICKED) {
                UpdatePurgeControls();
                MarkChanged();
            }
            break;
        case IDC_ADV_DELETE_NOW:
            // At once and on its own: nothing of the page is saved by it.
            if (code == BN_CLICKED)
                win32::companion::Post(kMsgDeleteNow);
            break;
        default:
            break;
    }
}

bool CAdvancedPage::OnApply() {
    if (!m_bDirty)
        return true;
    m_bAutoMoved = IsChecked(hwnd(), IDC_ADV_AUTO_MOVED);
    m_bDeleteDeleted = IsChecked(hwnd(), IDC_ADV_DELETE_DELETED);
    m_bNotifyIcon = IsChecked(hwnd(), IDC_ADV_NOTIFY_ICON);

    // The scanning process reads the keys in this order and this form; the
    // period is written as typed, and reads as 20 again if it is not 1-365.
    settings::IniProfile profile(m_ui.where);
    using settings::Key;
    settings::WriteText(profile, Key::PurgeDays, ItemText(hwnd(), IDC_ADV_PURGE_DAYS));
    settings::WriteInt(profile, Key::AutoMoved, m_bAutoMoved ? 1 : 0);
    settings::WriteInt(profile, Key::DeleteDeleted, m_bDeleteDeleted ? 1 : 0);
    settings::WriteInt(profile, Key::NotifyIcon, m_bNotifyIcon ? 1 : 0);
    if (m_bNotifyIconChanged) {
        // Sent, so the icon has changed by the time the sheet is gone.
        win32::companion::Send(kMsgNotifyIconChanged);
        m_bNotifyIconChanged = false;
    }
    m_bDirty = false;
    return true;
}

bool CAdvancedPage::ProcessMessage(UINT msg, WPARAM wp, LPARAM lp, LRESULT& result) {
    switch (msg) {
        case WM_INITDIALOG:
            OnInitDialog();
            result = TRUE;
            return true;
        case WM_COMMAND:
            OnCommand(LOWORD(wp), HIWORD(wp));
            return false;  // the controls' objects may still want it
        case WM_CTLCOLORDLG:
            result = reinterpret_cast<LRESULT>(m_brWhite.get());
            return true;
        case WM_CTLCOLORSTATIC:
        case WM_CTLCOLORBTN: {
            // Our own statics answer for themselves; the rest sit on white.
            if (win32::ReflectToOwner(hwnd(), msg, wp, lp, result))
                return true;
            // A disabled edit asks as a static; it keeps the system's grey.
            wchar_t cls[16] = L"";
            ::GetClassNameW(reinterpret_cast<HWND>(lp), cls, 16);
            if (::lstrcmpiW(cls, L"Edit") == 0)
                return false;
            HDC dc = reinterpret_cast<HDC>(wp);
            ::SetBkColor(dc, kWhite);
            result = reinterpret_cast<LRESULT>(m_brWhite.get());
            return m_brWhite.get() != nullptr;
        }
        default:
            return false;
    }
}

}  // namespace velk::settings_ui
