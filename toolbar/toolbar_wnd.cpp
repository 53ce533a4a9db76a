#include "toolbar/toolbar_wnd.h"

#include <string>

#include "common_src/win32/entry_scope.h"
#include "common_src/win32/ui_context.h"
#include "common_src/win32/window_class.h"
#include "host/addin_globals.h"
#include "host/com_util_set.h"
#include "host/host_hook.h"
#include "host/identity.h"
#include "host/per_user_start.h"
#include "host/window_identifiers.h"
#include "log/diag_log.h"
#include "resources/resource_ids.h"
#include "settings/ini_profile.h"
#include "settings/settings_access.h"
#include "toolbar/band_resources.h"
#include "toolbar/settings_commands.h"

namespace velk::toolbar {

using host::Globals;
using settings::Key;

// The band code fills the pre-Vista record, which is what the client's rebar
// of that era expects as cbSize.
static_assert(sizeof(REBARBANDINFOW) == 112, "band record of _WIN32_WINNT 0x0502");

namespace {
CToolBarWnd* g_instance = nullptr;
}  // namespace

CToolBarWnd* CToolBarWnd::Instance() noexcept {
    return g_instance;
}

bool CToolBarWnd::RegisterToolBarClass() {
    return win32::RegisterWindowClass(host::kToolBarWindowClass) != 0;
}

void CToolBarWnd::UnregisterToolBarClass() noexcept {
    win32::UnregisterWindowClass(host::kToolBarWindowClass);
}

CToolBarWnd::CToolBarWnd() : m_actions(new actions::CMsgActionQueue(m_cs)) {
    m_rbbi.cbSize = sizeof(REBARBANDINFOW);
}

CToolBarWnd::~CToolBarWnd() {
    if (g_instance == this)
        g_instance = nullptr;
}

CToolBarWnd* CToolBarWnd::CreateToolBarWindow() {
    if (!RegisterToolBarClass() || !CToolBarButton::RegisterButtonClass()) {
        VELK_LOG(L"@@@ Error : can't register the toolbar window classes");
        return nullptr;
    }
    std::unique_ptr<CToolBarWnd> self(new CToolBarWnd());
    self->m_wmail = host::CComUtilSet::IsWMail() != 0;
    if (self->Create(host::kToolBarWindowClass, nullptr, WS_POPUP | WS_SYSMENU) == nullptr) {
        VELK_LOG(L"@@@ Error : can't create the toolbar window");
        return nullptr;
    }
    CToolBarWnd* wnd = self.release();  // its window owns it from here on
    g_instance = wnd;
    // Not under the loader lock: the worker's thread and the band build (the
    // per-user start, dialogs, the client's window) wait for the message.
    ::PostMessageW(wnd->hwnd(), kMsgStart, 0, 0);
    return wnd;
}

void CToolBarWnd::OnStart() {
    // Top-most so the scanning process's messages are never held up behind
    // the client's windows; never moved or shown. Here rather than at its
    // creation: a change of z-order is a round trip to the display server,
    // which the load need not wait for.
    ::SetWindowPos(hwnd(), HWND_TOPMOST, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE | SWP_NOACTIVATE);
    if (!m_actions->IsStarted())
        m_actions->Start();
    OnBuildUserInterface(0, 0);
}

void CToolBarWnd::OnFinalMessage(HWND) {
    delete this;
}

bool CToolBarWnd::ProcessMessage(UINT msg, WPARAM wp, LPARAM lp, LRESULT& result) {
    result = 0;
    switch (msg) {
        case kMsgStart:
            OnStart();
            return true;
        case WM_CLOSE:
            // Default processing destroys the window, unless it must wait.
            return !Leave();
        case WM_DESTROY:
            // Destroyed without a close (the thread ending, say): leave anyway.
            if (m_band || m_actions->IsStarted())
                Leave();
            return false;
        case kMsgRunModal:
            RunModal();
            return true;
        case kMsgBandLost:
            // The client destroying its windows takes the band with it: the
            // add-in goes too. A client that only rebuilt its bars keeps us.
            if (m_hHostWnd != nullptr && !::IsWindow(m_hHostWnd))
                ::PostMessageW(hwnd(), WM_CLOSE, 0, 0);
            else
                OnDestroyBand();
            return true;
        case WM_TIMER:
            if (wp == kBuildTimerId && !m_bBuilt) {
                try {
                    OnBuildUserInterface(kRetryWParam, kRetryLParam);
                } catch (...) {
                    VELK_LOG(L"@@@ Error : exception in the band build retry");
                }
            }
            return false;
        case host::kMsgBuildBand:
            OnBuildUserInterface(wp, lp);
            return true;
        case host::kMsgTearDownBand:
            result = OnDestroyBand();
            return true;
        case host::kMsgHookClient:
            result = host::CHostHook::Instance().OnHookOE(reinterpret_cast<HWND>(wp));
            return true;
        case host::kMsgUnhookWMail:
            result = host::CHostHook::Instance().OnUnhookWMail();
            return true;
        case host::kMsgCompanionReady:
            host::CHostHook::Instance().SetReady();
            return true;
        case host::kMsgSwitchReportButton:
            if (m_band && m_band->hwnd() != nullptr && m_band->enabled())
                m_band->SwitchReportButton(lp != 0);
            return true;
        case WM_COPYDATA:
            result = m_actions->OnCopyData(reinterpret_cast<HWND>(wp),
                                           reinterpret_cast<const COPYDATASTRUCT*>(lp));
            return true;
        default:
            return false;
    }
}

bool CToolBarWnd::Leave() {
    // The band's window lives in the client's rebar with a procedure of ours,
    // and the hook sits on the client's window: both go before anything else.
    OnDestroyBand();
    host::CHostHook::Instance().Unhook();
    ::KillTimer(hwnd(), kBuildTimerId);
    if (m_modalDepth > 0) {
        m_leavePending = true;
        return false;
    }
    m_leavePending = false;
    if (m_actions->WorkerAlive()) {
        // The worker's module reference may be the last one (the client freed
        // the library while we ran): it is let go only once no procedure of
        // ours is on this thread's stack any more (see StopForUnload).
        win32::WhenOutOfModule(m_actions->StopForUnload());
    } else {
        m_actions->Stop();
    }
    Globals().strings.UnInitialize();
    return true;
}

void CToolBarWnd::RequestModal(ModalKind kind, WORD command) {
    // One at a time; none once the add-in is leaving.
    if (m_modalDepth > 0 || m_modalPending || m_leavePending || hwnd() == nullptr)
        return;
    m_pendingKind = kind;
    m_pendingCommand = command;
    m_modalPending = true;
    ::PostMessageW(hwnd(), kMsgRunModal, 0, 0);
}

bool CToolBarWnd::BandAlive(unsigned generation) const noexcept {
    return m_band && generation == m_bandGeneration;
}

UINT CToolBarWnd::TrackMenu(HMENU menu, HWND under) {
    RECT r{};
    ::GetWindowRect(under, &r);
    // Owned by the client's window, the foreground one, so that a click
    // anywhere else closes the menu as usual.
    HWND owner = ::GetAncestor(m_band->hwnd(), GA_ROOT);
    m_menuRunning = true;
    const UINT chosen = static_cast<UINT>(::TrackPopupMenu(
        menu, TPM_RIGHTBUTTON | TPM_RETURNCMD | TPM_NONOTIFY, r.left, r.bottom, 0, owner, nullptr));
    m_menuRunning = false;
    return chosen;
}

void CToolBarWnd::RunSettingsWindow(WORD command) {
    const SettingsOpener open = FindSettingsOpener(command);
    if (open == nullptr)
        return;
    win32::UiContext ui;
    ui.where = Globals().where;
    ui.strings = &Globals().strings;
    ui.resources = host::ResourceModule();
    ui.owner = win32::TopLevelOwner(m_hHostWnd);
    // Owned by the client's window, not the band: the band may go while the
    // window stays open for the user.
    open(ui);
}

void CToolBarWnd::RunModal() {
    if (!m_modalPending)
        return;
    m_modalPending = false;
    const unsigned generation = m_bandGeneration;
    UINT chosen = 0;
    ++m_modalDepth;
    try {
        switch (m_pendingKind) {
            case ModalKind::kLogoMenu:
                if (BandAlive(generation)) {
                    HWND under = m_band->button_window(1);
                    const int sub = m_band->logo_submenu();
                    win32::unique_hmenu menu = m_band->LendLogoMenu();
                    if (menu)
                        chosen = TrackMenu(::GetSubMenu(menu.get(), sub), under);
                    if (BandAlive(generation))
                        m_band->ReturnLogoMenu(std::move(menu));
                }
                break;
            case ModalKind::kOverflowMenu:
                if (BandAlive(generation)) {
                    win32::unique_hmenu menu = m_band->BuildOverflowMenu();
                    if (menu)
                        chosen = TrackMenu(menu.get(), m_band->overflow_window());
                }
                break;
            case ModalKind::kSettingsWindow:
                RunSettingsWindow(m_pendingCommand);
                break;
        }
    } catch (...) {
        VELK_LOG(L"@@@ Error : exception in a menu or dialog of the band");
    }
    --m_modalDepth;
    if (m_modalDepth == 0)
        m_retiredBitmaps.clear();
    // The band's choice, only to the band it was made for.
    if (chosen != 0 && BandAlive(generation) && m_band->hwnd() != nullptr)
        ::SendMessageW(m_band->hwnd(), WM_COMMAND, MAKEWPARAM(chosen, 0), 0);
    if (m_modalDepth == 0 && m_leavePending)
        ::PostMessageW(hwnd(), WM_CLOSE, 0, 0);
}

void CToolBarWnd::FillRecords(bool show_report_buttons) {
    settings::IniProfile profile(Globals().where);
    QzResourceStringLoader& strings = Globals().strings;
    const std::wstring& folder = Globals().where.install_dir;
    for (ToolBarButtonRecord& r : m_records)
        r = ToolBarButtonRecord();

    ToolBarButtonRecord& logo = m_records[0];
    logo.hBitmap = m_bitmaps[0].get();
    logo.strTooltip = SubstituteCompany(strings.LoadStringW(L"IDS_QZ_TOOLTIP"), profile, strings);
    const std::wstring logo_tip = settings::ReadText(profile, Key::VELKLogoTooltip);
    if (!logo_tip.empty())
        logo.strTooltip = logo_tip;
    logo.nKind = kKindPushButton;
    logo.nVariant = kVariantPlain;
    logo.nStyle = 9;
    logo.nId = ID_TB_LOGO;

    ToolBarButtonRecord& menu = m_records[1];
    menu.strCaption = strings.LoadStringW(L"IDS_POPUP_CAPTION");
    const std::wstring menu_name = settings::ReadText(profile, Key::VELKMenuBarName);
    if (!menu_name.empty())
        menu.strCaption = menu_name;
    menu.nKind = kKindPushButton;
    menu.nVariant = kVariantDropDown;
    menu.nStyle = 9;
    menu.nId = ID_TB_MENU_BUTTON;

    m_records[2] =
        ToolBarButtonRecord{nullptr, nullptr, L"", L"", kKindSeparator, kVariantPlain, 9, -1};
    if (!show_report_buttons)
        return;
    m_records[5] =
        ToolBarButtonRecord{nullptr, nullptr, L"", L"", kKindSeparator, kVariantSeparator, 9, -1};
    // Report Spam and Report FP: each a bitmap pair (overridable), a caption
    // and a tooltip.
    auto report_button = [&](int i, Key icon, Key icon_disabled, int bitmap, int bitmap_disabled,
                             const wchar_t* caption, const wchar_t* tooltip, std::int32_t id) {
        m_bitmaps[i] = LoadBandBitmap(profile, folder, icon, bitmap);
        m_bitmapsDisabled[i] = LoadBandBitmap(profile, folder, icon_disabled, bitmap_disabled);
        m_records[i] = ToolBarButtonRecord{m_bitmaps[i].get(),
                                           m_bitmapsDisabled[i].get(),
                                           strings.LoadStringW(caption),
                                           strings.LoadStringW(tooltip),
                                           kKindPushButton,
                                           kVariantPlain,
                                           9,
                                           id};
    };
    report_button(6, Key::VELKReportSpamIcon, Key::VELKReportSpamIconDisabled, IDB_REPORT_SPAM,
                  IDB_REPORT_SPAM_DISABLED, L"IDS_RPTSPAM_CAPTION", L"IDS_RPTSPAM_TOOLTIP",
                  ID_TB_REPORT_SPAM);
    report_button(7, Key::VELKReportFpIcon, Key::VELKReportFpIconDisabled, IDB_REPORT_FP,
                  IDB_REPORT_FP_DISABLED, L"IDS_RPTFP_CAPTION", L"IDS_RPTFP_TOOLTIP",
                  ID_TB_REPORT_FP);
}

void CToolBarWnd::OnBuildUserInterface(WPARAM wp, LPARAM lp) {
    if (m_bBuilt)
        return;
    m_hHostWnd = nullptr;  // a handle from SetOEBrowserWnd is not relied on
    HWND host = host::CHostHook::Instance().hooked_window();
    if (host == nullptr)
        host = ::FindWindowW(host::kClientMainWindowClass, nullptr);
    if (host == nullptr) {
        if (!(wp == kRetryWParam && lp == kRetryLParam))
            ::SetTimer(hwnd(), kBuildTimerId, kBuildRetryMs, nullptr);
        return;
    }
    ::KillTimer(hwnd(), kBuildTimerId);
    m_hHostWnd = host;
    m_bBuilt = TRUE;

    settings::IniProfile install(Globals().where);
    const bool show_report = settings::ReadTrimmed(install, Key::ShowReportButton) != L"0";

    HWND sizable = ::FindWindowExW(host, nullptr, host::kClientSizableRebarClass, nullptr);
    if (sizable == nullptr)
        return;  // stays "built": no retry until a tear-down
    HWND rebar = ::FindWindowExW(sizable, nullptr, REBARCLASSNAMEW, nullptr);
    if (m_wmail && rebar != nullptr)
        rebar = ::FindWindowExW(sizable, rebar, REBARCLASSNAMEW, nullptr);
    if (rebar == nullptr)
        return;
    m_hRebar = rebar;
    m_bRebarAttached = TRUE;

    const std::wstring& folder = Globals().where.install_dir;
    m_bitmaps[0] = LoadBandBitmap(install, folder, Key::VELKLogo, IDB_LOGO);

    Globals().user_id = host::LookupIdentityId();
    host::RunPerUserStart(Globals().where, Globals().user_id, host::CComUtilSet::IsX64System());
    settings::IniProfile profile(Globals().where);

    if (!Globals().strings.Initialize(L"VELK_OE_AGENT")) {
        log::AssertReport(L"..\\win32\\ToolBarWnd", 1168, L"CToolBarWnd::OnBuildUserInterface",
                          L"Error: MUI string loader initialize failed!");
    }
    FillRecords(show_report);
    if (!m_background) {
        m_background.reset(::CreateMappedBitmap(host::ResourceModule(),
                                                m_wmail ? IDB_DROPDOWN_WM : IDB_DROPDOWN_OE, 0,
                                                const_cast<COLORMAP*>(TransparentKeyMap()), 1));
    }
    const bool enable = settings::ReadTrimmed(profile, Key::EnableTBar) != L"0";

    m_band.reset(
        new CToolBarBand(m_records, show_report ? 8 : 6, m_wmail, m_background.get(), this));
    m_band->SetLostHandler([self = hwnd()] { ::PostMessageW(self, kMsgBandLost, 0, 0); });
    if (!m_band->Create(m_hHostWnd)) {
        VELK_LOG(L"@@@ Error : can't create the band window");
        return;
    }
    if (!InsertBand())
        VELK_LOG(L"@@@ Error : can't insert the band into the rebar");
    m_band->EnableButtons(enable);
    ::SetFocus(::GetParent(m_band->hwnd()));
    if (!m_wmail && host::CHostHook::Instance().OnHookOE(m_hHostWnd) == 0)
        VELK_LOG(L"@@@ Error : Can't change the wndproc of OE");
}

bool CToolBarWnd::InsertBand() {
    m_rbbi = REBARBANDINFOW{};
    m_rbbi.cbSize = sizeof(REBARBANDINFOW);
    m_rbbi.fMask = 0x3F3;  // style, colours, child, child size, size, background, id, ideal size
    m_rbbi.fStyle = RBBS_BREAK;
    m_rbbi.cxMinChild = 58;
    m_rbbi.cyMinChild = static_cast<UINT>(m_band->min_cy());
    m_rbbi.cx = 0;
    m_rbbi.cxIdeal = 585;
    m_rbbi.wID = kBandId;
    m_rbbi.cxHeader = 32;
    m_rbbi.hwndChild = m_band->hwnd();
    if (!::SendMessageW(m_hRebar, RB_INSERTBANDW, static_cast<WPARAM>(-1),
                        reinterpret_cast<LPARAM>(&m_rbbi))) {
        return false;
    }
    m_nBandIndex = static_cast<int>(::SendMessageW(m_hRebar, RB_IDTOINDEX, kBandId, 0));
    return true;
}

LRESULT CToolBarWnd::OnDestroyBand() {
    // Each step on its own: a failure in one must not keep the others from
    // releasing what they own.
    try {
        if (m_bBuilt) {
            if (m_hHostWnd != nullptr && m_band && m_band->hwnd() != nullptr)
                ::ShowWindow(m_band->hwnd(), SW_HIDE);
            m_hHostWnd = nullptr;
            if (m_bRebarAttached) {
                if (m_nBandIndex != -1 && ::IsWindow(m_hRebar)) {
                    // The stored index goes stale when a band before ours
                    // comes or goes; the id does not. No band of that id: ours
                    // is gone already, and the index names someone else's.
                    const LRESULT index = ::SendMessageW(m_hRebar, RB_IDTOINDEX, kBandId, 0);
                    if (index >= 0)
                        ::SendMessageW(m_hRebar, RB_DELETEBAND, static_cast<WPARAM>(index), 0);
                }
                m_nBandIndex = -1;
                m_hRebar = nullptr;
                m_bRebarAttached = FALSE;
            }
            if (!m_wmail)
                ::SetEnvironmentVariableW(L"OEToolbarStatus", L"Closed");
            m_bBuilt = FALSE;
        }
    } catch (...) {
        VELK_LOG(L"@@@ Error : exception while taking the band out");
    }
    try {
        if (m_band) {
            ++m_bandGeneration;
            // A menu of the band closes with it; a dialog stays open.
            if (m_menuRunning)
                ::EndMenu();
        }
        m_band.reset();
    } catch (...) {
        VELK_LOG(L"@@@ Error : exception while destroying the band");
    }
    ReleaseBitmaps();
    return 0;
}

void CToolBarWnd::ReleaseBitmaps() {
    for (int i = 0; i < kRecordCount; ++i) {
        for (win32::unique_hbitmap* bitmap : {&m_bitmaps[i], &m_bitmapsDisabled[i]}) {
            // A menu still running may show it until it has returned.
            if (m_modalDepth > 0 && *bitmap)
                m_retiredBitmaps.push_back(std::move(*bitmap));
            bitmap->reset();
        }
        m_records[i].hBitmap = nullptr;
        m_records[i].hBitmapDisabled = nullptr;
    }
}

}  // namespace velk::toolbar
