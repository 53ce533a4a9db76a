// The process-wide state of one loaded add-in, in one place: the folders
// fixed at start-up and by the per-user start, the shared string loader and
// the language module. The toolbar window and its band are the toolbar's
// own business (CToolBarWnd::Instance()).
//
// Everything here is touched on the client's user-interface thread only.
#pragma once

#include <windows.h>

#include <string>

#include "common_src/win32/QzResourceStringLoader.h"
#include "settings/settings_paths.h"

namespace velk::host {

struct AddinGlobals {
    // install_dir is the module folder ("\"-terminated), data_dir the common
    // data folder; user_dir and user_ini follow the client's identity.
    settings::SettingsLocations where;
    std::wstring user_id;

    // Dialogs, menus and bitmaps come from the language module; null falls
    // back to the add-in itself (tests that run without one).
    HINSTANCE resources = nullptr;

    QzResourceStringLoader strings;
};

AddinGlobals& Globals() noexcept;

// The module whose resources the current call uses.
inline HINSTANCE ResourceModule() noexcept {
    HINSTANCE r = Globals().resources;
    return r != nullptr ? r : reinterpret_cast<HINSTANCE>(::GetModuleHandleW(nullptr));
}

}  // namespace velk::host
