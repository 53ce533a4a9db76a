#include "settings_ui/link_filter_panel.h"

#include <algorithm>

#include "settings/ini_profile.h"
#include "settings_ui/sheet_common.h"
#include "settings_ui/sheet_ids.h"

namespace velk::settings_ui {
namespace {

const win32::ControlText kTexts[] = {
    {IDC_LINK_GROUP, L"IDS_LINK_GROUP"},
    {IDC_LINK_ENABLE, L"IDS_LINK_ENABLE"},
    {IDC_LINK_WARN_MISMATCH, L"IDS_LINK_WARN_MISMATCH"},
    {IDC_LINK_FLAG_NUMERIC, L"IDS_LINK_FLAG_NUMERIC"},
    {IDC_LINK_TRUSTED_GROUP, L"IDS_LINK_TRUSTED_GROUP"},
    {IDC_LINK_TRUSTED_INTRO, L"IDS_LINK_TRUSTED_INTRO"},
    {IDC_LINK_DOMAIN_LABEL, L"IDS_LINK_DOMAIN_LABEL"},
    {IDC_LINK_ADD, L"IDS_LINK_ADD"},
    {IDC_LINK_REMOVE, L"IDS_LINK_REMOVE"},
};

std::vector<std::wstring> Sorted(std::vector<std::wstring> domains) {
    std::sort(domains.begin(), domains.end());
    return domains;
}

}  // namespace

CLinkFilterPanel::CLinkFilterPanel(const win32::UiContext& ui) : m_ui(ui) {}

bool CLinkFilterPanel::Create(HWND page, HBRUSH white) {
    m_hbrWhite = white;
    return CreateModeless(m_ui.resources, IDD_LINK_FILTER_PANEL, page) != nullptr;
}

void CLinkFilterPanel::OnInitDialog() {
    win32::ApplyTexts(hwnd(), m_ui, kTexts);
    settings::IniProfile profile(m_ui.where);
    m_saved = LoadLinkFilter(profile);
    SetChecked(hwnd(), IDC_LINK_ENABLE, m_saved.enabled);
    SetChecked(hwnd(), IDC_LINK_WARN_MISMATCH, m_saved.warn_mismatched);
    SetChecked(hwnd(), IDC_LINK_FLAG_NUMERIC, m_saved.flag_numeric);
    for (const std::wstring& domain : m_saved.trusted) {
        ::SendDlgItemMessageW(hwnd(), IDC_LINK_LIST, LB_ADDSTRING, 0,
                              reinterpret_cast<LPARAM>(domain.c_str()));
    }
    ::SendDlgItemMessageW(hwnd(), IDC_LINK_DOMAIN_EDIT, EM_SETLIMITTEXT, 2048, 0);
    m_domainEdit.Attach(::GetDlgItem(hwnd(), IDC_LINK_DOMAIN_EDIT));
    UpdateControls();
}

std::vector<std::wstring> CLinkFilterPanel::ListedDomains() const {
    std::vector<std::wstring> domains;
    HWND list = ::GetDlgItem(hwnd(), IDC_LINK_LIST);
    const int count = static_cast<int>(::SendMessageW(list, LB_GETCOUNT, 0, 0));
    for (int i = 0; i < count; ++i) {
        const int length = static_cast<int>(::SendMessageW(list, LB_GETTEXTLEN, i, 0));
        if (length <= 0)
            continue;
        std::wstring text(static_cast<std::size_t>(length) + 1, L'\0');
        ::SendMessageW(list, LB_GETTEXT, i, reinterpret_cast<LPARAM>(&text[0]));
        text.resize(static_cast<std::size_t>(length));
        domains.push_back(std::move(text));
    }
    return domains;
}

LinkFilterValues CLinkFilterPanel::Values() const {
    if (hwnd() == nullptr)
        return m_saved;
    LinkFilterValues values;
    values.enabled = IsChecked(hwnd(), IDC_LINK_ENABLE);
    values.warn_mismatched = IsChecked(hwnd(), IDC_LINK_WARN_MISMATCH);
    values.flag_numeric = IsChecked(hwnd(), IDC_LINK_FLAG_NUMERIC);
    values.trusted = ListedDomains();
    return values;
}

bool CLinkFilterPanel::Changed() const {
    LinkFilterValues now = Values();
    LinkFilterValues saved = m_saved;
    // The list shows the domains sorted; the order they were stored in is no change.
    now.trusted = Sorted(now.trusted);
    saved.trusted = Sorted(saved.trusted);
    return !(now == saved);
}

bool CLinkFilterPanel::Save() {
    const LinkFilterValues values = Values();
    settings::IniProfile profile(m_ui.where);
    const bool written = SaveLinkFilter(profile, values);
    m_saved = values;
    return written;
}

void CLinkFilterPanel::AddDomain() {
    const std::wstring typed = ItemText(hwnd(), IDC_LINK_DOMAIN_EDIT);
    HWND edit = ::GetDlgItem(hwnd(), IDC_LINK_DOMAIN_EDIT);
    const std::optional<std::wstring> domain = NormalizeDomain(typed);
    if (!domain) {
        win32::ShowMessage(hwnd(), m_ui, L"IDS_LINK_BAD_DOMAIN", L"IDS_WARNING_CAPTION",
                           MB_OK | MB_ICONWARNING);
        ::SetFocus(edit);
        ::SendMessageW(edit, EM_SETSEL, 0, -1);
        return;
    }
    HWND list = ::GetDlgItem(hwnd(), IDC_LINK_LIST);
    int index = static_cast<int>(::SendMessageW(list, LB_FINDSTRINGEXACT, static_cast<WPARAM>(-1),
                                                reinterpret_cast<LPARAM>(domain->c_str())));
    if (index == LB_ERR) {
        std::vector<std::wstring> domains = ListedDomains();
        domains.push_back(*domain);
        if (!TrustedDomainsFit(domains)) {
            win32::ShowMessage(hwnd(), m_ui, L"IDS_LINK_LIST_FULL", L"IDS_WARNING_CAPTION",
                               MB_OK | MB_ICONWARNING);
            ::SetFocus(edit);
            return;
        }
        index = static_cast<int>(
            ::SendMessageW(list, LB_ADDSTRING, 0, reinterpret_cast<LPARAM>(domain->c_str())));
    }
    // The domain shows selected, new or already there, and the box is ready
    // for the next one.
    ::SendMessageW(list, LB_SETSEL, FALSE, -1);
    ::SendMessageW(list, LB_SETSEL, TRUE, index);
    ::SendMessageW(list, LB_SETCARETINDEX, index, FALSE);
    ::SetWindowTextW(edit, L"");
    ::SetFocus(edit);
    UpdateControls();
}

void CLinkFilterPanel::RemoveSelected() {
    HWND list = ::GetDlgItem(hwnd(), IDC_LINK_LIST);
    const int selected = static_cast<int>(::SendMessageW(list, LB_GETSELCOUNT, 0, 0));
    if (selected <= 0)
        return;
    std::vector<int> items(static_cast<std::size_t>(selected));
    ::SendMessageW(list, LB_GETSELITEMS, selected, reinterpret_cast<LPARAM>(items.data()));
    std::sort(items.rbegin(), items.rend());
    for (int item : items)
        ::SendMessageW(list, LB_DELETESTRING, item, 0);
    // The next domain takes the place of the first one removed.
    const int count = static_cast<int>(::SendMessageW(list, LB_GETCOUNT, 0, 0));
    if (count > 0) {
        const int next = std::min(items.back(), count - 1);
        ::SendMessageW(list, LB_SETSEL, TRUE, next);
        ::SendMessageW(list, LB_SETCARETINDEX, next, FALSE);
    }
    UpdateControls();
    if (count == 0)
        ::SetFocus(::GetDlgItem(hwnd(), IDC_LINK_DOMAIN_EDIT));
}

void CLinkFilterPanel::UpdateControls() {
    const bool on = IsChecked(hwnd(), IDC_LINK_ENABLE);
    ::EnableWindow(::GetDlgItem(hwnd(), IDC_LINK_WARN_MISMATCH), on);
    ::EnableWindow(::GetDlgItem(hwnd(), IDC_LINK_FLAG_NUMERIC), on);
    ::EnableWindow(::GetDlgItem(hwnd(), IDC_LINK_ADD),
                   ::GetWindowTextLengthW(::GetDlgItem(hwnd(), IDC_LINK_DOMAIN_EDIT)) > 0);
    HWND remove = ::GetDlgItem(hwnd(), IDC_LINK_REMOVE);
    const bool any = ::SendDlgItemMessageW(hwnd(), IDC_LINK_LIST, LB_GETSELCOUNT, 0, 0) > 0;
    if (!any && ::GetFocus() == remove)
        ::SetFocus(::GetDlgItem(hwnd(), IDC_LINK_LIST));
    ::EnableWindow(remove, any);
}

bool CLinkFilterPanel::ProcessMessage(UINT msg, WPARAM wp, LPARAM lp, LRESULT& result) {
    switch (msg) {
        case WM_INITDIALOG:
            OnInitDialog();
            result = FALSE;
            return true;
        case WM_COMMAND:
            switch (LOWORD(wp)) {
                case IDC_LINK_ENABLE:
                    UpdateControls();
                    break;
                case IDC_LINK_ADD:
                    if (HIWORD(wp) == BN_CLICKED)
                        AddDomain();
                    break;
                case IDC_LINK_REMOVE:
                    if (HIWORD(wp) == BN_CLICKED)
                        RemoveSelected();
                    break;
                case IDC_LINK_DOMAIN_EDIT:
                    if (HIWORD(wp) == EN_CHANGE)
                        UpdateControls();
                    break;
                case IDC_LINK_LIST:
                    if (HIWORD(wp) == LBN_SELCHANGE)
                        UpdateControls();
                    break;
                default:
                    return false;
            }
            result = 0;
            return true;
        case WM_VKEYTOITEM:
            // Del in the list removes the selected domains.
            if (LOWORD(wp) == VK_DELETE) {
                RemoveSelected();
                result = -2;
            } else {
                result = -1;
            }
            return true;
        default:
            return PaintWhite(msg, wp, m_hbrWhite, result);
    }
}

bool CLinkFilterPanel::DomainEdit::ProcessMessage(UINT msg, WPARAM wp, LPARAM lp, LRESULT& result) {
    const bool has_text = ::GetWindowTextLengthW(hwnd()) > 0;
    switch (msg) {
        case WM_GETDLGCODE: {
            result = CallDefault(msg, wp, lp);
            const auto* m = reinterpret_cast<const MSG*>(lp);
            if (has_text && m != nullptr && m->message == WM_KEYDOWN && m->wParam == VK_RETURN)
                result |= DLGC_WANTALLKEYS;
            return true;
        }
        case WM_KEYDOWN:
            if (wp != VK_RETURN || !has_text)
                return false;
            ::SendMessageW(
                ::GetParent(hwnd()), WM_COMMAND, MAKEWPARAM(IDC_LINK_ADD, BN_CLICKED),
                reinterpret_cast<LPARAM>(::GetDlgItem(::GetParent(hwnd()), IDC_LINK_ADD)));
            result = 0;
            return true;
        case WM_CHAR:
            // The Enter that added the domain: no beep.
            if (wp == L'\r') {
                result = 0;
                return true;
            }
            return false;
        default:
            return false;
    }
}

}  // namespace velk::settings_ui
