// The level slider of the settings windows: three stops (0 to 2), a thumb
// drawn from the product's bitmap (or the installation's), mouse and
// keyboard like a trackbar, a tooltip for each stop.
//
// It takes over a placeholder control of a dialog template (a static with
// WS_TABSTOP), so the template decides its place, size and tab order at any
// DPI. Pages treat it as a trackbar: it answers TBM_GETPOS, TBM_SETPOS and
// the range queries, and tells its parent about every move the user makes
// with WM_VSCROLL (WM_HSCROLL when it is wider than tall) carrying the
// trackbar's TB_ codes, TB_ENDTRACK last. Its window text is the name of the
// stop it stands on, so screen readers announce the level.
#pragma once

#include <windows.h>

#include <array>
#include <string>

#include "common_src/win32/handles.h"
#include "common_src/win32/subclassed_window.h"
#include "controls/bitmap_slider_geometry.h"

namespace velk::controls {

// The thumb bitmap: `override_file` (the installation's choice, a path)
// when it names a loadable bitmap, else bitmap `bitmap_id` of `resources`
// (the product's own). The bitmap holds four frames of equal width side by
// side (normal, hot, pressed, disabled), or one frame for every state when
// its width is not a multiple of four; magenta (#FF00FF) is transparent. A
// broken override is logged and the product's bitmap used; null when
// neither loads (the slider then draws its own thumb).
win32::unique_hbitmap LoadSliderBitmap(HINSTANCE resources, int bitmap_id,
                                       const std::wstring& override_file);

class BitmapSlider : public win32::SubclassedWindow {
public:
    static constexpr int kStops = 3;

    BitmapSlider() = default;
    ~BitmapSlider() override;

    // Takes over control `id` of `dialog`. False when there is no such
    // control or it is taken already.
    bool TakeOver(HWND dialog, int id);

    // What each stop is called (window text, and the labels beside the
    // track when `draw_names`) and its tooltip.
    void SetStops(const std::array<std::wstring, kStops>& names,
                  const std::array<std::wstring, kStops>& tooltips, bool draw_names);

    // Borrowed: the owner keeps it alive while the slider shows. Null draws
    // the built-in thumb.
    void SetBitmap(HBITMAP thumbs);

    int position() const noexcept { return position_; }
    // Where the stops are, in the control's client coordinates as it is now.
    SliderGeometry geometry() const;
    // Moves the thumb without telling the parent (TBM_SETPOS does the same).
    void SetPosition(int position);

protected:
    bool ProcessMessage(UINT msg, WPARAM wp, LPARAM lp, LRESULT& result) override;

private:
    enum class Frame { kNormal = 0, kHot = 1, kPressed = 2, kDisabled = 3 };

    void Paint(HDC dc, const RECT& client);
    void DrawThumb(HDC dc, const SliderRect& at, Frame frame);
    void MoveTo(int position, bool notify, int code);
    void Notify(int code);
    bool OnKeyDown(WPARAM key);
    void OnMouse(UINT msg, int x, int y);
    void CreateTooltips();
    void DropTooltips() noexcept;
    void PlaceTooltips();

    int position_ = 1;
    bool draw_names_ = false;
    bool dragging_ = false;
    bool hot_ = false;
    bool tracking_leave_ = false;
    std::array<std::wstring, kStops> names_;
    std::array<std::wstring, kStops> tooltips_;
    HBITMAP thumbs_ = nullptr;
    win32::unique_hwnd tooltip_;
};

}  // namespace velk::controls
