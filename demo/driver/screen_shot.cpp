#include "demo/driver/screen_shot.h"

#include <algorithm>

#include "common_src/win32/handles.h"

namespace velk::demo {

bool CaptureWindow(HWND window, Picture& out) {
    RECT rc{};
    if (!::GetWindowRect(window, &rc))
        return false;
    rc.left = std::max<LONG>(rc.left, 0);
    rc.top = std::max<LONG>(rc.top, 0);
    rc.right = std::min<LONG>(rc.right, ::GetSystemMetrics(SM_CXSCREEN));
    rc.bottom = std::min<LONG>(rc.bottom, ::GetSystemMetrics(SM_CYSCREEN));
    const int w = rc.right - rc.left, h = rc.bottom - rc.top;
    if (w <= 0 || h <= 0)
        return false;

    win32::window_dc screen(nullptr);
    win32::unique_hdc memory(::CreateCompatibleDC(screen.get()));
    BITMAPINFO info{};
    info.bmiHeader.biSize = sizeof(info.bmiHeader);
    info.bmiHeader.biWidth = w;
    info.bmiHeader.biHeight = -h;  // top-down
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = 32;
    info.bmiHeader.biCompression = BI_RGB;
    void* bits = nullptr;
    win32::unique_hbitmap bitmap(
        ::CreateDIBSection(screen.get(), &info, DIB_RGB_COLORS, &bits, nullptr, 0));
    if (!memory || !bitmap || !bits)
        return false;
    {
        win32::select_object keep(memory.get(), bitmap.get());
        if (!::BitBlt(memory.get(), 0, 0, w, h, screen.get(), rc.left, rc.top, SRCCOPY))
            return false;
        ::GdiFlush();
    }
    out.width = w;
    out.height = h;
    out.pixels.resize(static_cast<std::size_t>(w) * h);
    const auto* px = static_cast<const DWORD*>(bits);  // 0x00RRGGBB
    for (std::size_t i = 0; i < out.pixels.size(); ++i)
        out.pixels[i] = RGB((px[i] >> 16) & 0xFF, (px[i] >> 8) & 0xFF, px[i] & 0xFF);
    return true;
}

bool SaveBmp(const Picture& picture, const std::wstring& path) {
    if (picture.width <= 0 || picture.height <= 0)
        return false;
    const DWORD stride = (static_cast<DWORD>(picture.width) * 3 + 3) & ~3u;
    const DWORD image = stride * static_cast<DWORD>(picture.height);
    BITMAPFILEHEADER file{};
    BITMAPINFOHEADER header{};
    file.bfType = 0x4D42;  // "BM"
    file.bfOffBits = sizeof file + sizeof header;
    file.bfSize = file.bfOffBits + image;
    header.biSize = sizeof header;
    header.biWidth = picture.width;
    header.biHeight = picture.height;  // bottom-up, the usual BMP
    header.biPlanes = 1;
    header.biBitCount = 24;
    header.biCompression = BI_RGB;
    header.biSizeImage = image;
    std::vector<BYTE> data(image, 0);
    for (int y = 0; y < picture.height; ++y) {
        BYTE* row = data.data() + static_cast<std::size_t>(picture.height - 1 - y) * stride;
        for (int x = 0; x < picture.width; ++x) {
            const COLORREF c = picture.At(x, y);
            row[x * 3] = GetBValue(c);
            row[x * 3 + 1] = GetGValue(c);
            row[x * 3 + 2] = GetRValue(c);
        }
    }
    win32::unique_file out(
        ::CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr));
    DWORD written = 0;
    return out && ::WriteFile(out.get(), &file, sizeof file, &written, nullptr) &&
           ::WriteFile(out.get(), &header, sizeof header, &written, nullptr) &&
           ::WriteFile(out.get(), data.data(), image, &written, nullptr) && written == image;
}

}  // namespace velk::demo
