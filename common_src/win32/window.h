// The window base of the add-in's own windows (the toolbar window, the band's
// buttons, the stand-ins' windows).
//
// `this` travels in CREATESTRUCT::lpCreateParams and lives in GWLP_USERDATA
// from WM_NCCREATE until WM_NCDESTROY; there is no global handle map and no
// thunk. Each class answers messages in one ProcessMessage, the shape of WTL's
// ProcessWindowMessage. The static procedure is an exception firewall: the
// add-in runs inside the mail client's message loop, where an escaping C++
// exception would end the user's mail session.
#pragma once

#include <windows.h>

namespace velk::win32 {

// A parent hands WM_COMMAND, WM_NOTIFY, WM_DRAWITEM, WM_MEASUREITEM,
// WM_CTLCOLOR* and WM_H/VSCROLL back to the control object that sent them as
// this base plus the original message (WTL's OCM_ convention), so the drawing
// and behaviour stay with the control.
constexpr UINT kReflectedMessageBase = WM_USER + 0x1C00;

// The module that holds this code: the add-in DLL inside the client, the
// executable in a test. Classes and dialogs are registered against it.
HINSTANCE ThisModule() noexcept;

class Window {
public:
    Window() noexcept = default;
    // Detaches before destroying: by now the derived part is gone and must
    // not see the destroy messages. A class with its own teardown calls
    // Destroy() from its own destructor.
    virtual ~Window();

    Window(const Window&) = delete;
    Window& operator=(const Window&) = delete;

    HWND hwnd() const noexcept { return hwnd_; }

    // Creates the window of a class whose procedure is Window::StaticProc
    // (see RegisterWindowClass). Fails when this object already has one.
    HWND Create(const wchar_t* class_name, HWND parent, DWORD style, DWORD ex_style = 0,
                const RECT& rect = RECT{0, 0, 0, 0}, const wchar_t* title = L"", INT_PTR id = 0,
                HINSTANCE instance = ThisModule());

    // Destroys the window (the derived class sees WM_DESTROY/WM_NCDESTROY).
    void Destroy() noexcept;

    // The object behind a window of one of our classes; null for any other
    // window, and for ours before WM_NCCREATE and after WM_NCDESTROY. The
    // class procedure is checked rather than the window's, so a control that
    // comctl32 has subclassed (tooltips with TTF_SUBCLASS) is still found.
    static Window* FromHandle(HWND hwnd) noexcept;

    static LRESULT CALLBACK StaticProc(HWND hwnd, UINT msg, WPARAM wp, LPARAM lp);

    // For a parent's ProcessMessage: hands a reflectable message from a
    // child that is one of our objects to that child (see reflection.h).
    static bool ReflectToControl(UINT msg, WPARAM wp, LPARAM lp, LRESULT& result);

    // A message reflected from the parent, delivered to ProcessMessage as
    // kReflectedMessageBase + msg.
    bool ReceiveReflected(UINT msg, WPARAM wp, LPARAM lp, LRESULT& result) {
        return ProcessMessage(kReflectedMessageBase + msg, wp, lp, result);
    }

protected:
    // True when handled, with `result` set; otherwise DefWindowProcW runs.
    virtual bool ProcessMessage(UINT msg, WPARAM wp, LPARAM lp, LRESULT& result) = 0;

    // Called after WM_NCDESTROY, when the window no longer points at this
    // object: an object that owns itself may delete itself here.
    virtual void OnFinalMessage(HWND hwnd) {}

private:
    static LRESULT Dispatch(Window* self, HWND hwnd, UINT msg, WPARAM wp, LPARAM lp);

    HWND hwnd_ = nullptr;
};

}  // namespace velk::win32
