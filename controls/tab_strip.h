// The owner-drawn tab strip of the settings sheet: takes over a property
// sheet's own tab control (SysTabControl32) and paints it in the product's
// colours, with a hot state under the mouse and the selected tab joined to
// the white page below it. The control keeps doing everything else itself
// (selection, keyboard, the sheet's page switching), so only the look
// changes; it is double-buffered, so switching tabs does not flicker.
#pragma once

#include <windows.h>

#include "common_src/win32/subclassed_window.h"

namespace velk::controls {

// The product's colours on the tab strip.
struct TabStripColours {
    COLORREF face = RGB(236, 236, 236);      // a tab at rest
    COLORREF hot = RGB(253, 230, 204);       // under the mouse
    COLORREF selected = RGB(255, 255, 255);  // the open page's tab and the page frame
    COLORREF accent = RGB(240, 130, 30);     // the line over the open tab
    COLORREF border = RGB(172, 172, 172);
    COLORREF text = RGB(32, 32, 32);
};

class TabStrip : public win32::SubclassedWindow {
public:
    // The height of a tab, in pixels, set on the control when taken over.
    static constexpr int kItemHeight = 22;

    explicit TabStrip(const TabStripColours& colours = TabStripColours()) : colours_(colours) {}

    // Takes over `tab` (a SysTabControl32): fixes the tab height and paints
    // from now on. False when `tab` is null or taken already.
    bool TakeOver(HWND tab);

    // The tab under the mouse, -1 for none.
    int hot_item() const noexcept { return hot_; }

protected:
    bool ProcessMessage(UINT msg, WPARAM wp, LPARAM lp, LRESULT& result) override;

private:
    void Paint(HDC dc, const RECT& client);
    void DrawItem(HDC dc, int index, bool selected);
    void TrackHot(int x, int y);

    TabStripColours colours_;
    int hot_ = -1;
    bool tracking_leave_ = false;
};

}  // namespace velk::controls
