// An owner-drawn button of the band: paints its states itself, follows the
// mouse without capturing it, and reports a click to its parent (the band)
// as WM_COMMAND with its command id and its own window.
#pragma once

#include <windows.h>

#include "common_src/win32/window.h"
#include "toolbar/button_layout.h"
#include "toolbar/toolbar_button_record.h"
#include "toolbar/toolbar_theme.h"

namespace velk::toolbar {

class CToolBarButton : public win32::Window {
public:
    static constexpr wchar_t kClassName[] = L"VELK_OEA_ToolBarButton";
    // Once per module before the first Create; the add-in unregisters at unload.
    static bool RegisterButtonClass();
    static void UnregisterButtonClass() noexcept;

    // Keeps a copy of `record`; `theme` is borrowed and outlives the button.
    CToolBarButton(const ToolBarButtonRecord& record, const ToolBarTheme& theme);
    ~CToolBarButton() override;

    // Sizes the button and creates it as a visible child of `band` at
    // (x, y), the record's command id as its control id. Returns the size,
    // {0, 0} when the window could not be created. A separator (variant 1)
    // is created disabled.
    SIZE Create(HWND band, int x, int y, int min_height = kMinButtonHeight);

    // The size the button takes, measured with the theme's font.
    Extent Measure(int min_height = kMinButtonHeight) const;

    // Enabled (state 1) or disabled (state 2); repaints without erasing.
    void Enable(bool enable);

    bool enabled() const noexcept { return state_ == kStateEnabled; }
    bool hot() const noexcept { return hot_; }
    bool pressed() const noexcept { return pressed_; }
    const ToolBarButtonRecord& record() const noexcept { return record_; }

    // Paints the whole client area into `target` through a memory bitmap.
    void Draw(HDC target) const;

protected:
    bool ProcessMessage(UINT msg, WPARAM wp, LPARAM lp, LRESULT& result) override;

private:
    ButtonContent Content(HDC measure_dc) const;
    void OnLButtonUp();
    void Repaint() const;

    ToolBarButtonRecord record_;
    const ToolBarTheme& theme_;
    std::int32_t state_ = kStateEnabled;
    bool hot_ = false;
    bool pressed_ = false;
};

}  // namespace velk::toolbar
