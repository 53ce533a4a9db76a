// Registration of the window classes whose procedure is Window::StaticProc.
#pragma once

#include <windows.h>

#include "common_src/win32/window.h"

namespace velk::win32 {

struct WindowClassOptions {
    UINT style = 0;
    HCURSOR cursor = nullptr;      // null: the arrow
    HBRUSH background = nullptr;   // null: the window paints everything itself
    HINSTANCE instance = nullptr;  // null: ThisModule()
    WNDPROC proc = &Window::StaticProc;
};

// Registers the class, or reuses it when this module registered it already.
// A class of the same name left behind with another procedure (a copy of the
// module that was unloaded without unregistering) is replaced, so windows are
// never created on a procedure that is no longer mapped. Returns 0 on failure.
ATOM RegisterWindowClass(const wchar_t* name, const WindowClassOptions& options = {});

// Classes registered by a DLL outlive it unless unregistered at unload; fails
// (and leaves the class) while windows of the class still exist.
bool UnregisterWindowClass(const wchar_t* name, HINSTANCE instance = nullptr) noexcept;

}  // namespace velk::win32
