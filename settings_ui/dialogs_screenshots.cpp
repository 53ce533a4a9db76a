// Takes the screenshots of this folder's windows as the user sees them:
// settings_dialogs_shots.exe OUTPUT_DIR writes updates.bmp, proxy.bmp,
// cloud_feedback.bmp, about.bmp and advanced_page.bmp there
// (settings_ui/take-screenshots.sh turns them into docs/*.png).
#include <cstdio>
#include <string>

#include "demo/driver/screen_shot.h"
#include "settings_ui/about_dlg.h"
#include "settings_ui/crx_dlg.h"
#include "settings_ui/dialog_ids.h"
#include "settings_ui/dialogs_showcase.h"
#include "settings_ui/proxy_dlg.h"
#include "settings_ui/updates_dlg.h"

namespace {

void Settle() {
    for (int i = 0; i < 15; ++i) {
        MSG msg;
        while (::PeekMessageW(&msg, nullptr, 0, 0, PM_REMOVE))
            ::DispatchMessageW(&msg);
        ::Sleep(20);
    }
}

bool Save(HWND window, const std::wstring& path) {
    velk::demo::Picture picture;
    const bool saved = velk::demo::CaptureWindow(window, picture) && velk::demo::SaveBmp(picture, path);
    std::fprintf(stderr, "%ls: %s\n", path.c_str(), saved ? "saved" : "FAILED");
    return saved;
}

template <class D>
bool Shoot(const velk::win32::UiContext& ui, int template_id, const std::wstring& path) {
    D dialog(ui);
    HWND window = dialog.CreateModeless(ui.resources, template_id, nullptr);
    if (window == nullptr)
        return false;
    ::SetWindowPos(window, HWND_TOPMOST, 20, 20, 0, 0, SWP_NOSIZE | SWP_SHOWWINDOW);
    Settle();
    return Save(window, path);
}

}  // namespace

int wmain(int argc, wchar_t** argv) {
    if (argc < 2) {
        std::fprintf(stderr, "usage: settings_dialogs_shots OUTPUT_DIR\n");
        return 2;
    }
    const std::wstring out = std::wstring(argv[1]) + L"\\";
    velk::settings_ui::showcase::World world;
    if (!world.Open(VELK_SHOTS_LANGUAGE_MODULE, VELK_SHOTS_RESOURCE_ROOT))
        return 1;
    const auto& ui = world.ui();
    using namespace velk::settings_ui;
    bool ok = Shoot<CUpdatesDlg>(ui, IDD_UPDATES, out + L"updates.bmp");
    ok = Shoot<CProxySettingDlg>(ui, IDD_PROXY_SETTINGS, out + L"proxy.bmp") && ok;
    ok = Shoot<CCRXDlg>(ui, IDD_CLOUD_FEEDBACK, out + L"cloud_feedback.bmp") && ok;
    ok = Shoot<CAboutDlg>(ui, IDD_ABOUT, out + L"about.bmp") && ok;
    bool page_saved = false;
    showcase::RunAdvancedPageSheet(ui, ui.Text(L"IDS_STRING_FILTERING_SHEET"), [&](HWND sheet) {
        ::SetWindowPos(sheet, HWND_TOPMOST, 20, 20, 0, 0, SWP_NOSIZE | SWP_SHOWWINDOW);
        Settle();
        page_saved = Save(sheet, out + L"advanced_page.bmp");
    });
    return ok && page_saved ? 0 : 1;
}
