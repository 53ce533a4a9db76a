#include "toolbar/settings_commands.h"

#include "resources/resource_ids.h"
#include "settings_ui/filtering_sheet.h"
#include "settings_ui/show_dialogs.h"
#include "statistics/statistics_dlg.h"

namespace velk::toolbar {
namespace {

struct SettingsCommand {
    WORD command;
    SettingsOpener open;
};

// One row per window.
constexpr SettingsCommand kSettingsCommands[] = {
    {ID_MENU_FILTERING_SETTINGS, &settings_ui::ShowFilteringSheet},
    {ID_MENU_STATISTICS, &statistics::ShowStatistics},
    {ID_MENU_UPDATES, &settings_ui::ShowUpdates},
    {ID_MENU_CLOUD_FEEDBACK, &settings_ui::ShowCloudFeedback},
    {ID_MENU_ABOUT, &settings_ui::ShowAbout},
};

WORD g_testCommand = 0;
SettingsOpener g_testOpener = nullptr;

}  // namespace

bool IsSettingsCommand(WORD command) noexcept {
    for (const SettingsCommand& row : kSettingsCommands) {
        if (row.command == command)
            return true;
    }
    return false;
}

SettingsOpener FindSettingsOpener(WORD command) noexcept {
    if (g_testOpener != nullptr && command == g_testCommand)
        return g_testOpener;
    for (const SettingsCommand& row : kSettingsCommands) {
        if (row.command == command)
            return row.open;
    }
    return nullptr;
}

void SetSettingsOpenerForTest(WORD command, SettingsOpener opener) noexcept {
    g_testCommand = command;
    g_testOpener = opener;
}

}  // namespace velk::toolbar
