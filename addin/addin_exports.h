// The add-in's exported entry points, as the loading side calls them. The
// names are the undecorated export names; the client (and its stand-in in
// tools/mail_client_stub) resolves them with GetProcAddress.
#pragma once

#include <windows.h>

extern "C" {
// Hands over the client's main window.
typedef void(WINAPI* SetOEBrowserWndFn)(HWND browser);
// Builds the band when it is not built.
typedef void(WINAPI* ReBuildToolBarFn)(void);
// Tears the band down.
typedef void(WINAPI* DestroyToolBarFn)(void);
}

namespace velk::addin {
constexpr char kExportSetOEBrowserWnd[] = "SetOEBrowserWnd";
constexpr char kExportReBuildToolBar[] = "ReBuildToolBar";
constexpr char kExportDestroyToolBar[] = "DestroyToolBar";
}  // namespace velk::addin
