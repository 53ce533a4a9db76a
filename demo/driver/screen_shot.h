// A picture of a window as it is on the screen. PrintWindow returns a white
// picture under Wine, so the pixels come from the screen itself: whatever
// covers the window is in the picture too.
#pragma once

#include <windows.h>

#include <string>
#include <vector>

namespace velk::demo {

struct Picture {
    int width = 0;
    int height = 0;
    std::vector<COLORREF> pixels;  // row by row from the top, as RGB()

    COLORREF At(int x, int y) const { return pixels[static_cast<std::size_t>(y) * width + x]; }
};

// The window's rectangle on the screen, clipped to the screen.
bool CaptureWindow(HWND window, Picture& out);

// A 24-bit BMP file (the demo's script turns it into a PNG).
bool SaveBmp(const Picture& picture, const std::wstring& path);

}  // namespace velk::demo
