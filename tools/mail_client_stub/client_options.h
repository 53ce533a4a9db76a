// The command line of the mail-client stand-in. Platform-free: parsed and
// tested natively.
#pragma once

#include <string>
#include <vector>

namespace velk::tools {

enum class ClientMode {
    kAuto,            // as the real client: Windows Mail when the system reports 6.x
    kOutlookExpress,  // one rebar in "SizableRebar"
    kWindowsMail,     // two rebars; the add-in takes the second
};

enum class StepKind {
    kSetBrowser,  // SetOEBrowserWnd(main window) of every loaded add-in
    kRebuild,     // ReBuildToolBar()
    kDestroy,     // DestroyToolBar()
    kWait,        // let the message loop run for `ms`
    kClose,       // WM_CLOSE to the main window, as the user closing it
    kUnload,      // FreeLibrary of every add-in while the client runs
};

struct Step {
    StepKind kind = StepKind::kWait;
    unsigned ms = 0;
};

// The identity written when none is given, so the add-in always finds one.
constexpr wchar_t kDefaultIdentity[] = L"{7F3A2C10-5B4D-4E6F-8A9B-0C1D2E3F4A5B}";

struct ClientOptions {
    std::vector<std::wstring> addins;
    ClientMode mode = ClientMode::kAuto;
    std::wstring identity = kDefaultIdentity;
    bool write_identity = true;
    unsigned late_ms = 0;
    std::vector<Step> steps;
    std::wstring events_path;
    unsigned exit_after_ms = 0;  // 0: only the script or another process closes it
    bool free_at_exit = true;
    bool help = false;
};

// The arguments after the program name. False, with `error` saying why, for
// an unknown option, a missing or malformed value, or a bad step.
bool ParseClientOptions(const std::vector<std::wstring>& args, ClientOptions& out,
                        std::wstring& error);

// "set-browser,rebuild,wait=500,close".
bool ParseSteps(const std::wstring& text, std::vector<Step>& out, std::wstring& error);

// The usage text printed for --help and after a bad command line.
const wchar_t* ClientUsage();

}  // namespace velk::tools
