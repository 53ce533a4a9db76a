// The settings windows, opened in this process as the band opens them and
// driven as a user would: the filtering sheet on each of its tabs with the
// dialogs its buttons open, statistics, updates with its proxy dialog,
// cloud feedback and About.
#pragma once

#include "common_src/win32/ui_context.h"
#include "tools/screenshots/shot_steps.h"

namespace velk::screens {

void ShootSettingsWindows(const win32::UiContext& ui, Album& album);

}  // namespace velk::screens
