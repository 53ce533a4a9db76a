// What the sheet's pages, panels and level dialogs share: the white
// background they are painted on, the names and tooltips of the three
// levels, the slider's thumb bitmap and the bold font of a level's title.
#pragma once

#include <windows.h>

#include <array>
#include <string>

#include "common_src/win32/handles.h"
#include "common_src/win32/ui_context.h"
#include "settings_ui/dialog_util.h"
#include "controls/bitmap_slider.h"

namespace velk::settings_ui {

// The localised text of `key`, its placeholders replaced. Cheaper than
// UiContext::Text for the many texts without a placeholder: the values are
// looked up (three reads of the installation file) only for a text that
// holds one.
std::wstring SheetText(const win32::UiContext& ui, const wchar_t* key);

// The level names and tooltips of the three stops, top stop (level 3, High)
// first.
std::array<std::wstring, controls::BitmapSlider::kStops> LevelNames(const win32::UiContext& ui);
std::array<std::wstring, controls::BitmapSlider::kStops> LevelTooltips(const win32::UiContext& ui);

// The thumb of every level slider: the installation's [General]
// SliderBitmap (a file in the module folder) when it loads, else the
// product's own.
win32::unique_hbitmap LoadLevelThumbs(const win32::UiContext& ui);

// Sets up a level slider of `dialog`: takes over its placeholder, names the
// stops (drawn beside the track when `draw_names`) and gives it `thumbs`.
bool SetUpLevelSlider(controls::BitmapSlider& slider, HWND dialog, int id,
                      const win32::UiContext& ui, HBITMAP thumbs, bool draw_names);

// Answers the WM_CTLCOLOR* messages of a white page or panel with `white`;
// false for any other message.
bool PaintWhite(UINT msg, WPARAM wp, HBRUSH white, LRESULT& result);

// `text` without its mnemonic marks ("&Adult" -> "Adult", "&&" -> "&").
std::wstring WithoutMnemonic(const std::wstring& text);

}  // namespace velk::settings_ui
