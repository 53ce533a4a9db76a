// What the demo driver and its probe inside the mail-client stand-in agree
// on (see demo_probe.cpp).
#pragma once

#include <windows.h>

namespace velk::demo {

// Set by the driver, inherited by the client, read by the probe.
constexpr wchar_t kProbeMailboxVariable[] = L"VELK_DEMO_MAILBOX";  // the store's root
constexpr wchar_t kProbeJournalVariable[] = L"VELK_DEMO_JOURNAL";  // where the journal goes

// The probe's hidden window, which exists once the store is set up.
constexpr wchar_t kProbeWindowClass[] = L"VelkDemoProbe";

// Sent: save the journal now; returns 1 once it is on disk.
constexpr UINT kProbeSaveJournal = WM_APP + 10;

// WM_COPYDATA dwData: show a folder of the store in the client's message list
// and its name in the title; the data is the folder id (4 bytes) followed by
// the name in UTF-16 without a terminator.
constexpr ULONG_PTR kProbeShowFolder = 0x44454D4F;

}  // namespace velk::demo
