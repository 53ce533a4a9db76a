// One run of the demo, from staging to the summary; see demo_run.cpp.
#pragma once

#include <string>

namespace velk::demo {

// Where the pieces are; the defaults come from the build tree.
struct DemoConfig {
    std::wstring out;             // the run's folder; empty or absent
    std::wstring source;          // demo/ of the checkout: scenario.txt and mailbox/
    std::wstring dist;            // the staged installation
    std::wstring client_exe;      // the mail-client stand-in
    std::wstring scanner_exe;     // the scanning-process stand-in
    std::wstring store_dll;       // the message store stand-in
    std::wstring probe_dll;       // demo_probe.dll
    std::wstring mode = L"auto";  // auto, oe (Wine reports XP x64 to the client) or wmail
    std::wstring identity = L"{9D3E5A71-4C2B-4E8F-A6D0-1B7C3E5F9A24}";
};

enum DemoExit { kDemoOk = 0, kDemoFailed = 1, kDemoBadUsage = 2, kDemoNoAddin = 3 };

// Prints the summary on stdout (and into <out>\summary.txt).
int RunDemo(const DemoConfig& config);

}  // namespace velk::demo
