// A window we did not create (the mail client's main window, a property
// sheet, a stock control we draw ourselves) with an object of ours behind it.
//
// comctl32's SetWindowSubclass keeps the object as the subclass's reference
// data, so there is no thunk, no global map and no saved WNDPROC chain: other
// subclasses installed before or after ours stay intact whatever the order of
// removal. Messages we do not handle go on through DefSubclassProc. The
// subclass removes itself on WM_NCDESTROY, and the static procedure is the
// same exception firewall as every other procedure of ours.
#pragma once

#include <windows.h>

#include "common_src/win32/window.h"

namespace velk::win32 {

class SubclassedWindow {
public:
    SubclassedWindow() noexcept = default;
    // Removes the subclass while the window still exists: a window left
    // calling into an unloaded module or a freed object crashes its owner.
    virtual ~SubclassedWindow();

    SubclassedWindow(const SubclassedWindow&) = delete;
    SubclassedWindow& operator=(const SubclassedWindow&) = delete;

    // Fails for a null window, when this object is attached already, or when
    // the window belongs to another thread (the system refuses that).
    bool Attach(HWND hwnd) noexcept;
    // Takes the subclass off; harmless when not attached.
    void Detach() noexcept;

    HWND hwnd() const noexcept { return hwnd_; }
    bool attached() const noexcept { return hwnd_ != nullptr; }

    // The object subclassing `hwnd` through this class, or null.
    static SubclassedWindow* FromHandle(HWND hwnd) noexcept;

    // A message reflected from the parent (reflection.h), delivered to
    // ProcessMessage as kReflectedMessageBase + msg.
    bool ReceiveReflected(UINT msg, WPARAM wp, LPARAM lp, LRESULT& result);

protected:
    // True when handled, with `result` set; otherwise DefSubclassProc runs.
    // Reflected messages from a parent arrive here as
    // kReflectedMessageBase + msg (see window.h).
    virtual bool ProcessMessage(UINT msg, WPARAM wp, LPARAM lp, LRESULT& result) = 0;

    // Calls the next procedure in the chain from inside ProcessMessage, for a
    // handler that wants the default answer and then adds to it.
    LRESULT CallDefault(UINT msg, WPARAM wp, LPARAM lp) noexcept;

    // After the subclass came off on WM_NCDESTROY.
    virtual void OnFinalMessage(HWND hwnd) {}

private:
    static LRESULT CALLBACK StaticProc(HWND hwnd, UINT msg, WPARAM wp, LPARAM lp, UINT_PTR id,
                                       DWORD_PTR ref);

    HWND hwnd_ = nullptr;
};

}  // namespace velk::win32
