// Names and numbers by which the add-in, the client and the scanning process
// find and drive each other's windows. Other programs depend on every value:
// the scanning process finds the toolbar window by its class and posts the
// private messages; the add-in finds the scanning process by its title.
#pragma once

namespace velk::host {

constexpr wchar_t kToolBarWindowClass[] = L"{6E2D94B7-1C5A-4F83-B0E6-3A7D52C819F4}";
constexpr wchar_t kCompanionWindowTitle[] = L"{5B0E7C21-93D4-4A6F-8B12-C4E97A1D2F58}";
// The scanning process's own settings window: while it is open the band's
// commands and the OK of our settings windows wait.
constexpr wchar_t kSettingsSheetWindowTitle[] = L"{8D2C1E44-7A3B-4C19-9E51-2F60B7A4C310}";
// The hidden marker window our filtering sheet keeps for its whole life, so
// the scanning process can tell that it is open.
constexpr wchar_t kFilteringSheetMarkerTitle[] = L"{A27C5E90-4D1B-4F36-9C08-E5B1D7342A6E}";

// The mail client's windows.
constexpr wchar_t kClientMainWindowClass[] = L"Outlook Express Browser Class";
constexpr wchar_t kClientSizableRebarClass[] = L"SizableRebar";

// Private messages of the toolbar window (WM_USER + n, as numbers so this
// header needs no <windows.h>).
constexpr unsigned kMsgBuildBand = 1055;           // WM_USER + 31
constexpr unsigned kMsgTearDownBand = 1056;        // WM_USER + 32
constexpr unsigned kMsgHookClient = 1058;          // WM_USER + 34, wParam the client window
constexpr unsigned kMsgUnhookWMail = 1059;         // WM_USER + 35
constexpr unsigned kMsgCompanionReady = 1075;      // WM_USER + 51
constexpr unsigned kMsgSwitchReportButton = 1076;  // WM_USER + 52

}  // namespace velk::host
