#include "settings_ui/show_dialogs.h"

#include "log/diag_log.h"
#include "settings_ui/about_dlg.h"
#include "settings_ui/crx_dlg.h"
#include "settings_ui/updates_dlg.h"

namespace velk::settings_ui {
namespace {

template <class D>
void Show(const win32::UiContext& ui, const wchar_t* name) {
    D dialog(ui);
    if (dialog.Run() == -1)
        VELK_LOG(L"@@@ Error : can't open the %s dialog (%lu)", name, ::GetLastError());
}

}  // namespace

void ShowUpdates(const win32::UiContext& ui) {
    Show<CUpdatesDlg>(ui, L"updates");
}

void ShowCloudFeedback(const win32::UiContext& ui) {
    Show<CCRXDlg>(ui, L"cloud feedback");
}

void ShowAbout(const win32::UiContext& ui) {
    Show<CAboutDlg>(ui, L"About");
}

}  // namespace velk::settings_ui
