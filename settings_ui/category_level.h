// The category level dialog: a level for each of the seven kinds of spam,
// on seven sliders side by side. It keeps the stops between its runs; OK
// takes the sliders' stops, Cancel leaves them as they were.
#pragma once

#include <windows.h>

#include <array>

#include "common_src/win32/dialog.h"
#include "common_src/win32/ui_context.h"
#include "controls/bitmap_slider.h"
#include "settings_ui/detection_settings.h"

namespace velk::settings_ui {

// The string key of a category's name (with its mnemonic).
const wchar_t* CategoryTextKey(Category category);

class CCategoryLevel : public win32::Dialog {
public:
    explicit CCategoryLevel(const win32::UiContext& ui) : m_ui(ui) {}

    const std::array<int, kCategoryCount>& stops() const noexcept { return m_stops; }
    void SetStops(const std::array<int, kCategoryCount>& stops) { m_stops = stops; }
    // Borrowed; null draws the built-in thumb.
    void SetThumbs(HBITMAP thumbs) { m_thumbs = thumbs; }

    // Runs the dialog modally over `owner`: IDOK when confirmed.
    INT_PTR Run(HWND owner);

protected:
    bool ProcessMessage(UINT msg, WPARAM wp, LPARAM lp, LRESULT& result) override;

private:
    void OnInitDialog();
    void AlignLevelLabels();

    const win32::UiContext& m_ui;
    std::array<int, kCategoryCount> m_stops{kMediumStop, kMediumStop, kMediumStop, kMediumStop,
                                            kMediumStop, kMediumStop, kMediumStop};
    HBITMAP m_thumbs = nullptr;
    std::array<controls::BitmapSlider, kCategoryCount> m_sliders;
};

}  // namespace velk::settings_ui
