#include "toolbar/toolbar_band.h"

#include <shellapi.h>

#include <string>

#include "common_src/win32/companion.h"
#include "host/addin_globals.h"
#include "host/window_identifiers.h"
#include "log/diag_log.h"
#include "resources/resource_ids.h"
#include "settings/ini_profile.h"
#include "settings/settings_access.h"
#include "toolbar/settings_commands.h"

namespace velk::toolbar {

using host::Globals;
using settings::Key;

namespace {

constexpr wchar_t kOverflowCaption[] = L">>";

bool ShowCloudFeedback(settings::Profile& profile) {
    return settings::ReadInt(profile, Key::ShowCRXButton) != 0;
}

// The button's own flag: the band may sit in a client window that is hidden
// or not yet shown, which says nothing about the button.
bool Shown(HWND window) {
    return (::GetWindowLongPtrW(window, GWL_STYLE) & WS_VISIBLE) != 0;
}

}  // namespace

CToolBarBand::CToolBarBand(const ToolBarButtonRecord* records, int count, bool wmail, HBITMAP arrow,
                           IModalHost* host)
    : m_records(records), m_nCount(count), m_theme(wmail, arrow), m_host(host) {
    m_commands = {
        {ID_TB_MENU_BUTTON, &CToolBarBand::OnMenuButton},
        {ID_TB_LOGO, &CToolBarBand::OnLogo},
        {ID_MENU_DISABLE_TOOLBAR, &CToolBarBand::OnDisableToolbar},
        {ID_MENU_ENABLE_TOOLBAR, &CToolBarBand::OnEnableToolbar},
        {ID_MENU_HELP, &CToolBarBand::OnHelp},
        {ID_TB_OVERFLOW, &CToolBarBand::OnOverflowMenu},
    };
}

CToolBarBand::~CToolBarBand() {
    // Children first, while the band window still exists to own them.
    m_tooltips.clear();
    m_overflow.reset();
    m_buttons.clear();
    m_buttonIndex.clear();
    m_commands.clear();
}

bool CToolBarBand::Create(HWND parent) {
    return CreateModeless(host::ResourceModule(), IDD_TOOLBAR_BAND, parent) != nullptr;
}

HWND CToolBarBand::button_window(int index) const {
    if (index < 0 || index >= static_cast<int>(m_buttons.size()) || !m_buttons[index])
        return nullptr;
    return m_buttons[index]->hwnd();
}

bool CToolBarBand::ProcessMessage(UINT msg, WPARAM wp, LPARAM lp, LRESULT& result) {
    switch (msg) {
        case WM_INITDIALOG:
            OnInitDialog();
            result = FALSE;
            return true;
        case WM_SIZE:
            OnSize(LOWORD(lp), HIWORD(lp));
            return false;
        case WM_COMMAND:
            return OnCommand(wp, lp);
        case WM_NOTIFY:
            OnNotify(reinterpret_cast<const NMHDR*>(lp));
            return false;
        case WM_CTLCOLORDLG:
            result = reinterpret_cast<LRESULT>(m_brush.get());
            return true;
        case WM_DESTROY:
            // The band's own deletion detaches it first: this is someone else.
            if (m_onLost)
                m_onLost();
            return false;
        default:
            return false;
    }
}

void CToolBarBand::OnInitDialog() {
    m_brush.reset(::CreateSolidBrush(m_theme.palette().face));
    settings::IniProfile profile(Globals().where);
    const bool cloud = ShowCloudFeedback(profile);

    int x = 0;
    m_buttons.resize(m_nCount);
    m_tooltips.resize(m_nCount);
    for (int i = 0; i < m_nCount; ++i) {
        m_buttons[i].reset(new CToolBarButton(m_records[i], m_theme));
        const SIZE size = m_buttons[i]->Create(hwnd(), x, 0);
        x += size.cx;
        if (size.cy > m_nMinCY)
            m_nMinCY = size.cy;
        if (m_nMinCY > 48) {
            // A bitmap override this tall would push the client's own bars away.
            m_nMinCY = 24;
            VELK_LOG(L"!!! m_nMinCY is [%d] unreasonable high (more than 48), reset it to 24",
                     m_nMinCY);
        }
        if (m_records[i].nVariant == kVariantPlain && m_buttons[i]->hwnd() != nullptr) {
            m_tooltips[i].reset(new CToolBarButtonToolTip());
            if (m_tooltips[i]->Create(hwnd(), TTS_ALWAYSTIP))
                m_tooltips[i]->AddTool(m_buttons[i]->hwnd(), m_records[i].strTooltip);
            m_buttonIndex[m_buttons[i]->hwnd()] = i;
        }
    }
    const ToolBarButtonRecord overflow{
        nullptr, nullptr, kOverflowCaption, L"", kKindPushButton, kVariantPlain, 9, ID_TB_OVERFLOW};
    m_overflow.reset(new CToolBarButton(overflow, m_theme));
    m_overflow->Create(hwnd(), x, 0);

    m_menu.reset(::LoadMenuW(host::ResourceModule(), MAKEINTRESOURCEW(IDR_LOGO_MENU)));
    if (m_menu && !cloud) {
        ::DeleteMenu(::GetSubMenu(m_menu.get(), LOGO_SUBMENU_BUTTONS_ENABLED),
                     ID_MENU_CLOUD_FEEDBACK, MF_BYCOMMAND);
        ::DeleteMenu(::GetSubMenu(m_menu.get(), LOGO_SUBMENU_BUTTONS_DISABLED),
                     ID_MENU_CLOUD_FEEDBACK, MF_BYCOMMAND);
    }
}

void CToolBarBand::OnSize(int cx, int cy) {
    if (cx < 1 || cy < 1 || m_buttons.empty())
        return;
    int x = 0;
    bool overflowed = false;
    for (int i = 0; i < static_cast<int>(m_buttons.size()); ++i) {
        HWND button = button_window(i);
        if (button == nullptr)
            continue;
        if ((i == kReportSpamIndex && m_bReportFP) || (i == kReportFpIndex && !m_bReportFP)) {
            // The report pair shares one place: the hidden one takes no room,
            // so the one shown sits where Report Spam sits.
            ::ShowWindow(button, SW_HIDE);
            continue;
        }
        RECT r{};
        ::GetClientRect(button, &r);
        const int w = r.right - r.left;
        if (x + w > cx - kOverflowReserve) {
            // Its width is not counted: a narrower button after it may fit.
            ::ShowWindow(button, SW_HIDE);
            overflowed = true;
            continue;
        }
        ::SetWindowPos(button, nullptr, x, 0, 0, 0,
                       SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE | SWP_SHOWWINDOW);
        x += w;
    }
    HWND more = overflow_window();
    if (more == nullptr)
        return;
    if (overflowed) {
        // The width runs past the band on purpose; the band clips it.
        ::SetWindowPos(more, nullptr, cx - 30, 0, cx - 10, kIconCellWidth,
                       SWP_NOZORDER | SWP_NOACTIVATE | SWP_SHOWWINDOW);
    } else {
        ::ShowWindow(more, SW_HIDE);
    }
}

bool CToolBarBand::OnCommand(WPARAM wp, LPARAM lp) {
    const WORD id = LOWORD(wp);
    auto handler = m_commands.find(id);
    if (IsSettingsCommand(id)) {
        OnSettingsCommand(id);
        return true;
    }
    if (handler == m_commands.end() && id >= ID_TB_POST_USER14 && id <= ID_TB_POST_USER19) {
        static const UINT kForwarded[] = {WM_USER + 14, WM_USER + 15, WM_USER + 17, WM_USER + 18,
                                          WM_USER + 19};
        PostToCompanion(kForwarded[id - ID_TB_POST_USER14]);
    } else if (handler != m_commands.end()) {
        (this->*(handler->second))();
    }
    // The command may have changed what the tip should say (or the tip may
    // have been popped by the click); give it the record's text again.
    auto button = m_buttonIndex.find(reinterpret_cast<HWND>(lp));
    if (lp != 0 && button != m_buttonIndex.end() && m_tooltips[button->second])
        m_tooltips[button->second]->SetText(button->first, m_records[button->second].strTooltip);
    return handler != m_commands.end();
}

void CToolBarBand::OnNotify(const NMHDR* header) {
    if (header == nullptr || header->code != TTN_POP)
        return;
    for (const auto& entry : m_buttonIndex) {
        const auto& tip = m_tooltips[entry.second];
        if (tip && tip->hwnd() == header->hwndFrom)
            tip->SetText(entry.first, m_records[entry.second].strTooltip);
    }
}

void CToolBarBand::TrimLogoMenuOnFirstPopup() {
    if (m_menuTrimmed || !m_menu)
        return;
    m_menuTrimmed = true;
    if (::GetMenuState(m_menu.get(), ID_MENU_UPDATES, MF_BYCOMMAND) == 0xFFFFFFFF)
        return;
    // This build offers no update entry in the menu: the entry goes with the
    // separators around it, in both sub-menus alike.
    for (int sub : {LOGO_SUBMENU_BUTTONS_ENABLED, LOGO_SUBMENU_BUTTONS_DISABLED}) {
        for (int position : res::kLogoMenuPositionsRemovedOnFirstPopup)
            ::DeleteMenu(::GetSubMenu(m_menu.get(), sub), position, MF_BYPOSITION);
    }
}

int CToolBarBand::logo_submenu() const noexcept {
    return m_bEnabled ? LOGO_SUBMENU_BUTTONS_ENABLED : LOGO_SUBMENU_BUTTONS_DISABLED;
}

win32::unique_hmenu CToolBarBand::LendLogoMenu() {
    TrimLogoMenuOnFirstPopup();
    return std::move(m_menu);
}

void CToolBarBand::OnMenuButton() {
    if (m_menu && m_host)
        m_host->RequestModal(ModalKind::kLogoMenu, 0);
}

void CToolBarBand::OnSettingsCommand(WORD command) {
    // While the scanning process's own settings window is open, ours wait.
    if (m_host && !win32::companion::CompanionSettingsOpen())
        m_host->RequestModal(ModalKind::kSettingsWindow, command);
}

void CToolBarBand::OnLogo() {
    if (::GetKeyState(VK_SHIFT) < 0) {
        win32::companion::Post(WM_USER + 29);
        return;
    }
    if (win32::companion::CompanionSettingsOpen())
        return;
    settings::IniProfile profile(Globals().where);
    std::wstring site = settings::ReadText(profile, Key::WebSiteForLogo);
    if (site.empty())
        site = Globals().strings.LoadStringW(L"IDS_FLENMARROW_NUVEXA_HOMEWEB");
    ::ShellExecuteW(nullptr, L"open", site.c_str(), nullptr, nullptr, SW_SHOWNORMAL);
}

void CToolBarBand::PostToCompanion(UINT message) const {
    if (!win32::companion::CompanionSettingsOpen())
        win32::companion::Post(message);
}

void CToolBarBand::OnDisableToolbar() {
    settings::IniProfile profile(Globals().where);
    settings::WriteText(profile, Key::EnableTBar, L"0");
    win32::companion::Post(WM_USER + 45);
    EnableButtons(false);
}

void CToolBarBand::OnEnableToolbar() {
    settings::IniProfile profile(Globals().where);
    settings::WriteText(profile, Key::EnableTBar, L"1");
    if (win32::companion::FindWindow() == nullptr) {
        const std::wstring& folder = Globals().where.install_dir;
        wchar_t command[3 * MAX_PATH];
        ::_snwprintf_s(command, _countof(command), _TRUNCATE, L"\"%s%s\" %s", folder.c_str(),
                       L"VELK_OE.exe", host::kCompanionWindowTitle);
        const std::wstring exe = folder + L"VELK_OE.exe";
        STARTUPINFOW si{};
        si.cb = sizeof(si);
        PROCESS_INFORMATION pi{};
        if (::CreateProcessW(exe.c_str(), command, nullptr, nullptr, FALSE, 0, nullptr,
                             folder.c_str(), &si, &pi)) {
            ::CloseHandle(pi.hThread);
            ::CloseHandle(pi.hProcess);
        } else {
            VELK_LOG(L"@@@ Error : can't start %s (%lu)", exe.c_str(), ::GetLastError());
        }
    }
    EnableButtons(true);
}

void CToolBarBand::OnHelp() {
    VELK_LOG(L"@@CToolBarBand::OnClickHelpMenuItem() ");
    std::wstring url;
    if (!Globals().strings.GetVELK_OLH_URL(Globals().where.install_ini, L"FunID_SPAM_EMAIL_FILTER",
                                           url)) {
        VELK_LOG(L"@@@ Error : Can't retrieve on-line help URL from registry.");
        return;
    }
    const INT_PTR opened = reinterpret_cast<INT_PTR>(
        ::ShellExecuteW(nullptr, L"open", url.c_str(), nullptr, nullptr, SW_SHOWNORMAL));
    if (opened <= 32)
        VELK_LOG(L"@@@ Error : Can't open on-line help URL in browser.");
}

HMENU CToolBarBand::CopySubMenu(int which) const {
    win32::unique_hmenu loaded(
        ::LoadMenuW(host::ResourceModule(), MAKEINTRESOURCEW(IDR_LOGO_MENU)));
    if (!loaded)
        return nullptr;
    HMENU sub = ::GetSubMenu(loaded.get(), which);
    settings::IniProfile profile(Globals().where);
    if (!ShowCloudFeedback(profile))
        ::DeleteMenu(sub, ID_MENU_CLOUD_FEEDBACK, MF_BYCOMMAND);
    // Detached from its parent so it survives the parent's destruction.
    ::RemoveMenu(loaded.get(), which, MF_BYPOSITION);
    return sub;
}

win32::unique_hmenu CToolBarBand::BuildOverflowMenu() const {
    win32::unique_hmenu menu(::CreatePopupMenu());
    if (!menu)
        return menu;
    for (int i = 0; i < static_cast<int>(m_buttons.size()); ++i) {
        HWND button = button_window(i);
        const ToolBarButtonRecord& r = m_records[i];
        if (button == nullptr || Shown(button) || r.nVariant == kVariantSeparator)
            continue;
        if (r.nId == ID_TB_MENU_BUTTON) {
            HMENU sub = CopySubMenu(m_bEnabled ? LOGO_SUBMENU_BUTTONS_ENABLED
                                               : LOGO_SUBMENU_BUTTONS_DISABLED);
            if (sub != nullptr)
                ::AppendMenuW(menu.get(), MF_POPUP, reinterpret_cast<UINT_PTR>(sub),
                              r.strCaption.c_str());
            continue;
        }
        ::AppendMenuW(menu.get(), MF_STRING, static_cast<UINT_PTR>(static_cast<UINT>(r.nId)),
                      r.strCaption.c_str());
        if (r.hBitmap != nullptr)
            ::SetMenuItemBitmaps(menu.get(), static_cast<UINT>(r.nId), MF_BYCOMMAND, r.hBitmap,
                                 r.hBitmap);
    }
    return menu;
}

void CToolBarBand::OnOverflowMenu() {
    if (m_host)
        m_host->RequestModal(ModalKind::kOverflowMenu, 0);
}

void CToolBarBand::EnableOne(int index, bool enable) {
    if (index < static_cast<int>(m_buttons.size()) && m_buttons[index] &&
        m_buttons[index]->hwnd() != nullptr) {
        m_buttons[index]->Enable(enable);
    }
}

void CToolBarBand::EnableButtons(bool enable) {
    m_bEnabled = enable;
    for (int i = 2; i < static_cast<int>(m_buttons.size()); ++i)
        EnableOne(i, enable);
}

void CToolBarBand::SwitchReportButton(bool show_fp) {
    HWND spam = button_window(kReportSpamIndex);
    HWND fp = button_window(kReportFpIndex);
    if (spam == nullptr || fp == nullptr)
        return;
    m_bReportFP = show_fp ? TRUE : FALSE;
    if (show_fp) {
        RECT r{};
        ::GetWindowRect(spam, &r);
        ::MapWindowPoints(nullptr, hwnd(), reinterpret_cast<POINT*>(&r), 2);
        ::ShowWindow(spam, SW_HIDE);
        ::SetWindowPos(fp, nullptr, r.left, r.top, 0, 0,
                       SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
        ::ShowWindow(fp, SW_SHOW);
    } else {
        ::ShowWindow(fp, SW_HIDE);
        ::ShowWindow(spam, SW_SHOW);
        EnableOne(kReportSpamIndex, true);
    }
}

}  // namespace velk::toolbar
