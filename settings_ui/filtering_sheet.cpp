#include "settings_ui/filtering_sheet.h"

#include <shellapi.h>

#include <exception>

#include "common_src/win32/companion.h"
#include "common_src/win32/scope_exit.h"
#include "common_src/win32/window_class.h"
#include "host/window_identifiers.h"
#include "log/diag_log.h"
#include "settings_ui/sheet_common.h"
#include "senders/sender_list_wide.h"
#include "settings_ui/sheet_pages.h"

namespace velk::settings_ui {
namespace {

constexpr int kApplyButton = 12321;  // the stock sheet's Apply: never shown here
constexpr int kButtonGap = 6;
constexpr wchar_t kMarkerClass[] = L"VelkFilteringSheetMarker";

// The online-help function id of each tab, in tab order.
const wchar_t* const kHelpIds[kSheetPageCount] = {
    L"FunID_SPAM_EMAIL_FILTER", L"FunID_LINK_FILTER",       L"FunID_APPROVED_SENDERS",
    L"FunID_BLOCKED_SENDERS",   L"FunID_BLOCKED_LANGUAGES", L"FunID_ADVANCED_SETTINGS"};

// The sheet is modal: a second one on the same thread could only come from
// a message the first one's loop dispatched.
thread_local bool t_sheet_running = false;

bool OpenWithShell(const std::wstring& url) {
    const auto answer = reinterpret_cast<INT_PTR>(
        ::ShellExecuteW(nullptr, L"open", url.c_str(), nullptr, nullptr, SW_SHOWNORMAL));
    return answer > 32;
}

RECT ChildRect(HWND parent, HWND child) {
    RECT r{};
    ::GetWindowRect(child, &r);
    ::MapWindowPoints(nullptr, parent, reinterpret_cast<POINT*>(&r), 2);
    return r;
}

void MoveBy(HWND parent, HWND child, int dx, int dy) {
    if (child == nullptr)
        return;
    const RECT r = ChildRect(parent, child);
    ::SetWindowPos(child, nullptr, r.left + dx, r.top + dy, 0, 0,
                   SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
}

}  // namespace

void ShowFilteringSheet(const win32::UiContext& ui) {
    if (win32::companion::CompanionSettingsOpen()) {
        VELK_LOG(L"@@@ the scanning process's settings window is open: no filtering settings now");
        return;
    }
    if (t_sheet_running)
        return;
    t_sheet_running = true;
    auto done = scope_exit([] { t_sheet_running = false; });
    try {
        CFilteringSheet sheet(ui);
        sheet.SetUpPages();
        if (sheet.DoModal() < 0)
            VELK_LOG(L"@@@ Error : can't open the filtering settings sheet (%lu)",
                     ::GetLastError());
    } catch (const std::exception& e) {
        VELK_LOG(L"@@@ Error : exception \"%hs\" in the filtering settings sheet", e.what());
    } catch (...) {
        VELK_LOG(L"@@@ Error : unknown exception in the filtering settings sheet");
    }
}

bool CFilteringSheet::MarkerWindow::Create() {
    if (win32::RegisterWindowClass(kMarkerClass) == 0)
        return false;
    // WS_POPUP | WS_SYSMENU, never shown: other processes look for the title.
    return Window::Create(kMarkerClass, nullptr, WS_POPUP | WS_SYSMENU, 0, RECT{0, 0, 0, 0},
                          host::kFilteringSheetMarkerTitle) != nullptr;
}

CFilteringSheet::CFilteringSheet(const win32::UiContext& ui)
    : m_ui(ui),
      m_approved(senders::SenderListKind::kApproved),
      m_blocked(senders::SenderListKind::kBlocked),
      m_pages(CreateSheetPages(m_ui, m_approved, m_blocked)),
      m_openUrl(&OpenWithShell) {
    if (!m_marker.Create())
        VELK_LOG(L"@@@ Error : can't create the filtering sheet's marker window (%lu)",
                 ::GetLastError());
}

CFilteringSheet::~CFilteringSheet() {
    m_marker.Destroy();
    // A class left registered would outlive the add-in's module.
    win32::UnregisterWindowClass(kMarkerClass);
}

const wchar_t* CFilteringSheet::HelpId(int tab) noexcept {
    return tab >= 0 && tab < kSheetPageCount ? kHelpIds[tab] : nullptr;
}

void CFilteringSheet::SetUpPages() {
    // A missing list file is an empty list; a broken one is logged by the list.
    senders::LoadSenders(m_approved, senders::SenderListPathW(m_ui.where.user_dir,
                                                              senders::SenderListKind::kApproved));
    senders::LoadSenders(m_blocked, senders::SenderListPathW(m_ui.where.user_dir,
                                                             senders::SenderListKind::kBlocked));
    for (const auto& page : m_pages) {
        page->description().dwFlags |= PSP_HASHELP;
        AddPage(*page);
    }
}

INT_PTR CFilteringSheet::DoModal() {
    return PropertySheet::DoModal(m_ui.owner, SheetText(m_ui, L"IDS_STRING_FILTERING_SHEET"),
                                  PSH_NOAPPLYNOW | PSH_HASHELP, m_ui.resources);
}

void CFilteringSheet::OnInitialized() {
    m_tabStrip.TakeOver(tab_control());  // the taller, owner-drawn tabs
    FitPagesUnderTabs();
    if (HWND apply = ::GetDlgItem(hwnd(), kApplyButton))
        ::ShowWindow(apply, SW_HIDE);
    ArrangeButtons();
    win32::CenterOnOwner(hwnd());
}

// The tabs are taller now than when the sheet placed its pages: move the
// pages (and everything below them) down by the difference, growing the
// sheet, so no page loses its bottom edge.
void CFilteringSheet::FitPagesUnderTabs() {
    HWND tab = tab_control();
    HWND page = reinterpret_cast<HWND>(::SendMessageW(hwnd(), PSM_GETCURRENTPAGEHWND, 0, 0));
    if (tab == nullptr || page == nullptr)
        return;
    RECT display = ChildRect(hwnd(), tab);
    ::SendMessageW(tab, TCM_ADJUSTRECT, FALSE, reinterpret_cast<LPARAM>(&display));
    const RECT placed = ChildRect(hwnd(), page);
    const int grow = display.top - placed.top;
    if (grow <= 0)
        return;
    const RECT tab_rect = ChildRect(hwnd(), tab);
    ::SetWindowPos(tab, nullptr, 0, 0, tab_rect.right - tab_rect.left,
                   tab_rect.bottom - tab_rect.top + grow,
                   SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
    MoveBy(hwnd(), page, 0, grow);
    for (int id : {IDOK, IDCANCEL, IDHELP, kApplyButton})
        MoveBy(hwnd(), ::GetDlgItem(hwnd(), id), 0, grow);
    RECT outer{};
    ::GetWindowRect(hwnd(), &outer);
    ::SetWindowPos(hwnd(), nullptr, 0, 0, outer.right - outer.left, outer.bottom - outer.top + grow,
                   SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
}

// Help at the left edge, OK and Cancel at the right, each keeping its size.
void CFilteringSheet::ArrangeButtons() {
    RECT client{};
    ::GetClientRect(hwnd(), &client);
    HWND help = ::GetDlgItem(hwnd(), IDHELP);
    HWND ok = ::GetDlgItem(hwnd(), IDOK);
    HWND cancel = ::GetDlgItem(hwnd(), IDCANCEL);
    auto place = [&](HWND button, int x) {
        const RECT r = ChildRect(hwnd(), button);
        ::SetWindowPos(button, nullptr, x, r.top, 0, 0, SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
    };
    if (help != nullptr)
        place(help, kButtonGap);
    if (cancel == nullptr || ok == nullptr)
        return;
    const RECT c = ChildRect(hwnd(), cancel);
    const int cancel_x = client.right - kButtonGap - (c.right - c.left);
    place(cancel, cancel_x);
    const RECT o = ChildRect(hwnd(), ok);
    place(ok, cancel_x - kButtonGap - (o.right - o.left));
}

void CFilteringSheet::OpenHelp() {
    const wchar_t* id = HelpId(active_index());
    std::wstring url;
    if (id == nullptr || m_ui.strings == nullptr ||
        !m_ui.strings->GetVELK_OLH_URL(m_ui.where.install_ini, id, url) || url.empty()) {
        VELK_LOG(L"@@@ Error : Can't retrieve on-line help URL from registry.");
        return;
    }
    if (!m_openUrl || !m_openUrl(url))
        VELK_LOG(L"@@@ Error : Can't open on-line help URL in browser.");
}

bool CFilteringSheet::ProcessMessage(UINT msg, WPARAM wp, LPARAM lp, LRESULT& result) {
    switch (msg) {
        case WM_COMMAND: {
            const int id = LOWORD(wp);
            // While the scanning process's settings window is open, neither
            // may save over the other: OK and Cancel wait for it to close.
            if ((id == IDOK || id == IDCANCEL) && win32::companion::CompanionSettingsOpen()) {
                result = 0;
                return true;
            }
            if (id == IDHELP) {
                OpenHelp();
                result = 0;
                return true;
            }
            return false;
        }
        case WM_SYSCOMMAND:
            if ((wp & 0xFFF0) == SC_CLOSE && win32::companion::CompanionSettingsOpen()) {
                result = 0;
                return true;
            }
            return false;
        default:
            return false;
    }
}

}  // namespace velk::settings_ui
