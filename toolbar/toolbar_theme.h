// What every button of the band paints with, read once when the band starts:
// the system colours (or Windows Mail's), the icon-title font and the arrow
// of the menu button.
#pragma once

#include <windows.h>

#include "common_src/win32/handles.h"
#include "toolbar/button_layout.h"

namespace velk::toolbar {

class ToolBarTheme {
public:
    // `arrow` (the band's shared background bitmap) is borrowed and must
    // outlive the theme; it may be null.
    ToolBarTheme(bool wmail, HBITMAP arrow);

    ToolBarTheme(const ToolBarTheme&) = delete;
    ToolBarTheme& operator=(const ToolBarTheme&) = delete;

    bool wmail() const noexcept { return wmail_; }
    const Palette& palette() const noexcept { return palette_; }
    HFONT font() const noexcept { return font_ ? font_.get() : stock_font_; }
    HBITMAP arrow() const noexcept { return arrow_; }

private:
    bool wmail_;
    Palette palette_;
    win32::unique_hfont font_;
    HFONT stock_font_ = nullptr;
    HBITMAP arrow_;
};

// A bitmap's size; {0, 0} for null or an invalid handle.
Extent BitmapExtent(HBITMAP bitmap) noexcept;

// Draws `bitmap` at (x, y) in its natural size, leaving kTransparentKey
// pixels undrawn.
void DrawTransparent(HDC target, HBITMAP bitmap, int x, int y) noexcept;

}  // namespace velk::toolbar
