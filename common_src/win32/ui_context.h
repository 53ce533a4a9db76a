// What every window of the settings user interface is given by its creator:
// where the settings live, the localised texts, the language module and the
// window that owns it. Nothing in the settings windows reaches into process
// globals, so each can be built and tested on its own.
//
// Also the helpers every such window uses: texts applied from a table at
// initialisation, the placeholders replaced in one place, message boxes with
// localised texts, and placement on the owner.
#pragma once

#include <windows.h>

#include <cstddef>
#include <string>

#include "common_src/win32/QzResourceStringLoader.h"
#include "common_src/win32/placeholders.h"
#include "settings/settings_paths.h"

namespace velk::win32 {

struct UiContext {
    settings::SettingsLocations where;
    QzResourceStringLoader* strings = nullptr;  // borrowed; outlives every window
    HINSTANCE resources = nullptr;              // the language module
    HWND owner = nullptr;                       // the client's top-level window, or null

    // The localised text as the table holds it; empty for a missing id or
    // without a loader.
    std::wstring RawText(const wchar_t* key) const;
    // The localised text with its placeholders replaced.
    std::wstring Text(const wchar_t* key) const;
    // <$SPAM_NAME>: [General] "Anti-Spam" of the installation file, else
    // IDS_SPAM_NAME; <$CORP_NAME>: CorpName, else IDS_CORP_NAME;
    // <$PRODUCT NAME>: AboutProductName, else IDS_PRODUCT_NAME.
    Placeholders placeholders() const;
};

// One control's text: the control id (0 for the window's own caption) and
// the string key.
struct ControlText {
    int id;
    const wchar_t* key;
};

// Sets each control's text to the localised text with its placeholders
// replaced. A key the table lacks leaves the template's text, so a window is
// never left with blank labels by a short translation.
void ApplyTexts(HWND window, const UiContext& ui, const ControlText* table, std::size_t count);
template <std::size_t N>
void ApplyTexts(HWND window, const UiContext& ui, const ControlText (&table)[N]) {
    ApplyTexts(window, ui, table, N);
}

// A message box owned by `owner` (its top-level window) with the localised
// text and caption, placeholders replaced.
int ShowMessage(HWND owner, const UiContext& ui, const wchar_t* text_key,
                const wchar_t* caption_key, UINT type);
int ShowMessageText(HWND owner, const std::wstring& text, const std::wstring& caption, UINT type);

// The top-level window above `window` (itself when it is one); null for null.
HWND TopLevelOwner(HWND window) noexcept;

// Centres `window` on its owner (or parent), kept inside the work area of
// the owner's monitor so no part of a dialog is off the screen.
void CenterOnOwner(HWND window) noexcept;

// A font of the dialog's own family with another face, point size and
// weight: the settings windows' headings ("IDS_*_FONT" and
// "IDS_*_FONT_SIZE" texts). Null when it cannot be made.
HFONT CreateDialogFont(HWND dialog, const std::wstring& face, int points, int weight) noexcept;

}  // namespace velk::win32
