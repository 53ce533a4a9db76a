#include "tools/screenshots/settings_shots.h"

#include <commctrl.h>
#include <prsht.h>

#include "senders/pages/sender_page_ids.h"
#include "settings_ui/dialog_ids.h"
#include "settings_ui/filtering_sheet.h"
#include "settings_ui/sheet_ids.h"
#include "settings_ui/show_dialogs.h"
#include "statistics/statistics_dlg.h"
#include "statistics/statistics_ids.h"
#include "tools/screenshots/shot_steps.h"

namespace velk::screens {
namespace {

HWND CurrentPage(HWND sheet) {
    return reinterpret_cast<HWND>(::SendMessageW(sheet, PSM_GETCURRENTPAGEHWND, 0, 0));
}

// The sheet on one of its tabs, waiting until that page is the current one.
void ShowTab(Steps& steps, int tab) {
    steps.Until(L"sheet tab " + std::to_wstring(tab), [tab] {
        HWND sheet = FindOwnSheet();
        if (sheet == nullptr)
            return false;
        ::SendMessageW(sheet, PSM_SETCURSEL, tab, 0);
        return ::SendMessageW(sheet, PSM_HWNDTOINDEX, reinterpret_cast<WPARAM>(CurrentPage(sheet)),
                              0) == tab;
    });
}

// A row chosen, as the user does before Edit: the picture shows the
// selection and Edit enabled.
bool SelectSenderRow(int row) {
    HWND list = FindControl(CurrentPage(FindOwnSheet()), IDC_SENDER_LIST);
    if (list == nullptr || ::SendMessageW(list, LVM_GETITEMCOUNT, 0, 0) <= row)
        return false;
    LVITEMW item{};
    item.stateMask = LVIS_SELECTED | LVIS_FOCUSED;
    item.state = LVIS_SELECTED | LVIS_FOCUSED;
    ::SendMessageW(list, LVM_SETITEMSTATE, row, reinterpret_cast<LPARAM>(&item));
    ::SetFocus(list);
    return true;
}

void ShootSheet(const win32::UiContext& ui, Album& album) {
    auto sheet = [] { return FindOwnSheet(); };
    auto page = [] { return CurrentPage(FindOwnSheet()); };
    auto category = [] { return FindOwnDialog(IDC_CATEGORY_SLIDER_FIRST); };
    auto serenel = [] { return FindOwnDialog(IDC_SERENEL_ENABLE); };
    auto sender = [] { return FindOwnDialog(IDC_EDIT_ADDRESS); };
    Steps steps(album);
    steps.Shoot(L"sheet_spam_detection", sheet)
        .Click(page, IDC_DEFAULT_CUSTOMIZE)
        .Shoot(L"category_level", category)
        .Command(category, IDOK)
        .Until(L"category_level: did not close", [category] { return category() == nullptr; })
        .Shoot(L"sheet_spam_detection_custom", sheet)
        .Click(page, IDC_CUSTOM_SERENEL)
        .Shoot(L"serenel_level", serenel)
        .Command(serenel, IDCANCEL)
        .Until(L"serenel_level: did not close", [serenel] { return serenel() == nullptr; });
    ShowTab(steps, 1);
    steps.Shoot(L"sheet_link_filter", sheet);
    ShowTab(steps, 2);
    steps.Until(L"sheet_approved_senders: no sender to choose", [] { return SelectSenderRow(1); })
        .Shoot(L"sheet_approved_senders", sheet)
        .Click(page, IDC_SENDER_EDIT)
        .Shoot(L"sender_edit", sender)
        .Command(sender, IDCANCEL)
        .Until(L"sender_edit: did not close", [sender] { return sender() == nullptr; });
    ShowTab(steps, 3);
    steps.Shoot(L"sheet_blocked_senders", sheet);
    ShowTab(steps, 4);
    steps.Shoot(L"sheet_blocked_languages", sheet);
    ShowTab(steps, 5);
    steps.Shoot(L"sheet_advanced", sheet).Command(sheet, IDCANCEL);
    steps.Run(L"the filtering sheet", [&] { settings_ui::ShowFilteringSheet(ui); });
}

// One modal dialog: its picture, then closed as with Cancel.
void ShootDialog(Album& album, const std::wstring& name, int control_id,
                 const std::function<void()>& open) {
    auto dialog = [control_id] { return FindOwnDialog(control_id); };
    Steps steps(album);
    steps.Shoot(name, dialog).Command(dialog, IDCANCEL);
    steps.Run(name, open);
}

}  // namespace

void ShootSettingsWindows(const win32::UiContext& ui, Album& album) {
    ShootSheet(ui, album);
    ShootDialog(album, L"statistics", IDC_STAT_CHART, [&] { statistics::ShowStatistics(ui); });
    {
        auto updates = [] { return FindOwnDialog(IDC_UPD_PROXY); };
        auto proxy = [] { return FindOwnDialog(IDC_PROXY_ENABLE); };
        Steps steps(album);
        steps.Shoot(L"updates", updates)
            .Click(updates, IDC_UPD_PROXY)
            .Shoot(L"proxy", proxy)
            .Command(proxy, IDCANCEL)
            .Until(L"proxy: did not close", [proxy] { return proxy() == nullptr; })
            .Command(updates, IDCANCEL);
        steps.Run(L"updates", [&] { settings_ui::ShowUpdates(ui); });
    }
    ShootDialog(album, L"cloud_feedback", IDC_CRX_YES, [&] { settings_ui::ShowCloudFeedback(ui); });
    ShootDialog(album, L"about", IDC_ABOUT_VERSION, [&] { settings_ui::ShowAbout(ui); });
}

}  // namespace velk::screens
