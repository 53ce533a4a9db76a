// The default-level panel of the spam detection page: one protection level
// for all spam on a three-stop slider, with the level's description, the
// company's recommendation, the way to the custom levels and to Serenel,
// and the in-the-cloud box.
#pragma once

#include <windows.h>

#include "common_src/win32/dialog.h"
#include "common_src/win32/handles.h"
#include "common_src/win32/ui_context.h"
#include "controls/bitmap_slider.h"
#include "settings_ui/level_panel_listener.h"

namespace velk::settings_ui {

class CDefaultLevel : public win32::Dialog {
public:
    CDefaultLevel(const win32::UiContext& ui, LevelPanelListener& listener);

    // A hidden child of `page` on template 6039; `white` and `thumbs` are
    // borrowed from the page.
    bool Create(HWND page, HBRUSH white, HBITMAP thumbs);

    void SetValues(int stop, bool cloud);
    int stop() const noexcept { return m_slider.position(); }
    bool cloud() const;
    void SetCloud(bool on);

protected:
    bool ProcessMessage(UINT msg, WPARAM wp, LPARAM lp, LRESULT& result) override;

private:
    void OnInitDialog();
    void ShowLevel();

    const win32::UiContext& m_ui;
    LevelPanelListener& m_listener;
    HBRUSH m_hbrWhite = nullptr;
    HBITMAP m_thumbs = nullptr;
    controls::BitmapSlider m_slider;
    int m_nShownStop = -1;
    win32::unique_hfont m_titleFont;
};

}  // namespace velk::settings_ui
