// Small helpers the dialogs of this folder share: control texts and check
// states by id, and enabling a set of controls together.
#pragma once

#include <windows.h>

#include <initializer_list>
#include <string>

#include "common_src/win32/ui_context.h"

namespace velk::settings_ui {

std::wstring ItemText(HWND dialog, int id);
void SetItemText(HWND dialog, int id, const std::wstring& text);
bool IsChecked(HWND dialog, int id);
void SetChecked(HWND dialog, int id, bool on);
void EnableItems(HWND dialog, std::initializer_list<int> ids, bool on);
// Moves the focus to the control as the dialog manager does (default button
// kept right) and selects its text.
void FocusItem(HWND dialog, int id);

// The localised font of a settings window's headings: the face and point
// size named by the two keys, in `weight`. Null when it cannot be made.
HFONT CreateTextFont(HWND dialog, const win32::UiContext& ui, const wchar_t* face_key,
                     const wchar_t* size_key, int weight);

// The window a dialog of `ui` is owned by: the client's top-level window.
inline HWND OwnerOf(const win32::UiContext& ui) {
    return win32::TopLevelOwner(ui.owner);
}

}  // namespace velk::settings_ui
