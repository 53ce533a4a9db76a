#include "common_src/win32/paint_buffer.h"

namespace velk::win32 {

PaintBuffer::PaintBuffer(HDC target, const RECT& rect) noexcept : target_(target), rect_(rect) {
    const int w = rect.right - rect.left;
    const int h = rect.bottom - rect.top;
    if (target == nullptr || w <= 0 || h <= 0)
        return;
    memory_.reset(::CreateCompatibleDC(target));
    canvas_.reset(::CreateCompatibleBitmap(target, w, h));
    if (!memory_ || !canvas_) {
        memory_.reset();
        canvas_.reset();
        return;
    }
    previous_ = ::SelectObject(memory_.get(), canvas_.get());
    // The drawing code keeps the target's coordinates.
    ::SetWindowOrgEx(memory_.get(), rect.left, rect.top, nullptr);
    // Text and fonts start as the target's do.
    ::SelectObject(memory_.get(), ::GetCurrentObject(target, OBJ_FONT));
    ::SetTextColor(memory_.get(), ::GetTextColor(target));
    ::SetBkColor(memory_.get(), ::GetBkColor(target));
}

PaintBuffer::~PaintBuffer() {
    if (!buffered())
        return;
    ::BitBlt(target_, rect_.left, rect_.top, rect_.right - rect_.left, rect_.bottom - rect_.top,
             memory_.get(), rect_.left, rect_.top, SRCCOPY);
    ::SelectObject(memory_.get(), previous_);
}

RECT BufferedPaint::ClientOf(HWND hwnd) noexcept {
    RECT r{};
    ::GetClientRect(hwnd, &r);
    return r;
}

BufferedPaint::BufferedPaint(HWND hwnd) noexcept
    : hwnd_(hwnd),
      paint_dc_(::BeginPaint(hwnd, &ps_)),
      client_(ClientOf(hwnd)) {
    buffer_.emplace(paint_dc_, client_);
}

BufferedPaint::~BufferedPaint() {
    buffer_.reset();  // the copy to the screen, while the paint is still open
    ::EndPaint(hwnd_, &ps_);
}

bool PaintOwnClient(HWND hwnd, UINT msg, WPARAM wp, LRESULT& result,
                    const std::function<void(HDC, const RECT&)>& paint) {
    switch (msg) {
        case WM_ERASEBKGND:
            result = 1;
            return true;
        case WM_PAINT: {
            BufferedPaint buffered(hwnd);
            paint(buffered.dc(), buffered.client());
            result = 0;
            return true;
        }
        case WM_PRINTCLIENT: {
            RECT client{};
            ::GetClientRect(hwnd, &client);
            paint(reinterpret_cast<HDC>(wp), client);
            result = 0;
            return true;
        }
        default:
            return false;
    }
}

}  // namespace velk::win32
