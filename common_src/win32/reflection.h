// Reflection of a child control's notifications from its parent to the
// object that owns the control (WTL's OCM_ messages, SumatraPDF's
// TryReflectMessages): the parent's procedure receives WM_COMMAND, WM_NOTIFY,
// WM_DRAWITEM, WM_MEASUREITEM, WM_CTLCOLOR*, WM_HSCROLL and WM_VSCROLL, and
// hands them to the control's object, which sees them as
// kReflectedMessageBase + msg. The control may be one of our own windows
// (Window) or a stock control we subclassed (SubclassedWindow).
//
// Dialog and PropertyPage reflect by themselves whatever their
// ProcessMessage did not handle; a Window parent calls ReflectToOwner.
#pragma once

#include <windows.h>

#include "common_src/win32/window.h"

namespace velk::win32 {

// The control window a reflectable message came from, or null (menus,
// accelerators, any other message). `parent` finds the control of
// WM_MEASUREITEM, which names it by id only; null skips that message.
HWND ReflectionSource(HWND parent, UINT msg, WPARAM wp, LPARAM lp) noexcept;

// True when the control's object handled the reflected message; `result`
// then holds its answer.
bool ReflectToOwner(HWND parent, UINT msg, WPARAM wp, LPARAM lp, LRESULT& result);

}  // namespace velk::win32
