#include "toolbar/settings_commands.h"

#include "resources/resource_ids.h"

namespace velk::toolbar {
namespace {

struct SettingsCommand {
    WORD command;
    SettingsOpener open;
};

// One row per window; a null opener is a window still to come.
constexpr SettingsCommand kSettingsCommands[] = {
    {ID_MENU_FILTERING_SETTINGS, nullptr},  // the filtering settings sheet
    {ID_MENU_STATISTICS, nullptr},          // the statistics dialog
    {ID_MENU_UPDATES, nullptr},             // the updates dialog
    {ID_MENU_CLOUD_FEEDBACK, nullptr},      // the cloud-feedback dialog
    {ID_MENU_ABOUT, nullptr},               // the About box
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
