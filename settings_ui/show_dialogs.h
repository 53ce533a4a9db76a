// The logo menu's dialogs, each run modally, owned by the client's
// top-level window (ui.owner) and centred on it. They return once the user
// closed the dialog; what was confirmed is saved by then.
#pragma once

#include "common_src/win32/ui_context.h"

namespace velk::settings_ui {

void ShowUpdates(const win32::UiContext& ui);
void ShowCloudFeedback(const win32::UiContext& ui);
void ShowAbout(const win32::UiContext& ui);

}  // namespace velk::settings_ui
