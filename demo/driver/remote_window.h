// Looking at and pressing on another process's windows, as a user would:
// the demo finds the client's band and its buttons by their control ids and
// clicks with the real mouse.
#pragma once

#include <windows.h>

#include <functional>
#include <string>

namespace velk::demo {

// Polls `find` every 20 ms until it returns a window or `timeout_ms` passes
// (returns null then).
HWND WaitForWindow(const std::function<HWND()>& find, DWORD timeout_ms);

// Polls `done` every 20 ms; true once it holds, false after `timeout_ms`.
bool WaitUntil(const std::function<bool()>& done, DWORD timeout_ms);

// The first window below `root`, at any depth, whose control id is `id`.
HWND FindDescendantById(HWND root, int id);

// Whether a band with `band_id` sits in one of the "ReBarWindow32" windows
// inside the client window's "SizableRebar".
bool ClientHasBand(HWND client, UINT band_id);

// Moves the mouse to the middle of `window`, or to a point of the screen,
// through the system's input queue.
bool MoveMouseOver(HWND window);
bool MoveMouseTo(POINT screen);

// A left click at the mouse's position, down then up, through the input
// queue: the window under the mouse gets it as from a real mouse.
bool ClickMouse();

// Types `text` on the keyboard, one character at a time, into the window
// that has the keyboard focus.
bool TypeText(const std::wstring& text);

// Presses and releases one key (VK_ESCAPE, ...).
bool PressKey(WORD virtual_key);

}  // namespace velk::demo
