// Opening each window of this folder until it has painted, then closing it.
#include <cstdio>
#include <string>

#include "common_src/bench/bench.h"
#include "settings_ui/about_dlg.h"
#include "settings_ui/crx_dlg.h"
#include "settings_ui/dialog_ids.h"
#include "settings_ui/dialogs_showcase.h"
#include "settings_ui/proxy_dlg.h"
#include "settings_ui/updates_dlg.h"

namespace {

constexpr std::size_t kSamples = 30;
const std::string kTarget = "at most 30 ms (30000 us) under Wine";

template <class D>
void BenchDialog(const velk::win32::UiContext& ui, int template_id, const std::string& name) {
    const auto stats = velk::bench::Measure(kSamples, [&] {
        D dialog(ui);
        HWND window = dialog.CreateModeless(ui.resources, template_id, nullptr);
        ::ShowWindow(window, SW_SHOWNOACTIVATE);
        ::RedrawWindow(window, nullptr, nullptr, RDW_UPDATENOW | RDW_ALLCHILDREN);
    });
    velk::bench::Report(name, stats, kTarget);
}

}  // namespace

int main() {
    velk::settings_ui::showcase::World world;
    if (!world.Open(VELK_BENCH_LANGUAGE_MODULE, VELK_BENCH_RESOURCE_ROOT))
        return 1;
    const auto& ui = world.ui();
    using namespace velk::settings_ui;
    BenchDialog<CUpdatesDlg>(ui, IDD_UPDATES, "settings_ui updates dialog open+paint");
    BenchDialog<CProxySettingDlg>(ui, IDD_PROXY_SETTINGS, "settings_ui proxy dialog open+paint");
    BenchDialog<CCRXDlg>(ui, IDD_CLOUD_FEEDBACK, "settings_ui cloud feedback dialog open+paint");
    BenchDialog<CAboutDlg>(ui, IDD_ABOUT, "settings_ui About box open+paint");
    const auto page = velk::bench::Measure(kSamples, [&] {
        showcase::RunAdvancedPageSheet(ui, L"Bench", nullptr);
    });
    velk::bench::Report("settings_ui advanced page in a bare sheet open+paint+cancel", page, kTarget);
    return 0;
}
