// Double-buffered drawing: everything is drawn into a memory bitmap the size
// of the target rectangle and copied to the screen in one BitBlt, so owner-
// drawn controls never flicker while they repaint.
#pragma once

#include <windows.h>

#include <functional>
#include <optional>

#include "common_src/win32/handles.h"

namespace velk::win32 {

// Draws into dc() with the target's coordinates (the window origin of the
// memory DC is moved to the rectangle's corner) and copies the result to
// `target` when it goes out of scope. When the memory bitmap cannot be made
// (out of GDI resources), dc() is the target itself: the control then paints
// with flicker instead of not at all.
class PaintBuffer {
public:
    PaintBuffer(HDC target, const RECT& rect) noexcept;
    ~PaintBuffer();

    PaintBuffer(const PaintBuffer&) = delete;
    PaintBuffer& operator=(const PaintBuffer&) = delete;

    HDC dc() const noexcept { return buffered() ? memory_.get() : target_; }
    const RECT& rect() const noexcept { return rect_; }
    bool buffered() const noexcept { return static_cast<bool>(memory_) && static_cast<bool>(canvas_); }

private:
    HDC target_;
    RECT rect_;
    unique_hdc memory_;
    unique_hbitmap canvas_;
    HGDIOBJ previous_ = nullptr;
};

// WM_PAINT of a whole client area: BeginPaint/EndPaint around a PaintBuffer.
class BufferedPaint {
public:
    explicit BufferedPaint(HWND hwnd) noexcept;
    ~BufferedPaint();

    BufferedPaint(const BufferedPaint&) = delete;
    BufferedPaint& operator=(const BufferedPaint&) = delete;

    HDC dc() const noexcept { return buffer_->dc(); }
    const RECT& client() const noexcept { return client_; }

private:
    static RECT ClientOf(HWND hwnd) noexcept;

    HWND hwnd_;
    PAINTSTRUCT ps_{};
    HDC paint_dc_;
    RECT client_;
    std::optional<PaintBuffer> buffer_;  // reset before EndPaint
};

// The three messages of a control that draws its whole client itself:
// WM_ERASEBKGND (nothing to erase), WM_PAINT (double-buffered) and
// WM_PRINTCLIENT (into the given DC), each handed to `paint` with the client
// rectangle. False for any other message.
bool PaintOwnClient(HWND hwnd, UINT msg, WPARAM wp, LRESULT& result,
                    const std::function<void(HDC, const RECT&)>& paint);

}  // namespace velk::win32
