// The Serenel dialog, opened from the spam detection page: whether Serenel
// checks incoming mail, and how strictly, on the same three-stop slider as
// the protection level. It keeps its values between runs; OK takes the
// dialog's, Cancel leaves them. The detection page saves them with its own.
#pragma once

#include <windows.h>

#include "common_src/win32/dialog.h"
#include "common_src/win32/handles.h"
#include "common_src/win32/ui_context.h"
#include "controls/bitmap_slider.h"
#include "settings_ui/detection_settings.h"

namespace velk::settings_ui {

class CSerenelLevel : public win32::Dialog {
public:
    explicit CSerenelLevel(const win32::UiContext& ui) : m_ui(ui) {}

    const SerenelValues& values() const noexcept { return m_values; }
    void SetValues(const SerenelValues& values) { m_values = values; }
    void SetThumbs(HBITMAP thumbs) { m_thumbs = thumbs; }

    // Runs the dialog modally over `owner`: IDOK when confirmed.
    INT_PTR Run(HWND owner);

protected:
    bool ProcessMessage(UINT msg, WPARAM wp, LPARAM lp, LRESULT& result) override;

private:
    void OnInitDialog();
    void ShowLevel();
    void EnableLevel();

    const win32::UiContext& m_ui;
    SerenelValues m_values;
    HBITMAP m_thumbs = nullptr;
    controls::BitmapSlider m_slider;
    win32::unique_hfont m_titleFont;
};

}  // namespace velk::settings_ui
