#include "toolbar/toolbar_theme.h"

namespace velk::toolbar {

ToolBarTheme::ToolBarTheme(bool wmail, HBITMAP arrow) : wmail_(wmail), arrow_(arrow) {
    Palette system;
    system.face = ::GetSysColor(COLOR_BTNFACE);
    system.shadow = ::GetSysColor(COLOR_BTNSHADOW);
    system.highlight = ::GetSysColor(COLOR_BTNHIGHLIGHT);
    system.gray_text = ::GetSysColor(COLOR_GRAYTEXT);
    // White text belongs to the dark Windows Mail band; on Outlook Express's
    // light button face it would be unreadable, so captions there use the
    // system's button text colour.
    system.text = ::GetSysColor(COLOR_BTNTEXT);
    palette_ = ClientPalette(system, wmail);

    LOGFONTW lf{};
    if (::SystemParametersInfoW(SPI_GETICONTITLELOGFONT, sizeof(lf), &lf, 0)) {
        font_.reset(::CreateFontIndirectW(&lf));
    }
    if (!font_)
        stock_font_ = static_cast<HFONT>(::GetStockObject(DEFAULT_GUI_FONT));
}

Extent BitmapExtent(HBITMAP bitmap) noexcept {
    BITMAP bm{};
    if (bitmap == nullptr || ::GetObjectW(bitmap, sizeof(bm), &bm) == 0)
        return Extent{};
    return Extent{bm.bmWidth, bm.bmHeight};
}

void DrawTransparent(HDC target, HBITMAP bitmap, int x, int y) noexcept {
    const Extent size = BitmapExtent(bitmap);
    if (size.cx <= 0 || size.cy <= 0)
        return;
    win32::unique_hdc source(::CreateCompatibleDC(target));
    if (!source)
        return;
    win32::select_object selected(source.get(), bitmap);
    ::TransparentBlt(target, x, y, size.cx, size.cy, source.get(), 0, 0, size.cx, size.cy,
                     kTransparentKey);
}

}  // namespace velk::toolbar
