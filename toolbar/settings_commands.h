// The settings windows behind the logo menu: one table from a menu command to
// the function that opens its window modally. Each window is built in its own
// folder and exposes `void Show...(const win32::UiContext&)`; wiring one in
// is a change of its row here (and the include of its header).
#pragma once

#include <windows.h>

#include "common_src/win32/ui_context.h"

namespace velk::toolbar {

// Opens a settings window and returns when the user has closed it.
using SettingsOpener = void (*)(const win32::UiContext&);

// Whether `command` is one of the table's menu commands.
bool IsSettingsCommand(WORD command) noexcept;

// The opener of `command`; null for a command without a window yet (the
// entry then does nothing) and for any other command.
SettingsOpener FindSettingsOpener(WORD command) noexcept;

// Tests: `opener` answers for `command` instead of the table's row until it
// is reset with null.
void SetSettingsOpenerForTest(WORD command, SettingsOpener opener) noexcept;

}  // namespace velk::toolbar
